// calib report FILE...
#include "calib/pages/report.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

#include "calib/checks/plausible.h"
#include "calib/commands/commands.h"
#include "calib/commands/drawing_flags.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/presence.h"
#include "calib/fields/rigid_numbers.h"
#include "calib/fields/unknown.h"
#include "calib/formats/names.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

struct Flags {
  std::vector<std::string> paths;
  std::string output_path = "-";
  InputFlags input;
  DrawingFlags drawing;
};

std::vector<std::string> FindingsOf(const Record& record) {
  std::vector<std::string> findings;
  for (const std::string& path : MissingFields(*record.message)) {
    findings.push_back(path + ": required, but not set");
  }
  for (const UnknownField& unknown : FindUnknownFields(*record.message)) {
    findings.push_back(Describe(unknown));
  }
  for (const Finding& finding : FindImplausible(*record.message, kRotationTolerance)) {
    findings.push_back((finding.path.empty() ? "" : finding.path + ": ") + finding.what + " (" +
                       finding.rule + ")");
  }
  return findings;
}

// The files named as records in a folder and in those below it, by their names.
std::vector<std::string> RecordsIn(const std::string& folder) {
  std::vector<std::string> paths;
  std::error_code error;
  const auto options = std::filesystem::directory_options::skip_permission_denied;
  for (std::filesystem::recursive_directory_iterator i(folder, options, error), end;
       !error && i != end; i.increment(error)) {
    const std::string path = i->path().string();
    const NameFacts facts = FactsFromName(path);
    if (i->is_regular_file(error) && facts.type != nullptr && facts.format) paths.push_back(path);
  }
  if (error) throw Failure(folder + ": cannot be read: " + error.message());
  std::sort(paths.begin(), paths.end());
  return paths;
}

// All records of the files; what cannot be read of them is told on the page, or thrown if there is
// nothing else.
std::string Overview(const std::vector<std::string>& paths, const Flags& flags,
                     const ChartOptions& options) {
  OverviewReport report(options);
  std::optional<Failure> first;
  const auto unless_it_fails = [&](const auto& read) {
    try {
      return read();
    } catch (const Failure& failure) {
      if (!first) first = failure;
      report.AddFailure(failure.what());
      return true;
    }
  };
  for (const std::string& path : paths) {
    std::optional<RecordReader> reader;
    unless_it_fails([&] {
      reader.emplace(path, flags.input);
      return true;
    });
    Record record = {};
    while (reader && unless_it_fails([&] {
             if (!reader->Next(&record)) return false;
             report.Add({&record, FindingsOf(record)});
             return true;
           })) {
    }
  }
  if (report.records() > 0) return report.Html();
  if (first) throw *first;
  throw Failure(flags.paths[0] + ": holds no record, and no file that is named as one",
                "Records are named like rig.RobotCalibration.binpb.");
}

std::string Report(const Flags& flags) {
  ChartOptions options;
  flags.drawing.Apply(&options);
  std::vector<std::string> paths;
  bool overview = flags.paths.size() > 2;
  for (const std::string& path : flags.paths) {
    std::error_code error;
    if (!std::filesystem::is_directory(path, error)) {
      overview = overview || MayHoldMany(path, flags.input);
      paths.push_back(path);
      continue;
    }
    overview = true;
    for (const std::string& inside : RecordsIn(path)) paths.push_back(inside);
  }
  if (overview) return Overview(paths, flags, options);
  const std::vector<Record> records = ReadRecords(paths, flags.input);
  const ReportedRecord first{&records[0], FindingsOf(records[0])};
  if (records.size() == 1) return RecordReport(first, Schema(), options);
  return DifferenceReport(first, {&records[1], FindingsOf(records[1])}, options);
}

}  // namespace

void AddReport(Command* program, int* status) {
  Command* command = program->AddCommand("report", "Writes a page on records, for a browser");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The records, logs or folders of them")->Required();
  command->AddOption("--output", flags->output_path, "The page to write; else standard output")
      ->ValueName("OUT");
  flags->drawing.AddTo(command);
  flags->input.AddTo(command);
  command->Footer(
      "Of one record: what it is, what checks find, its drawings, images and all its fields. Of "
      "two records of one type: what differs in the second. Of more, of a log or of a folder, a "
      "line and a small drawing for each. The page is one file, which loads nothing from "
      "elsewhere.\n\n"
      "Examples:\n"
      "  calib report rig.RobotCalibration.binpb --output rig.html\n"
      "  calib report october.FocusInfo.binpb november.FocusInfo.binpb --output focus.html\n"
      "  calib report robots/ --output robots.html\n"
      "  calib report rig.RobotCalibration.binpb.log[-20:] --output rig.html");
  command->Callback([flags, status] {
    WriteFile(flags->output_path, Report(*flags));
    *status = kFine;
  });
}

}  // namespace calib
