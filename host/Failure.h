#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace trel::host {

/// How the program ends.
enum class ExitCode {
    Good = 0,
    ExpectationFailed = 1,
    FileInvalid = 2,  // a station or a scenario
    Usage = 3,
    ComponentFailed = 4,
    Stopped = 5,  // by the budget of deliveries or the end of the stack
    CannotSave = 6,
};

/// Why the program cannot go on. what() names the place and the remedy, one line
/// for each fault.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}

    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

/// The text of the exception that is being handled. Component types are somebody
/// else's code and may throw anything.
inline std::string textOfThrown() {
    try {
        throw;
    } catch (const std::out_of_range& error) {
        // What the library says of an id that it does not find tells a user nothing.
        const std::string text = error.what();
        const bool isLookUp = text == "invalid unordered_map<K, T> key";
        return isLookUp ? text + " (it asked for an id that is not there)" : text;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an exception that is no std::exception";
    }
}

}  // namespace trel::host
