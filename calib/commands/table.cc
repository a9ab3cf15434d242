// calib table FILE...
//
// Each processor reads a batch of encoded records, decodes them and makes their rows, which are
// written in the order of the input (console/in_order.h).
#include "calib/views/table.h"

#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/file_list.h"
#include "calib/console/in_order.h"
#include "calib/console/output_file.h"
#include "calib/console/processors.h"
#include "calib/console/progress.h"
#include "calib/formats/record_batch.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

struct Flags {
  std::vector<std::string> paths;
  std::string files_from, columns, to = "text", output_path = "-";
  InputFlags input;
  TableOptions table;
};

// What is to be told of a file or a record, in its turn.
struct Told {
  std::string what, remedy;
  bool note;  // and nothing that went wrong
};

// Records, and the rows that are made of them. Used again for later ones, with the memory that it
// has.
struct TableBatch {
  RecordBatch records;
  const Table* table;  // null as long as no file could be opened
  RowText rows;
  std::vector<Told> told;
  std::unique_ptr<google::protobuf::Message> record;  // the latest
};

// Rows on the same terminal show it themselves.
bool ShowsProgress(const Flags& flags) {
  return Progress::OnTerminal() && (flags.output_path != "-" || isatty(STDOUT_FILENO) == 0);
}

size_t SizeOfAll(const std::vector<std::string>& paths) {
  size_t size = 0;
  for (const std::string& path : paths) {
    struct stat status;
    if (stat(SplitPath(path).path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
      size += static_cast<size_t>(status.st_size);
    }
  }
  return size;
}

void MakeRows(TableBatch* batch) {
  for (const RecordBatch::Part& part : batch->records.parts()) {
    for (const std::string& note : part.notes) batch->told.push_back({note, "", true});
    const auto fail = [&](const Failure& failure) {
      batch->told.push_back({failure.what(), failure.remedy(), false});
    };
    batch->records.VisitRecords(part, [&](const EncodedRecord& encoded, const std::string& date) {
      try {
        DecodeMessageInto(encoded, &batch->record);
        batch->table->AppendRows(*batch->record, {*encoded.file, encoded.index, date},
                                 &batch->rows);
      } catch (const Failure& failure) {
        fail(failure);
      }
    });
    if (part.failure) fail(*part.failure);
  }
}

// Writes rows as they come, and the header ahead of them.
class TableWriter {
 public:
  TableWriter(const std::string& path, TableFormat format) : format_(format), file_(path) {}

  void Write(std::string_view rows) {
    if (format_ == TableFormat::kText) return file_.Write(aligned_.Add(rows));
    file_.Write(rows.data(), rows.size());
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
  TableMaker(const Flags& flags, const std::vector<std::string>& paths)
      : flags_(flags),
        writer_(flags.output_path, flags.table.format),
        reader_(paths, flags.input, [this](const RecordFile& file) { TakeType(file); }) {}

  int Run() {
    try {
      InOrder<TableBatch>(CountProcessors(), {[this](TableBatch* batch) { return Fill(batch); },
                                              [](TableBatch* batch) {
                                                if (!batch->records.borrowed()) MakeRows(batch);
                                              },
                                              [this](TableBatch* batch) { Finish(batch); }});
    } catch (const NoTable& no_table) {
      throw Failure(no_table.what(), no_table.remedy);
    }
    writer_.Commit();
    if (table_ == nullptr && troubles_ == 0) Note("there is no record to make a row of");
    if (troubles_ == 0) return kFine;
    Note(std::to_string(troubles_) +
         (troubles_ == 1 ? " file or record has no row" : " files or records have no row"));
    return kFinding;
  }

 private:
  // Of the table as a whole, which cannot go on, and not of a file that is read.
  struct NoTable : std::runtime_error {
    explicit NoTable(const Failure& failure)
        : std::runtime_error(failure.what()), remedy(failure.remedy()) {}
    const std::string remedy;
  };

  bool Fill(TableBatch* batch) {
    batch->rows.clear();
    batch->told.clear();
    const bool more = reader_.Fill(&batch->records);
    batch->table = table_.get();
    if (batch->records.borrowed()) MakeRows(batch);
    return more;
  }

  // The first file's type is the table's.
  void TakeType(const RecordFile& file) {
    if (table_ == nullptr) {
      try {
        table_ = std::make_unique<Table>(file.type(), flags_.table);
      } catch (const Failure& failure) {
        throw NoTable(failure);
      }
      if (table_->NeedsTimes()) reader_.TellTimes();
    }
    if (file.type() == table_->type()) return;
    throw Failure(file.name() + ": is a " + file.type()->name() + ", and the table is of " +
                  table_->type()->name() + " records");
  }

  void Finish(TableBatch* batch) {
    if (batch->table != nullptr && !std::exchange(has_header_, true)) {
      writer_.Write(batch->table->Header());
    }
    writer_.Write(batch->rows.view());
    for (const Told& told : batch->told) {
      if (told.note) {
        Note(told.what);
      } else {
        TellFailure(told.what, told.remedy);
        ++troubles_;
      }
    }
  }

  const Flags& flags_;
  // Of the thread that finishes a batch.
  TableWriter writer_;
  bool has_header_ = false;
  size_t troubles_ = 0;
  // Of the thread that fills one.
  RecordBatchReader reader_;
  std::unique_ptr<Table> table_;
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
  const Progress progress(Progress::OfMany(), "reading " + std::to_string(files.size()) + " files",
                          ShowsProgress(flags) ? SizeOfAll(files) : 0);
  return TableMaker(flags, files).Run();
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
          "in the file), appended (when, where LOG.times tells) and index (of --each). Else all "
          "single values")
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
