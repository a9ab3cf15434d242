// The subcommands. Each function adds its own to the program: flags, help, examples, and a callback
// that does the work and sets *status to one of the exit statuses of failure.h.
#ifndef CALIB_COMMANDS_COMMANDS_H_
#define CALIB_COMMANDS_COMMANDS_H_

#include <CLI/CLI.hpp>

namespace calib {

void AddTypes(CLI::App* program, int* status);
void AddShow(CLI::App* program, int* status);
void AddConvert(CLI::App* program, int* status);
void AddCheck(CLI::App* program, int* status);
void AddPlot(CLI::App* program, int* status);
void AddImport(CLI::App* program, int* status);
void AddExport(CLI::App* program, int* status);
void AddDiff(CLI::App* program, int* status);
void AddGet(CLI::App* program, int* status);
void AddMerge(CLI::App* program, int* status);

}  // namespace calib

#endif  // CALIB_COMMANDS_COMMANDS_H_
