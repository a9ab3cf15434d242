// The encoded records of many files in batches, for threads that decode them.
//
// A batch keeps the bytes of its records: in a copy, or by holding the blocks of the file that they
// lie in. A record that is too large for either stays where it was read, in a batch of its own,
// which has to be worked on before the next one is read.
#ifndef CALIB_FORMATS_RECORD_BATCH_H_
#define CALIB_FORMATS_RECORD_BATCH_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "calib/console/failure.h"
#include "calib/formats/log_times.h"
#include "calib/formats/record_file.h"

namespace calib {

class RecordBatch {
 public:
  // Records of a file that follow each other, and what there is to say of it behind them.
  struct Part {
    size_t file = 0;                                     // its number among all
    std::string name;                                    // as messages call it
    const google::protobuf::Descriptor* type = nullptr;  // null if the file could not be opened
    bool many = false;                                   // RecordFile::many()
    EncodedRecord record = {};                           // the first, without file and bytes
    size_t begin = 0, end = 0;                           // among the batch's records
    bool last = false;                                   // no more comes of the file
    bool damaged = false;                                // the failure is a DamagedLog
    std::optional<Failure> failure;
    std::vector<std::string> notes;  // for Note()
  };

  const std::vector<Part>& parts() const { return parts_; }
  // Whether its record stays only until the next one is read.
  bool borrowed() const { return borrowed_; }

  // Calls visit(const EncodedRecord&, const std::string& appended) with each record of the part;
  // `appended` is the date of that if it is kept and was asked for.
  template <typename Visit>
  void VisitRecords(const Part& part, const Visit& visit) const {
    static const std::string nothing;
    EncodedRecord record = part.record;
    record.file = &part.name;
    for (size_t i = part.begin; i < part.end; ++i, ++record.index) {
      const Item& item = items_[i];
      record.bytes = {item.held != nullptr ? item.held : copied_.data() + item.begin, item.size};
      visit(record, appended_.empty() ? nothing : appended_[i]);
    }
  }

 private:
  friend class RecordBatchReader;

  struct Item {
    const char* held;    // null: it is in copied_
    size_t begin, size;  // there
  };

  void Clear();
  bool Full() const;
  void Add(std::string_view bytes, const std::shared_ptr<char>* holder);
  void Borrow(std::string_view bytes);

  std::vector<Part> parts_;
  std::vector<Item> items_;
  std::vector<std::string> appended_;  // of each, if that is asked for
  std::string copied_;
  std::vector<std::shared_ptr<char>> blocks_;  // that are held
  size_t bytes_ = 0;                           // of all records
  bool borrowed_ = false, closed_ = false;
};

// Reads files one after the other.
class RecordBatchReader {
 public:
  // `opened` is called with each file ahead of its records; a Failure that it throws is the file's.
  using Opened = std::function<void(const RecordFile& file)>;
  RecordBatchReader(std::vector<std::string> paths, InputFlags flags, Opened opened = nullptr)
      : paths_(std::move(paths)), flags_(std::move(flags)), opened_(std::move(opened)) {}

  // Replaces the batch by what comes next, and says whether there may be more. To be called by one
  // thread at a time. What is wrong with a file is in its part; only what `opened` throws, and is
  // no Failure, is thrown.
  bool Fill(RecordBatch* batch);

  // From the next file that is opened, the one that `opened` is called with included: says when
  // records were appended.
  void TellTimes() { tell_times_ = true; }
  // No more is read of the file, if it is not read already. May be called by any thread.
  void Abandon(size_t file) { abandoned_ = file + 1; }

 private:
  void AddPart(RecordBatch* batch);
  void Open();
  bool AddRecords(RecordBatch* batch, RecordBatch::Part* part);

  const std::vector<std::string> paths_;
  const InputFlags flags_;
  const Opened opened_;
  size_t next_ = 0;  // file, or the one that is open
  std::unique_ptr<RecordFile> file_;
  std::optional<LogTimes> times_;  // of the file, if they are told
  bool tell_times_ = false;
  EncodedRecord encoded_ = {};
  bool pending_ = false;  // it was read and is in no batch yet
  std::vector<std::string> notes_;
  std::atomic<size_t> abandoned_{0};  // the files below
};

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_BATCH_H_
