// The payloads that exist as bytes only, most of them for want of a class that would write them.
#include "benchmarks/payloads.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>

#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

using ::google::protobuf::Descriptor;
using ::google::protobuf::io::CodedInputStream;
using testing::kFixed32;
using testing::kFixed64;
using testing::kLengthDelimited;
using testing::kVarint;
using testing::WireWriter;

// The fields of an encoded message in the opposite order, and so on in its sub-messages. Knows the
// wire types that the schema has: all but varints are 4 bytes, 8 bytes or length-delimited.
std::string Reordered(const std::string& encoded, const Descriptor& type) {
  CodedInputStream input(reinterpret_cast<const uint8_t*>(encoded.data()),
                         static_cast<int>(encoded.size()));
  std::vector<std::string> fields;
  while (const uint32_t tag = input.ReadTag()) {
    const int number = static_cast<int>(tag >> 3);
    WireWriter field;
    switch (tag & 7) {
      case kVarint: {
        ::google::protobuf::uint64 value;
        input.ReadVarint64(&value);
        field.Tag(number, kVarint).Varint(value);
        break;
      }
      case kFixed32: {
        ::google::protobuf::uint32 value;
        input.ReadLittleEndian32(&value);
        field.Tag(number, kFixed32).Fixed32(value);
        break;
      }
      case kFixed64: {
        ::google::protobuf::uint64 value;
        input.ReadLittleEndian64(&value);
        field.Tag(number, kFixed64).Fixed64(value);
        break;
      }
      default: {
        ::google::protobuf::uint32 length;
        std::string contents;
        input.ReadVarint32(&length);
        input.ReadString(&contents, static_cast<int>(length));
        const Descriptor* message = type.FindFieldByNumber(number)->message_type();
        if (message != nullptr) contents = Reordered(contents, *message);
        field.Tag(number, kLengthDelimited).LengthDelimited(contents);
      }
    }
    fields.push_back(field.bytes());
  }
  std::string result;
  for (size_t i = fields.size(); i > 0; --i) result += fields[i - 1];
  return result;
}

// Twelve unknown fields of every wire type, groups among them.
std::string UnknownFields(int seed) {
  WireWriter fields;
  for (int i = 0; i < 2; ++i) {
    const int number = 100 + 10 * i;
    fields.Tag(number, kVarint).Int(seed + i);
    fields.Tag(number + 1, kVarint).Int(-1 - i);
    fields.Tag(number + 2, kFixed32).Float(0.5f * static_cast<float>(seed));
    fields.Tag(number + 3, kFixed64).Double(0.25 * seed);
    fields.Tag(number + 4, kLengthDelimited).LengthDelimited("a field of a later schema");
    fields.Group(number + 5, WireWriter()
                                 .Tag(1, kVarint)
                                 .Varint(static_cast<uint64_t>(seed))
                                 .Tag(2, kLengthDelimited)
                                 .LengthDelimited("in a group")
                                 .bytes());
  }
  return fields.bytes();
}

}  // namespace

const std::string& ImageOctets() {
  static const std::string octets = [] {
    std::string image(static_cast<size_t>(kImageWidth * kImageHeight), '\0');
    for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<char>(i * 7 + i / 640);
    return image;
  }();
  return octets;
}

std::string PackedFocusSet() {
  FocusInfo set;
  FillFocusSet(&set);
  WireWriter writer;
  for (const FocusInfoItem& item : set.focus()) {
    WireWriter values;
    for (const float value : item.transfer_function()) values.Float(value);
    FocusInfoItem rest(item);
    rest.clear_transfer_function();
    writer.Tag(FocusInfo::kFocusFieldNumber, kLengthDelimited)
        .LengthDelimited(WireWriter()
                             .Raw(rest.SerializeAsString())
                             .Tag(FocusInfoItem::kTransferFunctionFieldNumber, kLengthDelimited)
                             .LengthDelimited(values.bytes())
                             .bytes());
  }
  return writer.bytes();
}

std::string ReorderedRobot() {
  RobotCalibration robot;
  FillRobot(false, &robot);
  return Reordered(robot.SerializeAsString(), *RobotCalibration::descriptor());
}

std::string RobotRichInUnknownFields() {
  WireWriter robot;
  for (int i = 0; i < 6; ++i) {
    CameraCalibration camera;
    camera.set_name("camera of a later schema");
    CameraIntrinsics intrinsics;
    FillIntrinsics(0, &intrinsics);
    WireWriter with_points;
    with_points.Raw(intrinsics.SerializeAsString());
    for (int j = 0; j < 8; ++j) {
      CameraIntrinsicsSamplePoints point;
      point.set_img_x(static_cast<float>(j));
      with_points.Tag(CameraIntrinsics::kSamplePointsFieldNumber, kLengthDelimited)
          .LengthDelimited(point.SerializeAsString() + UnknownFields(j));
    }
    robot.Tag(RobotCalibration::kCameraFieldNumber, kLengthDelimited)
        .LengthDelimited(WireWriter()
                             .Raw(camera.SerializeAsString())
                             .Tag(CameraCalibration::kIntrinsicsFieldNumber, kLengthDelimited)
                             .LengthDelimited(with_points.bytes() + UnknownFields(i))
                             .Raw(UnknownFields(100 + i))
                             .bytes());
  }
  return robot.Raw(UnknownFields(200)).bytes();
}

std::string ImageRecord() {
  CalibrationImage image;
  FillImage(&image);
  return image.SerializeAsString();
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
