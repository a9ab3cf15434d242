// Foxglove's messages that have to do with cameras, of which its viewers draw those that are of
// exactly these names: as descriptors that are made while the program runs.
#ifndef CALIB_TOOLS_FOXGLOVE_SCHEMA_H_
#define CALIB_TOOLS_FOXGLOVE_SCHEMA_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <memory>
#include <string>
#include <string_view>

namespace calib {

// An empty message of that name, such as "foxglove.RawImage"; nullptr if none is listed.
std::unique_ptr<google::protobuf::Message> NewFoxgloveMessage(const std::string& name);

// Reads a message, of up to 2 GiB; false if the bytes are none of its type.
bool ParseFoxgloveMessage(std::string_view bytes, google::protobuf::Message* message);

// The file of a message type and those that it imports, as a FileDescriptorSet in binary: what
// tells any reader of protobuf what the messages are.
std::string DescriptorSetOf(const google::protobuf::Descriptor* type);

}  // namespace calib

#endif  // CALIB_TOOLS_FOXGLOVE_SCHEMA_H_
