// One record between bytes and message, in each of the three formats. Decoding throws Failure with
// `name` (the file, as messages call it), the place and what is wrong there; a record whose
// required fields are missing is decoded all the same. Encoding throws Failure where the format
// cannot hold what the record does.
#ifndef CALIB_FORMATS_CODEC_H_
#define CALIB_FORMATS_CODEC_H_

#include <google/protobuf/message.h>

#include <memory>
#include <string>

#include "calib/formats/names.h"

namespace calib {

std::unique_ptr<google::protobuf::Message> Decode(Format format,
                                                  const google::protobuf::Descriptor* type,
                                                  const std::string& name,
                                                  const std::string& bytes);

std::string Encode(Format format, const google::protobuf::Message& record);

// One pair for each format; Decode and Encode above choose.
void DecodeBinary(const std::string& name, const std::string& bytes,
                  google::protobuf::Message* record);
void DecodeText(const std::string& name, const std::string& bytes,
                google::protobuf::Message* record);
void DecodeJson(const std::string& name, const std::string& bytes,
                google::protobuf::Message* record);
std::string EncodeBinary(const google::protobuf::Message& record);
std::string EncodeText(const google::protobuf::Message& record);
std::string EncodeJson(const google::protobuf::Message& record);

}  // namespace calib

#endif  // CALIB_FORMATS_CODEC_H_
