#pragma once

#include <string>

namespace CLI {
class App;
}

namespace trel::host {

/// The manual page of a program in the language of man, from the texts of its help. A
/// description may end in "Exit codes: ..." or "Example: ...".
std::string manPage(const CLI::App& app, const std::string& version);

}  // namespace trel::host
