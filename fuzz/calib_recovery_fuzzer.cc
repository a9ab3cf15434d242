// Any bytes, recovered as a log: all of them are told to be records or damage, in order; a log that
// is whole is one stretch of records; and what is guessed is the first chain of records that are
// strictly read, or the longest that overlaps it, which the plain search below finds.
#include <google/protobuf/message.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "calib/fields/unknown.h"
#include "calib/formats/log_recovery.h"
#include "calib/formats/names.h"
#include "fuzz/fuzzer.h"

namespace calib {
namespace {

using google::protobuf::Message;
using zarvo::calibration::testing::RecordInput;
using zarvo::calibration::testing::Require;

constexpr size_t kMostForSearch = 2000;  // the plain search takes time that grows with the square

class Log {
 public:
  explicit Log(const RecordInput& input) : bytes_(input.bytes), record_(input.type.make()) {}

  size_t size() const { return bytes_.size(); }

  // Where the record that begins at `at` ends; 0 if there is none whose bytes are all there.
  size_t EndOf(size_t at, std::string* record) const {
    uint64_t length = 0;
    size_t next = at;
    for (int shift = 0;; shift += 7) {
      if (next == bytes_.size() || shift > 28) return 0;
      const uint64_t byte = static_cast<unsigned char>(bytes_[next++]);
      length |= (byte & 0x7f) << shift;
      if (byte < 0x80) break;
    }
    if (length > 0x7fffffff || length > bytes_.size() - next) return 0;
    *record = bytes_.substr(next, length);
    return next + length;
  }

  // Where the records that begin at `at` end, and how many they are; strictly read, or only parsed.
  size_t Walk(size_t at, size_t end, bool strict, int64_t* records) const {
    std::string record;
    *records = 0;
    while (at < end) {
      const size_t next = EndOf(at, &record);
      if (next == 0 || !record_->ParsePartialFromString(record)) break;
      if (strict &&
          (record.empty() || !record_->IsInitialized() || !FindUnknownFields(*record_).empty())) {
        break;
      }
      at = next;
      ++*records;
    }
    return at;
  }

 private:
  const std::string& bytes_;
  const std::unique_ptr<Message> record_;
};

void CheckStretch(const Log& log, const LogStretch& stretch) {
  Require(stretch.begin < stretch.end, "a stretch has bytes");
  if (stretch.kind == LogStretch::kDamaged) return;
  int64_t records = 0;
  const bool strict = stretch.kind == LogStretch::kGuessed;
  Require(log.Walk(stretch.begin, stretch.end, strict, &records) == stretch.end &&
              records == stretch.records,
          "a stretch of records is so many");
}

void CheckOrder(const Log& log, const std::vector<LogStretch>& stretches) {
  size_t end = 0;
  for (size_t i = 0; i < stretches.size(); ++i) {
    const LogStretch::Kind kind = stretches[i].kind;
    Require(stretches[i].begin == end, "stretches follow each other");
    Require(kind != LogStretch::kRecords || i == 0, "records that are no guess are the first");
    Require(kind != LogStretch::kEmptyAtEnd || i + 1 == stretches.size(), "zeros are the last");
    Require(
        kind != LogStretch::kGuessed || (i > 0 && stretches[i - 1].kind == LogStretch::kDamaged),
        "what is guessed is behind damage");
    end = stretches[i].end;
  }
  Require(end == log.size(), "all bytes are told");
}

// What lies behind damage: the first chain, or of those that overlap the longest; of several that
// are as long, the first.
void CheckGuess(const Log& log, const LogStretch& damage, size_t guess_end) {
  size_t longest = 0, begin = log.size();
  for (size_t start = damage.begin + 1; start < log.size(); ++start) {
    if (longest > 0 && start >= begin + longest) break;
    int64_t records = 0;
    const size_t end = log.Walk(start, log.size(), true, &records);
    if (end - start <= longest) continue;
    longest = end - start;
    begin = start;
  }
  Require(damage.end == begin && guess_end == begin + longest, "the first chain is guessed");
}

void Check(const RecordInput& input) {
  const Log log(input);
  LogRecovery recovery(RecordType(input.type.name), {input.bytes.data(), input.bytes.size()});
  const std::vector<LogStretch> stretches = recovery.Stretches();
  for (const LogStretch& stretch : stretches) CheckStretch(log, stretch);
  CheckOrder(log, stretches);
  int64_t records = 0;
  const bool whole = log.Walk(0, log.size(), false, &records) == log.size();
  const bool damaged = std::any_of(stretches.begin(), stretches.end(), [](const auto& stretch) {
    return stretch.kind == LogStretch::kDamaged;
  });
  Require(whole != damaged, "a log is whole or damaged");
  if (log.size() > kMostForSearch) return;
  for (size_t i = 0; i < stretches.size(); ++i) {
    if (stretches[i].kind != LogStretch::kDamaged) continue;
    CheckGuess(log, stretches[i],
               i + 1 < stretches.size() ? stretches[i + 1].end : stretches[i].end);
  }
}

}  // namespace
}  // namespace calib

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  zarvo::calibration::testing::SilenceTheRunTime();
  if (size == 0) return 0;
  calib::Check(zarvo::calibration::testing::TakeRecordInput(data, size));
  return 0;
}
