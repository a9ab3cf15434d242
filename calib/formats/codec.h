// One record between bytes and message, in any of the three formats; each has a codec of its own
// (binary_codec.h, text_codec.h, json_codec.h), to which all of this applies.
//
// Decoding throws Failure with `name` (the file, as messages call it), the place and what is wrong
// there; a record whose required fields are missing is decoded all the same. Encoding throws
// Failure where the format cannot hold what the record does.
#ifndef CALIB_FORMATS_CODEC_H_
#define CALIB_FORMATS_CODEC_H_

#include <google/protobuf/message.h>

#include <memory>
#include <string>
#include <string_view>

#include "calib/console/sink.h"
#include "calib/formats/names.h"

namespace calib {

std::unique_ptr<google::protobuf::Message> Decode(Format format,
                                                  const google::protobuf::Descriptor* type,
                                                  const std::string& name, std::string_view bytes);

// The same into a record of that type, which keeps its memory.
void DecodeInto(Format format, const std::string& name, std::string_view bytes,
                google::protobuf::Message* record);

// The same as Decode(), but null if the bytes are no such record; does not find out where and why.
std::unique_ptr<google::protobuf::Message> DecodeIfFits(Format format,
                                                        const google::protobuf::Descriptor* type,
                                                        std::string_view bytes);

// Hands the bytes to the sink in pieces, of which text and JSON need not hold all at a time.
// Nothing is handed out if the format cannot hold the record.
void Encode(Format format, const google::protobuf::Message& record, const Sink& sink);
// The bytes as a whole.
std::string Encode(Format format, const google::protobuf::Message& record);
// The record as it stands in a file of the format: in a log behind its length, or as a line.
void EncodeForFile(FileFormat format, const google::protobuf::Message& record, const Sink& sink);

}  // namespace calib

#endif  // CALIB_FORMATS_CODEC_H_
