#pragma once

#include <any>
#include <string>
#include <string_view>

namespace sdf::valuetext {

[[gnu::visibility("default")]] std::string render(const std::any& value);
[[gnu::visibility("default")]] std::any parse(std::string_view type, std::string_view text);

}  // namespace sdf::valuetext
