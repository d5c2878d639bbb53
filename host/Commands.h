#pragma once

namespace trel::host {

struct CommandLine;

// The subcommands of the program, each with its options and help. The one that
// the command line names becomes the chosen one.

void addCheck(const CommandLine& line);
void addGraph(const CommandLine& line);
void addDiff(const CommandLine& line);
void addRun(const CommandLine& line);
void addSet(const CommandLine& line);
void addShow(const CommandLine& line);
void addTypes(const CommandLine& line);
void addWiring(const CommandLine& line);   // connect, disconnect, move
void addObjects(const CommandLine& line);  // remove, rename

}  // namespace trel::host
