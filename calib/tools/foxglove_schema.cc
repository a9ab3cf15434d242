#include "calib/tools/foxglove_schema.h"

#include <google/protobuf/compiler/parser.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/timestamp.pb.h>

#include <limits>
#include <stdexcept>

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::DynamicMessageFactory;
using google::protobuf::FileDescriptor;
using google::protobuf::FileDescriptorProto;
using google::protobuf::FileDescriptorSet;
using google::protobuf::Message;

namespace {

constexpr char kSchema[] = R"(
syntax = "proto3";
import "google/protobuf/timestamp.proto";
package foxglove;

message Vector3 { double x = 1; double y = 2; double z = 3; }
message Quaternion { double x = 1; double y = 2; double z = 3; double w = 4; }

message CameraCalibration {
  google.protobuf.Timestamp timestamp = 1;
  string frame_id = 9;
  fixed32 width = 2;
  fixed32 height = 3;
  string distortion_model = 4;
  repeated double D = 5;
  repeated double K = 6;  // 3 x 3 by rows
  repeated double R = 7;  // 3 x 3
  repeated double P = 8;  // 3 x 4
}

// The pose of the child in the frame of the parent.
message FrameTransform {
  google.protobuf.Timestamp timestamp = 1;
  string parent_frame_id = 2;
  string child_frame_id = 3;
  Vector3 translation = 4;
  Quaternion rotation = 5;
}
message FrameTransforms { repeated FrameTransform transforms = 1; }

message RawImage {
  google.protobuf.Timestamp timestamp = 1;
  string frame_id = 7;
  fixed32 width = 2;
  fixed32 height = 3;
  string encoding = 4;
  fixed32 step = 5;
  bytes data = 6;
}
message CompressedImage {
  google.protobuf.Timestamp timestamp = 1;
  string frame_id = 4;
  bytes data = 2;
  string format = 3;
}
)";

class NoErrors : public google::protobuf::io::ErrorCollector {
 public:
  void AddError(int, int, const std::string&) override {}
};

struct Schema {
  DescriptorPool pool{DescriptorPool::generated_pool()};
  DynamicMessageFactory factory{&pool};

  Schema() {
    // So that the pool of what is compiled in has it.
    google::protobuf::Timestamp::descriptor();
    google::protobuf::io::ArrayInputStream text(kSchema, sizeof kSchema - 1);
    NoErrors errors;
    google::protobuf::io::Tokenizer words(&text, &errors);
    FileDescriptorProto file;
    file.set_name("foxglove.proto");
    google::protobuf::compiler::Parser parser;
    parser.RecordErrorsTo(&errors);
    if (!parser.Parse(&words, &file) || pool.BuildFile(file) == nullptr) {
      throw std::logic_error("the schema of Foxglove's messages is wrong");
    }
  }
};

void AddFile(const FileDescriptor* file, FileDescriptorSet* set) {
  for (const FileDescriptorProto& there : set->file()) {
    if (there.name() == file->name()) return;
  }
  for (int i = 0; i < file->dependency_count(); ++i) AddFile(file->dependency(i), set);
  FileDescriptorProto* const copy = set->add_file();
  file->CopyTo(copy);
  // Of the run-time's own file they are for code in other languages, and each release has its own.
  if (file->package() == "google.protobuf") copy->clear_options();
}

}  // namespace

std::unique_ptr<Message> NewFoxgloveMessage(const std::string& name) {
  static Schema schema;
  const Descriptor* type = schema.pool.FindMessageTypeByName(name);
  if (type == nullptr || type->file()->package() != "foxglove") return nullptr;
  return std::unique_ptr<Message>(schema.factory.GetPrototype(type)->New());
}

bool ParseFoxgloveMessage(std::string_view bytes, Message* message) {
  if (bytes.size() > size_t{std::numeric_limits<int>::max()}) return false;
  // The run-time would tell of text that is not UTF-8 by itself.
  const google::protobuf::LogSilencer silence;
  return message->ParseFromArray(bytes.data(), static_cast<int>(bytes.size()));
}

std::string DescriptorSetOf(const Descriptor* type) {
  FileDescriptorSet set;
  AddFile(type->file(), &set);
  return set.SerializeAsString();
}

}  // namespace calib
