#include <fmt/ostream.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "host/Check.h"
#include "host/Command.h"
#include "host/Commands.h"

namespace trel::host {

namespace {

struct CheckOptions {
    std::vector<std::filesystem::path> files;
    std::vector<std::filesystem::path> libraries;
    bool strict = false;
    bool json = false;
};

std::string jsonOf(const std::string& file, const Fault& fault) {
    using Json = nlohmann::ordered_json;
    return Json{{"file", file},
                {"line", fault.place.line},
                {"column", fault.place.column},
                {"severity", nameOf(fault.code->severity)},
                {"code", fault.code->code},
                {"path", fault.path},
                {"fault", fault.text},
                {"remedy", fault.remedy}}
        .dump(-1, ' ', false, Json::error_handler_t::replace);
}

// "1 error", "2 errors".
std::string counted(std::size_t number, std::string_view what) {
    return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

ExitCode check(const CheckOptions& options, std::ostream& out) {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    for (const auto& file : options.files)
        for (const Fault& fault : faultsOfFile(file, options.libraries)) {
            ++(fault.isError() ? errors : warnings);
            out << (options.json ? jsonOf(file.string(), fault) : textOf(file.string(), fault))
                << '\n';
        }
    if (!options.json)
        fmt::print(out, "{}: {}, {}\n", counted(options.files.size(), "file"),
                   counted(errors, "error"), counted(warnings, "warning"));
    const bool isGood = errors == 0 && (!options.strict || warnings == 0);
    return isGood ? ExitCode::Good : ExitCode::FileInvalid;
}

}  // namespace

void addCheck(const CommandLine& line) {
    const auto options = std::make_shared<CheckOptions>();
    Command command(
        line, "check",
        "Tells all that is wrong with station files, each fault with its place, what it is\n"
        "and what to do. Example: station check station.xml --strict");
    command.argument("FILE", options->files, "The station files");
    command.libraries(options->libraries);
    command.flag("--strict", options->strict, "Count warnings as faults, too");
    command.flag("--json", options->json, "Print a JSON object on a line for each fault");
    command.does([options](std::ostream& out) { return check(*options, out); });
}

}  // namespace trel::host
