// calib log count FILE...
#include <cstdint>
#include <memory>

#include "calib/commands/log_commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/input_file.h"
#include "calib/formats/record_source.h"

namespace calib {
namespace {

// Goes by the lengths alone, so that it need not know the type.
int64_t Count(const std::string& path, int* status) {
  InputFile file(path);
  const FileFormat log = {Format::kBinary, true};
  const std::unique_ptr<RecordSource> source =
      NewRecordSource(&file, FactsFromName(path).format.value_or(log));
  int64_t count = 0;
  try {
    while (source->Skip()) ++count;
  } catch (const DamagedLog& damaged) {
    TellFailure(damaged.what(), damaged.remedy());
    *status = kFinding;
  }
  return count;
}

int CountAll(const std::vector<std::string>& paths) {
  int status = kFine;
  int64_t total = 0;
  Failures failures(paths.size());
  for (const std::string& path : paths) {
    failures.Try([&] {
      const int64_t count = Count(path, &status);
      total += count;
      Print(std::to_string(count) + (paths.size() > 1 ? " " + InputName(path) : "") + "\n");
    });
  }
  if (paths.size() > 1) Print(std::to_string(total) + " in all\n");
  return failures.count() > 0 ? kTrouble : status;
}

}  // namespace

void AddLogCount(Command* log, int* status) {
  Command* command = log->AddCommand("count", "Counts the records of files");
  const auto paths = std::make_shared<std::vector<std::string>>();
  command->AddOption("FILE", *paths, "The files to count the records of")->Required();
  command->Footer(
      "Goes by the lengths, and looks at no record; 'calib check' does. A file whose name does not "
      "tell its format is a log.\n\n"
      "Exit status: 0 fine, 1 a log is cut off or damaged, and was counted up to there, 2 "
      "trouble.\n\n"
      "Examples:\n"
      "  calib log count checks.FocusCheckProto.binpb.log\n"
      "  calib log count checks/*.log");
  command->Callback([paths, status] { *status = CountAll(*paths); });
}

}  // namespace calib
