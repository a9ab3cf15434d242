// calib log split LOG --into FOLDER
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

#include "calib/commands/log_commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/system_error.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"

namespace calib {
namespace {

struct Flags {
  std::string path, folder;
  InputFlags input;
  OutputFlags output;
  int every = 0;
};

// So many digits that names sort as the records do.
std::string Numbered(const std::string& stem, int64_t number) {
  char digits[24];
  std::snprintf(digits, sizeof digits, "%06lld", static_cast<long long>(number));
  return stem + "-" + digits;
}

void Split(const Flags& flags) {
  RecordReader reader(flags.path, flags.input);
  const std::string path = SplitPath(flags.path).path;
  const std::string stem = path == "-" ? "record" : StemOf(path);
  const FileFormat format = !flags.output.format.empty()
                                ? FormatNamed(flags.output.format)
                                : FileFormat{Format::kBinary, flags.every > 0};
  if (mkdir(flags.folder.c_str(), 0777) != 0 && errno != EEXIST) {
    FailForSystem(OutputName(flags.folder), "cannot be made", errno);
  }
  std::optional<RecordFileWriter> writer;
  Record record = {};
  int64_t count = 0;
  const int64_t every = flags.every > 0 ? flags.every : 1;
  for (; reader.Next(&record); ++count) {
    if (count % every == 0) {
      if (writer) writer->Commit();
      writer.reset();  // of which there may be one at a time
      writer.emplace(flags.folder + "/" + NameFor(Numbered(stem, count), record.type, format),
                     record.type, flags.output);
    }
    writer->Write(*record.message);
  }
  if (writer) writer->Commit();
}

}  // namespace

void AddLogSplit(Command* log, int* status) {
  Command* command = log->AddCommand("split", "Writes the records of a log to files of their own");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("LOG", flags->path, "The log to split")->Required();
  command->AddOption("--into", flags->folder, "The folder for the files, which is made")
      ->Required()
      ->ValueName("FOLDER");
  command->AddOption("--every", flags->every, "Logs of N records, in place of files of one")
      ->Check(CountFromOne())
      ->ValueName("N");
  flags->input.AddTo(command);
  flags->output.AddTo(command);
  command->Footer(
      "The files are named after the log and the number of their first record. 'calib log join' "
      "puts them together again.\n\n"
      "Examples:\n"
      "  calib log split checks.FocusCheckProto.binpb.log --into checks --to json\n"
      "  calib log split checks.FocusCheckProto.binpb.log --into checks --every 1000");
  command->Callback([flags, status] {
    Split(*flags);
    *status = kFine;
  });
}

}  // namespace calib
