#pragma once

#include <string>
#include <string_view>

namespace trel::host {

/// A text for XML and HTML, within elements and within quotes. What XML cannot hold is
/// left out.
std::string escapedMarkup(std::string_view text);

}  // namespace trel::host
