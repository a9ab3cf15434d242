// Lets a stream read records of any size. Run-times before 3.2 stop after 64 MiB unless told
// otherwise, and until 3.5 want to be told from where on to warn as well; later ones read 2 GiB as
// they are.
#ifndef CALIB_FORMATS_STREAM_LIMIT_H_
#define CALIB_FORMATS_STREAM_LIMIT_H_

#include <google/protobuf/message.h>

#include <climits>
#include <string>

namespace calib {

// Where a run-time has both calls, int is preferred to long.
template <typename Stream>
auto LiftTotalLimit(Stream* stream, int) -> decltype(stream->SetTotalBytesLimit(INT_MAX)) {
  stream->SetTotalBytesLimit(INT_MAX);
}
template <typename Stream>
auto LiftTotalLimit(Stream* stream, long) -> decltype(stream->SetTotalBytesLimit(INT_MAX, -1)) {
  stream->SetTotalBytesLimit(INT_MAX, -1);
}

// Reads a whole record. Run-times that take one limit read arrays of any size, and in these, unlike
// in streams, accept tags that are written longer than need be.
template <typename Stream, typename Record>
auto ReadWhole(Stream* stream, const std::string& bytes, Record* record, int)
    -> decltype(stream->SetTotalBytesLimit(INT_MAX), bool()) {
  return record->ParsePartialFromString(bytes);
}
template <typename Stream, typename Record>
bool ReadWhole(Stream* stream, const std::string&, Record* record, long) {
  LiftTotalLimit(stream, 0);
  record->Clear();
  return record->MergePartialFromCodedStream(stream) && stream->ConsumedEntireMessage();
}

}  // namespace calib

#endif  // CALIB_FORMATS_STREAM_LIMIT_H_
