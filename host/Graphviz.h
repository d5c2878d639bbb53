#pragma once

#include <optional>
#include <string>

namespace trel::host {

/// Has Graphviz draw a graph, in a format that its option -T knows. Empty where Graphviz
/// is not installed.
/// \throws Failure (cannot save) if it is, and does not draw it.
std::optional<std::string> drawn(const std::string& dot, const std::string& format);

}  // namespace trel::host
