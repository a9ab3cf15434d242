// The JSON format. It is read by the run-time's converter, but a key that is there twice is
// refused, and written by json_writer.cc, which takes no memory for it. It cannot hold unknown
// fields, nor text that is not UTF-8.
#ifndef CALIB_FORMATS_JSON_CODEC_H_
#define CALIB_FORMATS_JSON_CODEC_H_

#include <google/protobuf/message.h>

#include <string>
#include <string_view>

#include "calib/console/sink.h"

namespace calib {

void DecodeJson(const std::string& name, std::string_view bytes, google::protobuf::Message* record);
// Reads the bytes if they are such a record; does not find out where and why they are not.
bool FitsJson(std::string_view bytes, google::protobuf::Message* record);
// One line, without blanks, or several, with one for each level.
enum class JsonLayout { kIndented, kOneLine };
void EncodeJson(const google::protobuf::Message& record, JsonLayout layout, const Sink& sink);

}  // namespace calib

#endif  // CALIB_FORMATS_JSON_CODEC_H_
