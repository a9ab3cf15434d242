// calib table FILE...
//
// One thread reads the files and hands batches of encoded records to others, which decode them and
// make their rows; rows are written in the order of the input. A few batches are under way at a
// time, so that memory is bounded.
#include "calib/views/table.h"

#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <sstream>
#include <thread>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/file_list.h"
#include "calib/console/output_file.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

constexpr size_t kBatchBytes = size_t{1} << 18;
constexpr size_t kBatchRecords = 1000;

struct Flags {
  std::vector<std::string> paths;
  std::string files_from, columns, to = "text", output_path = "-";
  InputFlags input;
  TableOptions table;
};

// What is wrong with a file or a record, to be told in its turn.
struct Trouble {
  std::string what, remedy;
};

struct BatchRecord {
  EncodedRecord encoded;
  std::string file;
  std::optional<Trouble> trouble;  // in place of a record
};

struct Rows {
  std::string text;
  std::vector<Trouble> troubles;
};

Rows RowsOf(const Table* table, const std::vector<BatchRecord>& batch) {
  Rows rows;
  Record record = {};
  for (const BatchRecord& next : batch) {
    if (next.trouble) {
      rows.troubles.push_back(*next.trouble);
      continue;
    }
    try {
      DecodeRecordInto(next.encoded, &record);
      table->AppendRows(*record.message, {next.file, next.encoded.index}, &rows.text);
    } catch (const Failure& failure) {
      rows.troubles.push_back({failure.what(), failure.remedy()});
    }
  }
  return rows;
}

// Writes rows as they come, and the header ahead of them.
class TableWriter {
 public:
  TableWriter(const std::string& path, TableFormat format) : format_(format), file_(path) {}

  void Write(const std::string& rows) {
    file_.Write(format_ == TableFormat::kText ? aligned_.Add(rows) : rows);
  }
  void Commit() {
    if (format_ == TableFormat::kText) file_.Write(aligned_.Rest());
    file_.Commit();
  }

 private:
  const TableFormat format_;
  OutputFile file_;
  TextColumns aligned_;
};

class TableMaker {
 public:
  explicit TableMaker(const Flags& flags)
      : flags_(flags), writer_(flags.output_path, flags.table.format) {}

  int Run(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) Read(path);
    Send();
    while (!under_way_.empty()) Receive();
    writer_.Commit();
    if (table_ == nullptr && troubles_ == 0) Note("there is no record to make a row of");
    if (troubles_ == 0) return kFine;
    Note(std::to_string(troubles_) +
         (troubles_ == 1 ? " file or record has no row" : " files or records have no row"));
    return kFinding;
  }

 private:
  void Read(const std::string& path) {
    try {
      RecordFile file(path, flags_.input);
      TakeType(file);
      for (;;) {
        BatchRecord next;
        if (!file.Next(&next.encoded)) return;
        next.file = file.name();
        bytes_ += next.encoded.bytes.size();
        batch_.push_back(std::move(next));
        if (bytes_ >= kBatchBytes || batch_.size() >= kBatchRecords) Send();
      }
    } catch (const WrongColumn& wrong) {
      throw Failure(wrong.what(), wrong.remedy());
    } catch (const Failure& failure) {
      batch_.push_back({{}, "", Trouble{failure.what(), failure.remedy()}});
    }
  }

  // The first file's type is the table's.
  void TakeType(const RecordFile& file) {
    if (table_ == nullptr) {
      try {
        table_ = std::make_unique<Table>(file.type(), flags_.table);
      } catch (const Failure& failure) {
        throw WrongColumn(failure.what(), failure.remedy());
      }
      writer_.Write(table_->Header());
    }
    if (file.type() == table_->type()) return;
    throw Failure(file.name() + ": is a " + file.type()->name() + ", and the table is of " +
                  table_->type()->name() + " records");
  }

  void Send() {
    if (batch_.empty()) return;
    // A small table is made at once, and so is any by a single processor.
    static const unsigned processors = std::thread::hardware_concurrency();
    const bool alone = processors < 2 || (under_way_.empty() && bytes_ < kBatchBytes / 4);
    under_way_.push_back(
        std::async(alone ? std::launch::deferred : std::launch::async,
                   [this, batch = std::move(batch_)] { return RowsOf(table_.get(), batch); }));
    batch_.clear();
    bytes_ = 0;
    while (under_way_.size() > (alone ? 0 : 2 * processors)) Receive();
  }

  void Receive() {
    const Rows rows = under_way_.front().get();
    under_way_.pop_front();
    writer_.Write(rows.text);
    for (const Trouble& trouble : rows.troubles) TellFailure(trouble.what, trouble.remedy);
    troubles_ += rows.troubles.size();
  }

  // Of the command line, and not of a file.
  class WrongColumn : public Failure {
   public:
    using Failure::Failure;
  };

  const Flags& flags_;
  TableWriter writer_;
  std::unique_ptr<Table> table_;
  std::vector<BatchRecord> batch_;
  size_t bytes_ = 0;
  std::deque<std::future<Rows>> under_way_;
  size_t troubles_ = 0;
};

int MakeTable(Flags flags) {
  flags.table.format = TableFormatNamed(flags.to);
  std::istringstream names(flags.columns);
  for (std::string name; std::getline(names, name, ',');) flags.table.columns.push_back(name);
  std::vector<std::string> paths = flags.paths;
  if (!flags.files_from.empty()) {
    for (const std::string& line : ReadLines(flags.files_from)) paths.push_back(line);
  }
  if (paths.empty()) throw Failure("no file is named", "Name files, folders or patterns.");
  const auto* type = flags.input.type.empty() ? nullptr : RecordType(flags.input.type);
  const std::vector<std::string> files = ListFiles(paths, [&](const std::string& path) {
    const NameFacts facts = FactsFromName(path);
    return facts.format && facts.type != nullptr && (type == nullptr || facts.type == type);
  });
  return TableMaker(flags).Run(files);
}

}  // namespace

void AddTable(Command* program, int* status) {
  Command* command = program->AddCommand("table", "Prints fields of many records as a table");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The files; a folder stands for all records below it");
  command->AddOption("--files-from", flags->files_from, "Read more names from LIST, one a line")
      ->ValueName("LIST");
  command
      ->AddOption(
          "--columns", flags->columns,
          "Fields, such as name,intrinsics.fx,intrinsics.k[0]; also file, record (its index "
          "in the file) and index (of --each). Else all single values")
      ->ValueName("A,B...");
  command
      ->AddOption(
          "--each", flags->table.each,
          "A row for each element of this repeated message, such as camera or "
          "camera.intrinsics.sample_points; columns are the element's fields, or the record's")
      ->ValueName("FIELD");
  AddChoice(command, "--to", &flags->to, TableFormatNames(), "Format of the table");
  command->AddFlag("--defaults", flags->table.defaults,
                   "Declared defaults in place of what is not set");
  command->AddOption("--output", flags->output_path, "The file to write; else standard output")
      ->ValueName("OUT");
  flags->input.AddTo(command);
  command->Footer(
      "Rows come in the order of the input; the files of a folder, and those that match a pattern "
      "in quotes (**, *, ?), are sorted by name. The first file's type is the table's. What is not "
      "set is empty, and null in JSON lines; numbers are the shortest that read back the same; a "
      "list is its elements, and bytes are their number.\n\n"
      "Exit status: 0 fine, 1 a file or a record could not be read, which is told on standard "
      "error, 2 trouble.\n\n"
      "Examples:\n"
      "  calib table --each camera --columns file,name,intrinsics.fx robots/\n"
      "  calib table --to csv 'robots/**/*.RobotCalibration.binpb' --each camera\n"
      "  calib table checks.FocusCheckProto.binpb.log --columns record,name,ok --to jsonl");
  command->Callback([flags, status] { *status = MakeTable(*flags); });
}

}  // namespace calib
