// The subcommands. Each function adds its own to the program: flags, help, examples, and a callback
// that does the work and sets *status to one of the exit statuses of failure.h.
#ifndef CALIB_COMMANDS_COMMANDS_H_
#define CALIB_COMMANDS_COMMANDS_H_

#include "calib/console/command_line.h"

namespace calib {

void AddTypes(Command* program, int* status);
void AddShow(Command* program, int* status);
void AddConvert(Command* program, int* status);
void AddCheck(Command* program, int* status);
void AddFingerprint(Command* program, int* status);
void AddDiff(Command* program, int* status);
void AddGet(Command* program, int* status);
void AddSet(Command* program, int* status);
void AddMerge(Command* program, int* status);
void AddLog(Command* program, int* status);
void AddTable(Command* program, int* status);
void AddDrift(Command* program, int* status);
void AddPlot(Command* program, int* status);
void AddReport(Command* program, int* status);
void AddImage(Command* program, int* status);
void AddImport(Command* program, int* status);
void AddExport(Command* program, int* status);
void AddProject(Command* program, int* status);
void AddUnproject(Command* program, int* status);
void AddUndistort(Command* program, int* status);
void AddUndistortImage(Command* program, int* status);
void AddRectify(Command* program, int* status);
void AddTransform(Command* program, int* status);
void AddConvertLens(Command* program, int* status);
void AddScale(Command* program, int* status);
void AddCrop(Command* program, int* status);
void AddBin(Command* program, int* status);
void AddRotate(Command* program, int* status);
void AddResiduals(Command* program, int* status);

}  // namespace calib

#endif  // CALIB_COMMANDS_COMMANDS_H_
