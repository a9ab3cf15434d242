// calib table FILE...
//
// One thread reads the files and hands batches of encoded records to others, which decode them and
// make their rows; rows are written in the order of the input. A few batches are under way at a
// time, so that memory is bounded. On a single processor, and of records that are too large to be
// copied, the reading thread makes the rows itself.
#include "calib/views/table.h"

#include <sys/stat.h>
#include <unistd.h>

#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <sstream>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/date.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/file_list.h"
#include "calib/console/output_file.h"
#include "calib/console/processors.h"
#include "calib/console/progress.h"
#include "calib/formats/log_times.h"
#include "calib/formats/record_reader.h"

namespace calib {
namespace {

constexpr size_t kBatchBytes = size_t{1} << 18;
constexpr size_t kBatchRecords = 1000;
constexpr size_t kHeldBytes = size_t{1} << 20;    // of a batch, in blocks that it holds
constexpr size_t kCopiedBytes = size_t{1} << 12;  // a record that is no larger is always copied
constexpr size_t kLargeBytes = size_t{1} << 22;

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

// Rows, behind which is told what is wrong with the records that have none.
struct Rows {
  RowText text;
  std::vector<Trouble> troubles;
  std::unique_ptr<google::protobuf::Message> record;  // the latest
};

void AppendRows(const Table& table, const EncodedRecord& encoded, const std::string& appended,
                Rows* rows) {
  try {
    DecodeMessageInto(encoded, &rows->record);
    table.AppendRows(*rows->record, {*encoded.file, encoded.index, appended}, &rows->text);
  } catch (const Failure& failure) {
    rows->troubles.push_back({failure.what(), failure.remedy()});
  }
}

// Encoded records of some files, and what is wrong with files, in the order of the input; and the
// rows that are made of them, behind those that it has already. The records lie one behind the
// other in `bytes`, or where they were read. Used again for later ones, with the memory that it
// has.
struct Batch {
  struct File {
    std::string name;
    const google::protobuf::Descriptor* type;
    Format format;
    bool many;
  };
  // What few items have.
  struct Extra {
    std::string appended;
    std::optional<Trouble> trouble;  // in place of a record
  };
  struct Item {
    size_t file, size;
    int64_t index;
    const char* held;  // null: the next ones of `bytes`
    std::unique_ptr<Extra> extra;
  };
  std::vector<File> files;
  std::vector<Item> items;
  std::string bytes;
  std::vector<std::shared_ptr<const char>> blocks;
  size_t held = 0;  // bytes of records in them
  Rows rows;

  void Clear() {
    files.clear();
    items.clear();
    bytes.clear();
    blocks.clear();
    held = 0;
    rows.text.clear();
    rows.troubles.clear();
  }
  bool Empty() const { return items.empty() && rows.text.size() == 0 && rows.troubles.empty(); }
  bool Full() const {
    return bytes.size() >= kBatchBytes || held >= kHeldBytes || items.size() >= kBatchRecords ||
           rows.text.size() >= kBatchBytes;
  }
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

std::unique_ptr<Batch> MakeRows(const Table* table, std::unique_ptr<Batch> batch) {
  const std::string nothing;
  const std::string_view bytes = batch->bytes;
  EncodedRecord encoded = {};
  size_t begin = 0, file = batch->files.size();
  for (Batch::Item& item : batch->items) {
    if (item.extra && item.extra->trouble) {
      batch->rows.troubles.push_back(std::move(*item.extra->trouble));
      continue;
    }
    if (item.file != file) {
      file = item.file;
      const Batch::File& from = batch->files[file];
      encoded = {&from.name, from.type, from.format, {}, 0, from.many};
    }
    if (item.held != nullptr) {
      encoded.bytes = {item.held, item.size};
    } else {
      encoded.bytes = bytes.substr(begin, item.size);
      begin += item.size;
    }
    encoded.index = item.index;
    AppendRows(*table, encoded, item.extra ? item.extra->appended : nothing, &batch->rows);
  }
  return batch;
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
  explicit TableMaker(const Flags& flags)
      : flags_(flags), writer_(flags.output_path, flags.table.format) {}

  int Run(const std::vector<std::string>& paths) {
    const Progress progress(Progress::OfMany(),
                            "reading " + std::to_string(paths.size()) + " files",
                            ShowsProgress(flags_) ? SizeOfAll(paths) : 0);
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
      const std::optional<LogTimes> times =
          table_->NeedsTimes() ? std::optional<LogTimes>(SplitPath(path).path) : std::nullopt;
      while (file.Next(&encoded_)) {
        const std::optional<int64_t> time = times ? times->TimeOf(encoded_.index) : std::nullopt;
        Add(file, time ? FormatDate(*time) : "");
        if (batch_->Full()) Send();
      }
    } catch (const NoTable& no_table) {
      throw Failure(no_table.what(), no_table.remedy());
    } catch (const Failure& failure) {
      batch_->items.push_back({0, 0, 0, nullptr, std::make_unique<Batch::Extra>()});
      batch_->items.back().extra->trouble = {failure.what(), failure.remedy()};
    }
  }

  // The record that was read.
  void Add(const RecordFile& file, const std::string& appended) {
    if (processors_ < 2 || encoded_.bytes.size() >= kLargeBytes) {
      if (!batch_->items.empty()) Send();
      return AppendRows(*table_, encoded_, appended, &batch_->rows);
    }
    std::vector<Batch::File>& files = batch_->files;
    if (files.empty() || files.back().name != *encoded_.file) {
      files.push_back({*encoded_.file, encoded_.type, encoded_.format, encoded_.one_of_many});
    }
    const std::string_view bytes = encoded_.bytes;
    auto block = bytes.size() > kCopiedBytes ? file.Hold(bytes) : nullptr;
    batch_->items.push_back({files.size() - 1, bytes.size(), encoded_.index,
                             block == nullptr ? nullptr : bytes.data(), nullptr});
    if (block == nullptr) {
      batch_->bytes += bytes;
    } else {
      batch_->held += bytes.size();
      if (batch_->blocks.empty() || batch_->blocks.back() != block) {
        batch_->blocks.push_back(std::move(block));
      }
    }
    if (appended.empty()) return;
    batch_->items.back().extra = std::make_unique<Batch::Extra>();
    batch_->items.back().extra->appended = appended;
  }

  // The first file's type is the table's.
  void TakeType(const RecordFile& file) {
    if (table_ == nullptr) {
      try {
        table_ = std::make_unique<Table>(file.type(), flags_.table);
      } catch (const Failure& failure) {
        throw NoTable(failure.what(), failure.remedy());
      }
      Write(table_->Header());
    }
    if (file.type() == table_->type()) return;
    throw Failure(file.name() + ": is a " + file.type()->name() + ", and the table is of " +
                  table_->type()->name() + " records");
  }

  void Send() {
    if (batch_->Empty()) return;
    // A small table is made at once.
    const bool alone =
        batch_->items.empty() ||
        (under_way_.empty() && batch_->bytes.size() + batch_->held < kBatchBytes / 4);
    under_way_.push_back(std::async(alone ? std::launch::deferred : std::launch::async, MakeRows,
                                    table_.get(), std::move(batch_)));
    const size_t most = processors_ < 2 ? 0 : 2 * static_cast<size_t>(processors_);
    while (under_way_.size() > most) Receive();
    if (spare_.empty()) spare_.push_back(std::make_unique<Batch>());
    batch_ = std::move(spare_.back());
    spare_.pop_back();
  }

  void Receive() {
    std::unique_ptr<Batch> done = under_way_.front().get();
    under_way_.pop_front();
    Write(done->rows.text.view());
    for (const Trouble& trouble : done->rows.troubles) TellFailure(trouble.what, trouble.remedy);
    troubles_ += done->rows.troubles.size();
    done->Clear();
    spare_.push_back(std::move(done));
  }

  void Write(std::string_view rows) {
    try {
      writer_.Write(rows);
    } catch (const Failure& failure) {
      throw NoTable(failure.what(), failure.remedy());
    }
  }

  // Of the table as a whole, which cannot go on, and not of a file that is read.
  class NoTable : public Failure {
   public:
    using Failure::Failure;
  };

  const Flags& flags_;
  const int processors_ = CountProcessors();
  TableWriter writer_;
  std::unique_ptr<Table> table_;
  EncodedRecord encoded_;
  std::unique_ptr<Batch> batch_ = std::make_unique<Batch>();
  std::deque<std::future<std::unique_ptr<Batch>>> under_way_;
  std::vector<std::unique_ptr<Batch>> spare_;
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
