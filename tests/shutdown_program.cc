// Uses the library to some extent and shuts the run-time down; shutdown_test.sh runs it under
// valgrind and looks at what is left.
//
//   shutdown_program load|records|reflection
//
// load: nothing but loading the library. records: makes, fills, reads and writes records without
// touching reflection. reflection: prints and reads the text format of every record.
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/text_format.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "calibration_common/calibration.pb.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/runtime_calls.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using ::google::protobuf::TextFormat;

void Check(bool holds, const char* what) {
  if (holds) return;
  std::cerr << "shutdown_program: " << what << "\n";
  std::exit(1);
}

void UseRecords() {
  ForEachRecord([](auto record) {
    using T = typename decltype(record)::Type;
    T object;
    // Field 1000, a varint: unknown to every record.
    Check(object.ParsePartialFromString("\xC0\x3E\x01"), "an unknown field was refused");
    T copy(object);
    copy.MergeFrom(object);
    object.Swap(&copy);
    Check(object.SerializePartialAsString() == "\xC0\x3E\x01\xC0\x3E\x01",
          "an unknown field was not written back");
    const std::unique_ptr<T> made(T::default_instance().New());
    Check(made->ByteSize() == 0, "a new record is not empty");
  });

  PTZSystemCalibration system;
  CameraCalibration* camera = system.mutable_other_cameras()->add_camera();
  camera->set_name("left");
  camera->mutable_intrinsics_image()->set_imgdata("pixels");
  for (const double value : {1.0, 2.0}) camera->mutable_extrinsics()->add_a(value);
  system.mutable_ptz_camera()->mutable_intrinsics()->add_samples();
  system.mutable_laser()->mutable_pan_ext()->add_a(1);
  PTZSystemCalibration read;
  Check(read.ParseFromString(system.SerializeAsString()), "what was written was refused");
  read.MergeFrom(system);
  Check(read.other_cameras().camera_size() == 2, "merging did not append");
  read.Clear();
  delete system.release_laser();
  Check(runtime_calls.find_file == 0, "records built reflection");
}

void UseReflection() {
  for (const RecordType& type : RecordTypes()) {
    const std::unique_ptr<Message> record = FullRecord(type.name);
    std::string text;
    Check(TextFormat::PrintToString(*record, &text), "text was not printed");
    const std::unique_ptr<Message> read = type.make();
    Check(TextFormat::ParseFromString(text, read.get()), "text was refused");
  }
  Check(runtime_calls.find_file == 1, "reflection was not built once");
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

int main(int argc, char** argv) {
  const std::string use = argc == 2 ? argv[1] : "";
  if (use == "records") {
    ::zarvo::calibration::testing::UseRecords();
  } else if (use == "reflection") {
    ::zarvo::calibration::testing::UseReflection();
  } else if (use != "load") {
    std::cerr << "usage: shutdown_program load|records|reflection\n";
    return 2;
  }
  ::google::protobuf::ShutdownProtobufLibrary();
}
