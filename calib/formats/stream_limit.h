// Lets a stream read records of any size. Run-times of the 3.0 series stop after 64 MiB unless told
// otherwise, and want to be told from where on to warn as well; later ones read 2 GiB as they are.
#ifndef CALIB_FORMATS_STREAM_LIMIT_H_
#define CALIB_FORMATS_STREAM_LIMIT_H_

#include <google/protobuf/message.h>

#include <climits>
#include <string>

namespace calib {

template <typename Stream>
auto LiftTotalLimit(Stream* stream) -> decltype(stream->SetTotalBytesLimit(INT_MAX, -1)) {
  stream->SetTotalBytesLimit(INT_MAX, -1);
}

template <typename Stream>
auto LiftTotalLimit(Stream* stream) -> decltype(stream->SetTotalBytesLimit(INT_MAX)) {
  stream->SetTotalBytesLimit(INT_MAX);
}

// Reads a whole record. Later run-times read arrays of any size, and in these, unlike in streams,
// accept tags that are written longer than need be.
template <typename Stream>
auto ReadWhole(Stream* stream, const std::string&, google::protobuf::Message* record)
    -> decltype(stream->SetTotalBytesLimit(INT_MAX, -1), bool()) {
  LiftTotalLimit(stream);
  return record->MergePartialFromCodedStream(stream) && stream->ConsumedEntireMessage();
}

template <typename Stream>
auto ReadWhole(Stream* stream, const std::string& bytes, google::protobuf::Message* record)
    -> decltype(stream->SetTotalBytesLimit(INT_MAX), bool()) {
  return record->ParsePartialFromString(bytes);
}

}  // namespace calib

#endif  // CALIB_FORMATS_STREAM_LIMIT_H_
