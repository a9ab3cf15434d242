// A file of many records of one type: each is written behind its length, as a varint. That is the
// customary way; other languages' run-times read and write it.
#ifndef CALIBRATION_EXAMPLES_RECORD_LOG_H_
#define CALIBRATION_EXAMPLES_RECORD_LOG_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>

namespace record_log {

// Appends a record of one of the calibration classes. False if it lacks a required field, is of 2
// GiB or more, or the stream fails.
template <class Record>
bool Append(const Record& record, google::protobuf::io::ZeroCopyOutputStream* stream) {
  if (!record.IsInitialized()) return false;
  const int size = record.ByteSize();
  if (size < 0) return false;
  google::protobuf::io::CodedOutputStream output(stream);
  output.WriteVarint32(static_cast<google::protobuf::uint32>(size));
  record.SerializeWithCachedSizes(&output);
  return !output.HadError();
}

enum class Result { kRecord, kEnd, kDamaged };

// Reads the next record. kEnd: the stream ended where a record would begin. kDamaged: it ended
// within one, or what is there is no record.
template <class Record>
Result ReadNext(google::protobuf::io::ZeroCopyInputStream* stream, Record* record) {
  // A new coded stream for each record, since its limit on bytes counts from where it began.
  google::protobuf::io::CodedInputStream input(stream);
  const void* unused;
  int available;
  if (!input.GetDirectBufferPointer(&unused, &available)) return Result::kEnd;
  google::protobuf::uint32 length;
  if (!input.ReadVarint32(&length) || length > 0x7fffffff) return Result::kDamaged;
  const auto limit = input.PushLimit(static_cast<int>(length));
  const bool parsed = record->ParseFromCodedStream(&input);
  // A stream that ends too early ends ahead of the limit.
  if (!parsed || input.BytesUntilLimit() != 0) return Result::kDamaged;
  input.PopLimit(limit);
  return Result::kRecord;
}

}  // namespace record_log

#endif  // CALIBRATION_EXAMPLES_RECORD_LOG_H_
