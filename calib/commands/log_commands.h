// The subcommands of 'calib log'; see commands.h.
#ifndef CALIB_COMMANDS_LOG_COMMANDS_H_
#define CALIB_COMMANDS_LOG_COMMANDS_H_

#include "calib/console/command_line.h"

namespace calib {

void AddLogCount(Command* log, int* status);
void AddLogAppend(Command* log, int* status);
void AddLogSplit(Command* log, int* status);
void AddLogJoin(Command* log, int* status);
void AddLogRecover(Command* log, int* status);
void AddLogCurrent(Command* log, int* status);
void AddLogAt(Command* log, int* status);
void AddLogRollback(Command* log, int* status);
void AddLogHistory(Command* log, int* status);

}  // namespace calib

#endif  // CALIB_COMMANDS_LOG_COMMANDS_H_
