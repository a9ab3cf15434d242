// calib log ...
#include "calib/commands/commands.h"
#include "calib/commands/log_commands.h"

namespace calib {

void AddLog(Command* program, int* status) {
  Command* log = program->AddCommand("log", "Works on files of many records");
  AddLogCount(log, status);
  AddLogAppend(log, status);
  AddLogSplit(log, status);
  AddLogJoin(log, status);
  AddLogRecover(log, status);
  AddLogCurrent(log, status);
  AddLogAt(log, status);
  AddLogRollback(log, status);
  AddLogHistory(log, status);
  log->Footer(
      "A log holds any number of records of one type, each behind its length, and is named "
      "NAME.TYPE.binpb.log. All commands that read a file read logs, too.\n\n"
      "Examples:\n"
      "  calib log append checks.FocusCheckProto.binpb.log today.FocusCheckProto.binpb\n"
      "  calib log count checks.FocusCheckProto.binpb.log\n"
      "  calib log recover checks.FocusCheckProto.binpb.log \\\n"
      "    --output saved.FocusCheckProto.binpb.log");
}

}  // namespace calib
