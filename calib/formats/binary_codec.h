// The binary format: the wire format as the record classes read and write it, with unknown fields.
// What they refuse is looked at again for the place (wire_defect.h).
#ifndef CALIB_FORMATS_BINARY_CODEC_H_
#define CALIB_FORMATS_BINARY_CODEC_H_

#include <google/protobuf/message.h>

#include <string>
#include <string_view>

namespace calib {

void DecodeBinary(const std::string& name, std::string_view bytes,
                  google::protobuf::Message* record);
std::string EncodeBinary(const google::protobuf::Message& record);
// An encoded record as it stands in a log: behind its length.
std::string FrameRecord(const std::string& bytes);

}  // namespace calib

#endif  // CALIB_FORMATS_BINARY_CODEC_H_
