// Lets a stream read records of any size. Run-times before 3.2 stop after 64 MiB unless told
// otherwise, and until 3.5 want to be told from where on to warn as well; later ones read 2 GiB as
// they are.
#ifndef CALIB_FORMATS_STREAM_LIMIT_H_
#define CALIB_FORMATS_STREAM_LIMIT_H_

#include <google/protobuf/message.h>

#include <climits>
#include <cstdint>
#include <string_view>
#include <utility>

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
auto ReadWhole(std::string_view bytes, Record* record, int)
    -> decltype(std::declval<Stream>().SetTotalBytesLimit(INT_MAX), bool()) {
  return record->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
}
template <typename Stream, typename Record>
bool ReadWhole(std::string_view bytes, Record* record, long) {
  Stream stream(reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<int>(bytes.size()));
  LiftTotalLimit(&stream, 0);
  record->Clear();
  return record->MergePartialFromCodedStream(&stream) && stream.ConsumedEntireMessage();
}

}  // namespace calib

#endif  // CALIB_FORMATS_STREAM_LIMIT_H_
