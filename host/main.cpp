#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "host/Clock.h"
#include "host/Commands.h"
#include "host/DeepStack.h"

namespace {

using namespace trel::host;

// An option that takes a time, such as "20ms".
void addTime(CLI::App& command, const std::string& name, std::optional<Time>& target,
             Time shortest, const std::string& help) {
    command
        .add_option_function<std::string>(
            name,
            [&target, name, shortest](const std::string& text) {
                target = readTime(text);
                if (!target || *target < shortest)
                    throw CLI::ValidationError(
                        name, fmt::format("\"{}\" is no such time; write a number and us, ms, s "
                                          "or min, as in 20ms",
                                          text));
            },
            help)
        ->type_name("TIME");
}

void addLibraries(CLI::App& command, std::vector<std::filesystem::path>& libraries) {
    command
        .add_option("--components", libraries,
                    "A further library of component types; may be given more than once")
        ->type_name("LIB")
        ->allow_extra_args(false);  // FILE may follow it
}

void addRun(CLI::App& app, RunOptions& options) {
    CLI::App& command = *app.add_subcommand(
        "run", "Lets a station run, prints what changes, and checks what a scenario expects.\n"
               "Example: station run station.xml --scenario scenario.yaml --save after.xml");
    command.add_option("FILE", options.file, "The station file")->required();
    command
        .add_option("--scenario", options.scenario,
                    "What is set, and what must hold, at which time (YAML)")
        ->type_name("FILE");
    addTime(command, "--until", options.until, 0,
            "How long the run lasts in simulation time; else until the scenario ends");
    addTime(command, "--step", options.step, 1, "How often components are executed; else 10ms");
    addLibraries(command, options.libraries);
    command
        .add_option("--save", options.save,
                    "Where the station is saved after a good run; nothing is saved without it")
        ->type_name("FILE");
    command.add_flag("--show", options.show, "Print the station after the run, as show does");
}

void addShow(CLI::App& app, ShowOptions& options) {
    CLI::App& command = *app.add_subcommand(
        "show", "Prints the components of a station with their properties, signals, connections\n"
                "and bindings. Example: station show station.xml");
    command.add_option("FILE", options.file, "The station file")->required();
    addLibraries(command, options.libraries);
}

int codeOf(ExitCode code) { return static_cast<int>(code); }

}  // namespace

int main(int argc, char** argv) {
    CLI::App app(
        "A host for robot-cell stations.\n"
        "Exit codes: 0 good, 1 an expectation failed, 2 a file is invalid, 3 wrong usage,\n"
        "4 a component failed, 6 the station cannot be saved.",
        "station");
    RunOptions runOptions;
    ShowOptions showOptions;
    addRun(app, runOptions);
    addShow(app, showOptions);
    app.require_subcommand(1);

    try {
        app.parse(argc, argv);
        ExitCode code = ExitCode::Good;
        onDeepStack([&] {
            code = app.got_subcommand("run") ? run(runOptions, std::cout)
                                             : show(showOptions, std::cout);
        });
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
