// The text format, by the run-time's parser and printer, but for long texts, which the printer
// would hold as a whole with all that is escaped. It cannot hold unknown fields.
#ifndef CALIB_FORMATS_TEXT_CODEC_H_
#define CALIB_FORMATS_TEXT_CODEC_H_

#include <google/protobuf/message.h>

#include <string>
#include <string_view>

#include "calib/console/sink.h"

namespace calib {

void DecodeText(const std::string& name, std::string_view bytes, google::protobuf::Message* record);
// Whether there is a comment in text that has been decoded.
bool HasComments(std::string_view bytes);
void EncodeText(const google::protobuf::Message& record, const Sink& sink);

}  // namespace calib

#endif  // CALIB_FORMATS_TEXT_CODEC_H_
