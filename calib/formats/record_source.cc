#include "calib/formats/record_source.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "calib/console/file.h"
#include "calib/formats/input_stream.h"
#include "calibration_common/record_log.h"

namespace calib {
namespace {

using zarvo::calibration::RecordLogReader;

class WholeFile : public RecordSource {
 public:
  explicit WholeFile(InputFile* file) : file_(file) {}

  bool Next(std::string_view* bytes) override {
    if (read_) return false;
    read_ = true;
    bytes_ = ReadAll(file_);
    *bytes = bytes_;
    return true;
  }
  bool Skip() override {
    std::string_view ignored;
    return Next(&ignored);
  }

 private:
  InputFile* const file_;
  std::string bytes_;
  bool read_ = false;
};

class Log : public RecordSource {
 public:
  explicit Log(InputFile* file) : name_(file->name()), stream_(file), reader_(&stream_) {}

  bool Next(std::string_view* bytes) override {
    if (!Skip()) return false;
    *bytes = {reader_.data(), static_cast<size_t>(reader_.size())};
    return true;
  }
  const std::shared_ptr<char>* Holder(std::string_view bytes) const override {
    return stream_.BlockOf(bytes);
  }
  bool Skip() override {
    switch (reader_.Next()) {
      case RecordLogReader::Result::kRecord:
        ++records_;
        return true;
      case RecordLogReader::Result::kEnd:
        return false;
      case RecordLogReader::Result::kTorn:
        Fail("ends within record ");
      default:
        Fail("has no length of a record where there should be that of record ");
    }
  }

 private:
  [[noreturn]] void Fail(const std::string& what) const {
    throw DamagedLog(
        name_ + ": byte " + std::to_string(reader_.begin()) + ": " + what +
            std::to_string(records_),
        "The log is cut off or damaged there, or no log; 'calib log recover' saves what is whole.");
  }

  const std::string name_;
  InputStream stream_;
  RecordLogReader reader_;
  int64_t records_ = 0;
};

// JSON lines. Empty lines are no records.
class Lines : public RecordSource {
 public:
  explicit Lines(InputFile* file) : file_(file), block_(size_t{1} << 18) {}

  bool Next(std::string_view* bytes) override {
    if (!Skip()) return false;
    *bytes = line_;
    return true;
  }
  bool Skip() override {
    do {
      line_.clear();
      if (!AppendLine()) return false;
    } while (line_.find_first_not_of(" \t\r") == std::string::npos);
    return true;
  }

 private:
  // False if there is none. The last line may lack its end.
  bool AppendLine() {
    for (bool some = false;; some = true) {
      if (next_ == end_) {
        next_ = 0;
        end_ = file_->Read(block_.data(), block_.size());
        if (end_ == 0) return some;
      }
      const char* const from = &block_[next_];
      const void* const found = std::memchr(from, '\n', end_ - next_);
      const size_t size = found == nullptr
                              ? end_ - next_
                              : static_cast<size_t>(static_cast<const char*>(found) - from);
      line_.append(from, size);
      if (line_.size() > INT_MAX) {
        throw DamagedLog(file_->name() + ": has a line of more than 2 GiB",
                         "Check that it is the file you meant.");
      }
      next_ += size + (found == nullptr ? 0 : 1);
      if (found != nullptr) return true;
    }
  }

  InputFile* const file_;
  std::vector<char> block_;
  size_t next_ = 0, end_ = 0;
  std::string line_;
};

}  // namespace

std::unique_ptr<RecordSource> NewRecordSource(InputFile* file, FileFormat format) {
  if (!format.many) return std::make_unique<WholeFile>(file);
  if (format.format == Format::kBinary) return std::make_unique<Log>(file);
  return std::make_unique<Lines>(file);
}

}  // namespace calib
