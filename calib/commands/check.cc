// calib check FILE...
//
// Each processor reads a batch of encoded records and looks for what is wrong with them; that is
// put together in the order of the input (console/in_order.h).
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "calib/checks/plausible.h"
#include "calib/checks/report.h"
#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/in_order.h"
#include "calib/console/printable.h"
#include "calib/console/processors.h"
#include "calib/console/progress.h"
#include "calib/fields/assignment.h"
#include "calib/fields/field_path.h"
#include "calib/fields/fingerprint.h"
#include "calib/fields/presence.h"
#include "calib/fields/rigid_numbers.h"
#include "calib/fields/unknown.h"
#include "calib/formats/names.h"
#include "calib/formats/record_batch.h"
#include "calib/formats/record_reader.h"

namespace calib {

using google::protobuf::Message;

namespace {

struct Flags {
  std::vector<std::string> paths;
  InputFlags input;
  bool allow_unknown = false;
  bool plausible = false;
  double rotation_tolerance = kRotationTolerance;
  std::string report;
  std::vector<std::string> expectations;
  std::vector<Assignment> expected;  // the same, understood
  std::string fingerprint;
};

bool NamesTellFormats(const std::vector<std::string>& paths) {
  return std::all_of(paths.begin(), paths.end(),
                     [](const std::string& path) { return bool(FactsFromName(path).format); });
}

// --format is the input's, as everywhere, and where it cannot be, the report's.
void SortOutFormat(Flags* flags) {
  const std::vector<std::string> reports = ReportFormatNames(), formats = FormatNames();
  const std::string& word = flags->input.format;
  const bool of_report = std::find(reports.begin(), reports.end(), word) != reports.end();
  const bool of_input = std::find(formats.begin(), formats.end(), word) != formats.end();
  if (!flags->report.empty() || !of_report) return;
  if (of_input && !NamesTellFormats(flags->paths)) return;
  flags->report = std::exchange(flags->input.format, "");
}

// A failure begins with the name of the file, and mostly with the place in it: "NAME:LINE:COLUMN: "
Finding Malformed(const std::string& name, const std::string& failure) {
  Finding finding = {"malformed", "", "", PrintableLines(failure)};
  std::string& what = finding.what;
  if (what.compare(0, name.size() + 1, name + ":") != 0) return finding;
  what.erase(0, name.size() + 1);
  char* end = nullptr;
  const long line = std::strtol(what.c_str(), &end, 10);
  if (line > 0 && *end == ':') {
    finding.line = line;
    finding.column = std::strtol(end + 1, &end, 10);
    what.erase(0, static_cast<size_t>(end - what.c_str()) + 1);
  }
  what.erase(0, what.find_first_not_of(' '));
  return finding;
}

// What is not as the user expects it.
void FindUnexpected(const Message& record, const Flags& flags, Findings* findings) {
  for (const Assignment& expected : flags.expected) {
    for (const Unmet& unmet : FindUnmet(expected, record)) {
      findings->push_back({"expect", unmet.path, unmet.value,
                           (unmet.value.empty() ? "is not set" : "is " + unmet.value) +
                               ", expected " +
                               (unmet.expected.empty() ? "nothing" : unmet.expected)});
    }
  }
  if (flags.fingerprint.empty()) return;
  const std::string fingerprint = Fingerprint(record);
  if (fingerprint == flags.fingerprint) return;
  findings->push_back({"expect-fingerprint", "", fingerprint,
                       "its fingerprint is " + fingerprint + ", expected " + flags.fingerprint});
}

// What is wrong with the record.
Findings FindAll(const Message& record, const Flags& flags) {
  Findings findings;
  for (const std::string& path : MissingFields(record)) {
    findings.push_back({"required", path, "", "required, but not set"});
  }
  if (!flags.allow_unknown) {
    for (UnknownField& unknown : FindUnknownFields(record)) {
      const std::string path = std::exchange(unknown.path, "");
      findings.push_back({"unknown", path, "", Describe(unknown)});
    }
  }
  if (flags.plausible) {
    for (Finding& finding : FindImplausible(record, flags.rotation_tolerance)) {
      findings.push_back(std::move(finding));
    }
  }
  FindUnexpected(record, flags, &findings);
  return findings;
}

// Of a file of many records: what there is to say of all.
struct Tally {
  int64_t records = 0, whole = 0, empty_at_end = 0;

  void Add(const Tally& next) {
    const bool all_empty = next.empty_at_end == next.records;
    empty_at_end = next.empty_at_end + (all_empty ? empty_at_end : 0);
    records += next.records;
    whole += next.whole;
  }
  std::string Summary(const CheckedFile& checked) const {
    std::string summary = checked.name + ": " + std::to_string(whole) +
                          (whole < records ? " of " + std::to_string(records) : "") + " whole " +
                          checked.type + (records == 1 ? " record, " : " records, ") +
                          std::to_string(checked.size) + " bytes";
    if (empty_at_end > 0) {
      summary += "; in the last " + std::to_string(empty_at_end) +
                 " nothing is set, as where a file was not written to its end";
    }
    return summary;
  }
};

// What is wrong with the record, which it is decoded into. Throws Failure for an expectation that
// no record of this type can meet.
Findings FindIn(const EncodedRecord& encoded, const Flags& flags,
                std::unique_ptr<Message>* record) {
  try {
    DecodeMessageInto(encoded, record);
  } catch (const Failure& malformed) {
    return {Malformed(encoded.name(), malformed.what())};
  }
  try {
    return FindAll(**record, flags);
  } catch (const Failure& failure) {
    throw Failure(encoded.name() + ": " + failure.what(), failure.remedy());
  }
}

// A finding in one of many records has its number in its path, and its column in the text: the line
// is the record's own.
Finding AmongMany(Finding finding, int64_t record) {
  const std::string index = "[" + std::to_string(record) + "]";
  finding.path = finding.path.empty() ? index : JoinPath(index, finding.path);
  if (finding.line > 0) {
    finding.what.insert(0, "column " + std::to_string(finding.column) + ": ");
    finding.line = finding.column = 0;
  }
  return finding;
}

// What is found in a part of a file.
struct CheckedPart {
  CheckedFile file;
  Tally tally;
  std::optional<Failure> failure;  // why the file cannot be checked
};

// Records, and what is found in them.
struct CheckBatch {
  RecordBatch records;
  std::vector<CheckedPart> checked;  // for each of their parts
  std::unique_ptr<Message> record;   // the latest
};

void CheckRecords(const RecordBatch& records, const RecordBatch::Part& part, const Flags& flags,
                  std::unique_ptr<Message>* record, CheckedPart* checked) {
  CheckedFile& file = checked->file;
  Tally& tally = checked->tally;
  records.VisitRecords(part, [&](const EncodedRecord& encoded, const std::string&) {
    Findings findings = FindIn(encoded, flags, record);
    ++tally.records;
    tally.whole += findings.empty();
    tally.empty_at_end = encoded.bytes.empty() ? tally.empty_at_end + 1 : 0;
    file.size += encoded.bytes.size();
    if (!part.many) {
      file.name = encoded.name();
      file.empty = IsEmpty(**record);
      file.findings = std::move(findings);
      return;
    }
    for (Finding& finding : findings) {
      file.findings.push_back(AmongMany(std::move(finding), encoded.index));
    }
  });
}

void CheckBatchOf(const Flags& flags, CheckBatch* batch) {
  batch->checked.clear();
  for (const RecordBatch::Part& part : batch->records.parts()) {
    CheckedPart& checked = batch->checked.emplace_back();
    checked.file.name = part.name;
    if (part.type != nullptr) checked.file.type = part.type->name();
    try {
      CheckRecords(batch->records, part, flags, &batch->record, &checked);
    } catch (const Failure& failure) {
      checked.failure = failure;
      continue;
    }
    if (part.damaged) {
      checked.file.findings.push_back(Malformed(part.name, part.failure->what()));
    } else {
      checked.failure = part.failure;
    }
  }
}

// Puts together what was found in the parts of files, and reports it.
class Checker {
 public:
  Checker(const Flags& flags, Report* report)
      : flags_(flags),
        report_(report),
        failures_(flags.report.empty() ? flags.paths.size()
                                       : 0),  // of a report, one file is no exception
        reader_(flags.paths, flags.input) {}

  void Run() {
    InOrder<CheckBatch>(CountProcessors(), {[this](CheckBatch* batch) { return Fill(batch); },
                                            [this](CheckBatch* batch) {
                                              if (!batch->records.borrowed())
                                                CheckBatchOf(flags_, batch);
                                            },
                                            [this](CheckBatch* batch) { Finish(batch); }});
  }

 private:
  bool Fill(CheckBatch* batch) {
    const bool more = reader_.Fill(&batch->records);
    if (batch->records.borrowed()) CheckBatchOf(flags_, batch);
    return more;
  }

  void Finish(CheckBatch* batch) {
    for (size_t i = 0; i < batch->checked.size(); ++i) {
      const RecordBatch::Part& part = batch->records.parts()[i];
      if (part.file < files_) continue;  // it could not be checked
      for (const std::string& note : part.notes) Note(note);
      Add(&batch->checked[i]);
      if (batch->checked[i].failure || part.last) EndFile(part, batch->checked[i].failure);
    }
  }

  // What was found in the next part of a file.
  void Add(CheckedPart* next) {
    CheckedFile& file = next->file;
    // The parts behind those that have the record of a single one are without.
    if (file_.name.empty() || next->tally.records > 0) file_.name = file.name;
    file_.type = file.type;
    file_.size += file.size;
    file_.empty |= file.empty;
    std::move(file.findings.begin(), file.findings.end(), std::back_inserter(file_.findings));
    tally_.Add(next->tally);
  }

  void EndFile(const RecordBatch::Part& part, const std::optional<Failure>& failure) {
    // The next file may be on the terminal with how far it is read.
    if (Progress::OnTerminal()) std::fputs("\r\033[K", stderr);
    failures_.Try([&] {
      if (!failure) return;
      file_.trouble = failure->what();
      reader_.Abandon(part.file);
      throw Failure(*failure);
    });
    if (part.many && !failure) file_.summary = tally_.Summary(file_);
    report_->Add(std::exchange(file_, {}));
    tally_ = {};
    ++files_;
  }

  const Flags& flags_;
  // Of the thread that finishes a batch.
  Report* const report_;
  Failures failures_;
  size_t files_ = 0;  // that were reported
  CheckedFile file_;  // the next one, as far as it was checked
  Tally tally_;
  // Of the thread that fills one.
  RecordBatchReader reader_;
};

Assignment ParseExpected(const std::string& text) {
  Assignment expected = ParseAssignment(text);
  if (expected.kind == Assignment::Kind::kAppend) {
    throw Failure("--expect: '" + text + "' appends", "Write = in place of +=.");
  }
  return expected;
}

std::string ParseFingerprint(std::string text) {
  if (!text.empty() && !IsFingerprint(text)) {
    throw Failure("--expect-fingerprint: is '" + text + "', expected 64 hexadecimal digits",
                  "'calib fingerprint' prints them.");
  }
  for (char& c : text) c = static_cast<char>(std::tolower(c));
  return text;
}

int Check(Flags flags) {
  SortOutFormat(&flags);
  for (const std::string& text : flags.expectations) flags.expected.push_back(ParseExpected(text));
  flags.fingerprint = ParseFingerprint(flags.fingerprint);
  const bool for_people = flags.report.empty();
  Report report(for_people ? ReportFormat::kText : ReportFormatNamed(flags.report));
  Checker(flags, &report).Run();
  report.End();
  return report.failed() > 0 ? kTrouble : report.found() > 0 ? kFinding : kFine;
}

}  // namespace

void AddCheck(Command* program, int* status) {
  Command* command = program->AddCommand("check", "Says whether records are whole");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The files to check")->Required();
  flags->input.AddTo(command, {"github", "junit"});
  command->AddFlag("--allow-unknown", flags->allow_unknown,
                   "Accept unknown fields, as a newer schema makes them");
  command->AddFlag("--plausible", flags->plausible,
                   "Report numbers that no real device can have, too");
  command
      ->AddOption("--rotation-tolerance", flags->rotation_tolerance,
                  "How far off a rotation --plausible takes extrinsics; else 0.0001")
      ->Check(NumberFromZero())
      ->ValueName("NUMBER");
  command
      ->AddRepeatedOption("--expect", flags->expectations,
                          "Report the field if it holds another value; PATH= (nothing) if it is "
                          "set. May be given several times")
      ->ValueName("PATH=VALUE");
  command
      ->AddOption("--expect-fingerprint", flags->fingerprint,
                  "Report a record of another fingerprint, which 'calib fingerprint' prints")
      ->ValueName("HASH");
  AddChoice(command, "--report", &flags->report, ReportFormatNames(),
            "Format of what is found; --format says so, too, but text and json only if the names "
            "of all files tell what is in them");
  command->Footer(
      "Reports where a file is malformed and how, required fields that are not set, and unknown "
      "fields: one line for each, or one that says that the record is whole. Of several files all "
      "are checked, and the last line counts them; of a log, all records.\n\n"
      "--plausible reports focal lengths and sizes that are not above 0, numbers that are not "
      "finite, principal points and sample points outside the image, distortion that folds the "
      "image, extrinsics that are no rigid transform, names and serial numbers that two cameras "
      "have, images of a raw format that are not stride times height bytes long, and transfer "
      "functions of several lengths. What is not set is not checked.\n\n"
      "--expect and --expect-fingerprint ask whether it is the right file, before a robot drives "
      "by "
      "it: of this robot, and as it was approved.\n\n"
      "Exit status: 0 all are whole, 1 something was found, 2 a file could not be checked.\n\n"
      "Examples:\n"
      "  calib check rig.RobotCalibration.binpb\n"
      "  calib check checks.FocusCheckProto.binpb.log\n"
      "  calib check rig.RobotCalibration.binpb --expect 'camera[0].serial=B-0042'\n"
      "  calib check --plausible --report junit *.RobotCalibration.binpb > report.xml\n"
      "  calib check --type RobotCalibration --format binary - < rig.bin");
  command->Callback([flags, status] { *status = Check(*flags); });
}

}  // namespace calib
