// The text format, by the run-time's parser and printer. It cannot hold unknown fields.
#ifndef CALIB_FORMATS_TEXT_CODEC_H_
#define CALIB_FORMATS_TEXT_CODEC_H_

#include <google/protobuf/message.h>

#include <string>

namespace calib {

void DecodeText(const std::string& name, const std::string& bytes,
                google::protobuf::Message* record);
// Whether there is a comment in text that has been decoded.
bool HasComments(const std::string& bytes);
std::string EncodeText(const google::protobuf::Message& record);

}  // namespace calib

#endif  // CALIB_FORMATS_TEXT_CODEC_H_
