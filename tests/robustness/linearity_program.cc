// Parses inputs of one, four and sixteen times a size, of shapes that could make a parser slow; and
// copies, writes and clears what it got. linearity_test.sh runs it under callgrind, which counts
// the instructions of each run and dumps them under the label "SHAPE/CALL/TIMES".
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <valgrind/callgrind.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/class_calls.h"
#include "tests/support/entrances.h"
#include "tests/support/records.h"
#include "tests/support/schema_table.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;

constexpr int kPieces = 513;  // one more than a power of two: what doubles has just done so

struct Shape {
  const char* name;
  const char* message;
  std::string front, piece, back;  // the input is front, piece again and again, back
};

std::string Nested(int number, const std::string& contents) {
  return WireWriter().Tag(number, kLengthDelimited).LengthDelimited(contents).bytes();
}

std::vector<Shape> Shapes() {
  std::string nest;
  for (int i = 0; i < 5; ++i) nest = WireWriter().Group(100, nest).bytes();
  const std::string value(8, '\x3F');
  const std::string start = WireWriter().Tag(100, kStartGroup).bytes();
  return {
      {"unknown numbers", "FocusInfo", "", WireWriter().Tag(100, kVarint).Varint(1).bytes(), ""},
      {"unknown texts", "FocusInfo", "", Nested(100, "x"), ""},
      {"unknown groups", "FocusInfo", "", WireWriter().Group(100, "").bytes(), ""},
      {"nested groups", "FocusInfo", "", nest, ""},
      {"an open group", "FocusInfo", start, WireWriter().Tag(100, kVarint).Varint(1).bytes(), ""},
      {"elements", "RobotCalibration", "", Nested(1, Nested(5, "name")), ""},
      {"elements in elements", "RobotCalibration", "", Nested(1, Nested(1, Nested(16, ""))), ""},
      {"one sub-message", "CameraCalibration", "", Nested(3, Nested(1, value)), ""},
      {"one text", "CameraCalibration", "", Nested(5, "name"), ""},
      {"numbers", "CameraExtrinsics", "", WireWriter().Tag(1, kFixed64).Raw(value).bytes(), ""},
      {"short packed runs", "CameraExtrinsics", "", Nested(1, value), ""},
      {"numbers of two fields", "MarkerPositionSet", "",
       WireWriter().Tag(3, kFixed64).Raw(value).Tag(2, kFixed64).Raw(value).bytes(), ""},
      {"a broken end", "CameraExtrinsics", "", Nested(1, value), "\x0A"},
  };
}

const Entrance& Find(const std::vector<Entrance>& table, const std::string& name) {
  for (const Entrance& entrance : table) {
    if (entrance.name == name) return entrance;
  }
  std::cerr << "linearity_program: no call named " << name << "\n";
  std::exit(1);
}

void Measure(const std::string& label, const Message& prototype, const Entrance& entrance,
             const std::string& bytes) {
  const std::unique_ptr<Message> record(prototype.New()), copy(prototype.New());
  std::string written;
  CALLGRIND_ZERO_STATS;
  entrance.parse(record.get(), bytes);
  copy->MergeFrom(*record);
  copy->SerializePartialToString(&written);
  copy->Clear();
  CALLGRIND_DUMP_STATS_AT(label.c_str());
  std::cout << label << "\n";
}

void MeasureAll() {
  for (const Shape& shape : Shapes()) {
    const std::unique_ptr<Message> prototype = NewRecord(shape.message);
    const std::vector<Entrance> on_class = ConcreteEntrances(std::string(shape.message));
    const std::vector<Entrance> on_message = GenericEntrances();
    for (const char* name :
         {"ParsePartialFromArray", "ParsePartialFromZeroCopyStream, blocks of 1"}) {
      for (const int times : {1, 4, 16}) {
        std::string bytes = shape.front;
        for (int i = 0; i < times * kPieces; ++i) bytes += shape.piece;
        bytes += shape.back;
        const auto label = [&](const char* object) {
          return std::string(shape.name) + "/" + name + object + "/" + std::to_string(times);
        };
        Measure(label(" on the class"), *prototype, Find(on_class, name), bytes);
        Measure(label(" on Message&"), *prototype, Find(on_message, name), bytes);
      }
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

int main() {
  {
    ::google::protobuf::LogSilencer silencer;
    ::zarvo::calibration::testing::MeasureAll();
  }
  ::google::protobuf::ShutdownProtobufLibrary();
}
