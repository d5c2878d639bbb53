#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "host/Command.h"
#include "host/Commands.h"
#include "host/DeepStack.h"
#include "host/ManPage.h"

namespace {

using namespace trel::host;

int codeOf(ExitCode code) { return static_cast<int>(code); }

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): before the command line is read, only memory can end
int main(int argc, char** argv) {
    CLI::App app(
        "A host for robot-cell stations.\n"
        "Exit codes: 0 good, 1 an expectation failed or files differ, 2 a file is invalid,\n"
        "3 wrong usage, 4 a component failed, 5 stopped by the budget or the end of the stack,\n"
        "6 cannot save.",
        "station");
    Action chosen;
    const CommandLine line{app, chosen};
    addCheck(line);
    addGraph(line);
    addRun(line);
    addShow(line);
    addTypes(line);
    addSet(line);
    addWiring(line);
    addObjects(line);
    addDiff(line);
    app.require_subcommand(1);
    // For whoever installs the program; the help does not show it.
    const auto printManPage = [&app] {
        std::cout << manPage(app, STATION_VERSION);
        throw CLI::Success();
    };
    app.add_flag_callback("--man-page", printManPage)->group("");

    try {
        app.parse(argc, argv);
        ExitCode code = ExitCode::Good;
        onDeepStack([&] { code = chosen(std::cout); });
        return codeOf(code);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? codeOf(ExitCode::Good) : codeOf(ExitCode::Usage);
    } catch (const Failure& failure) {
        std::cout.flush();
        std::cerr << failure.what() << '\n';
        return codeOf(failure.code());
    } catch (const std::exception& error) {
        std::cout.flush();
        std::cerr << "station: " << error.what() << "; this is a fault of the program\n";
        return codeOf(ExitCode::ComponentFailed);
    }
}
