#include "calib/formats/log_recovery.h"

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <algorithm>
#include <climits>

#include "calib/fields/presence.h"
#include "calib/fields/unknown.h"
#include "calibration_common/record_log.h"

namespace calib {

using google::protobuf::MessageFactory;
using google::protobuf::io::ArrayInputStream;
using zarvo::calibration::RecordLogReader;

LogRecovery::LogRecovery(const google::protobuf::Descriptor* type, ByteView bytes)
    : bytes_(bytes), record_(MessageFactory::generated_factory()->GetPrototype(type)->New()) {}

bool LogRecovery::Frame(size_t at, ByteView* record, size_t* next) const {
  const int left = static_cast<int>(std::min<size_t>(bytes_.size - at, INT_MAX));
  ArrayInputStream stream(bytes_.data + at, left);
  RecordLogReader reader(&stream, left);  // which copies nothing of a record that is longer
  if (reader.Next() != RecordLogReader::Result::kRecord) return false;
  *record = {reader.data(), static_cast<size_t>(reader.size())};
  *next = at + static_cast<size_t>(reader.end());
  return true;
}

bool LogRecovery::Parses(ByteView record) {
  return record_->ParsePartialFromArray(record.data, static_cast<int>(record.size));
}

bool LogRecovery::IsStrict(ByteView record) {
  return record.size > 0 && Parses(record) && record_->IsInitialized() &&
         FindUnknownFields(*record_).empty();
}

LogStretch LogRecovery::FindChain(size_t begin, bool first) {
  LogStretch longest = {LogStretch::kGuessed, bytes_.size, bytes_.size, 0};
  // Where a record of a chain begins that was walked already, and where that chain ended.
  size_t known = 0, walked = 0;
  ByteView record;
  size_t next = 0;
  // No chain that begins later can be longer than what is left.
  for (size_t start = begin; bytes_.size - start > longest.end - longest.begin; ++start) {
    if (first && longest.records > 0 && start >= longest.end) break;
    if (start == known && start < walked) {
      known = Frame(start, &record, &next) ? next : 0;
      continue;
    }
    LogStretch chain = {LogStretch::kGuessed, start, start, 0};
    const bool follow = known <= start;
    while (chain.end < bytes_.size && Frame(chain.end, &record, &next) && IsStrict(record)) {
      if (chain.records++ == 0 && follow) known = next;
      chain.end = next;
    }
    if (follow) walked = chain.end;
    if (chain.end - chain.begin > longest.end - longest.begin) longest = chain;
  }
  return longest;
}

std::vector<LogStretch> LogRecovery::Stretches() {
  std::vector<LogStretch> stretches;
  LogStretch records = {LogStretch::kRecords, 0, 0, 0};
  LogStretch empty = {LogStretch::kEmptyAtEnd, 0, 0, 0};
  ByteView record;
  size_t next = 0;
  while (records.end < bytes_.size && Frame(records.end, &record, &next) && Parses(record)) {
    empty.records = record.size == 0 ? empty.records + 1 : 0;
    if (record.size > 0) empty.begin = next;
    records.end = next;
    ++records.records;
  }
  const size_t damage = records.end;
  if (damage == bytes_.size && empty.records > 0) {
    empty.end = records.end;
    records.end = empty.begin;
    records.records -= empty.records;
  }
  if (records.records > 0) stretches.push_back(records);
  if (damage == bytes_.size) {
    if (empty.records > 0) stretches.push_back(empty);
    return stretches;
  }
  for (size_t begin = damage; begin < bytes_.size;) {
    const LogStretch chain = FindChain(begin + 1, true);
    stretches.push_back({LogStretch::kDamaged, begin, chain.begin, 0});
    if (chain.records > 0) stretches.push_back(chain);
    begin = chain.end;
  }
  return stretches;
}

}  // namespace calib
