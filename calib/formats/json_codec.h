// The JSON format, by the run-time's converter. It cannot hold unknown fields, nor text that is not
// UTF-8.
#ifndef CALIB_FORMATS_JSON_CODEC_H_
#define CALIB_FORMATS_JSON_CODEC_H_

#include <google/protobuf/message.h>

#include <string>

namespace calib {

void DecodeJson(const std::string& name, const std::string& bytes,
                google::protobuf::Message* record);
// Reads the bytes if they are such a record; does not find out where and why they are not.
bool FitsJson(const std::string& bytes, google::protobuf::Message* record);
std::string EncodeJson(const google::protobuf::Message& record);

}  // namespace calib

#endif  // CALIB_FORMATS_JSON_CODEC_H_
