// Finds the records of a log that is cut off or damaged.
//
// Ahead of the damage they stand one behind the other. Behind it nobody knows where the next one
// begins, so each byte is tried: a chain is records that follow each other and are strictly read,
// which means parsed, with all required fields, something set, and nothing unknown. The guess is
// the first one, up to the end or the next damage; of chains that overlap, the longest, in bytes.
#ifndef CALIB_FORMATS_LOG_RECOVERY_H_
#define CALIB_FORMATS_LOG_RECOVERY_H_

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "calib/console/mapped_file.h"

namespace calib {

// Bytes of a log: records one behind the other, or none.
struct LogStretch {
  enum Kind { kRecords, kGuessed, kDamaged, kEmptyAtEnd };
  Kind kind;
  size_t begin, end;
  int64_t records;
};

class LogRecovery {
 public:
  // `bytes` must outlive it.
  LogRecovery(const google::protobuf::Descriptor* type, ByteView bytes);

  // What the log is made of, in order; of several kinds, or all kRecords if it is whole.
  std::vector<LogStretch> Stretches();

  // The longest chain behind `begin`; its `records` are 0 if there is none.
  LogStretch LongestChain(size_t begin) { return FindChain(begin, false); }

  // Goes from record to record: the bytes of that at `at`, without its length, and where the next
  // one begins. False if no length stands there, or more is announced than there is.
  bool Frame(size_t at, ByteView* record, size_t* next) const;

 private:
  // The longest one, or of those that overlap the first.
  LogStretch FindChain(size_t begin, bool first);
  bool Parses(ByteView record);
  bool IsStrict(ByteView record);

  const ByteView bytes_;
  std::unique_ptr<google::protobuf::Message> record_;
};

}  // namespace calib

#endif  // CALIB_FORMATS_LOG_RECOVERY_H_
