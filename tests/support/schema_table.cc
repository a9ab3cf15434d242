#include "tests/support/schema_table.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

constexpr Label kOptional = Label::kOptional;
constexpr Label kRequired = Label::kRequired;
constexpr Label kRepeated = Label::kRepeated;
constexpr Kind kDouble = Kind::kDouble;
constexpr Kind kFloat = Kind::kFloat;
constexpr Kind kInt32 = Kind::kInt32;
constexpr Kind kInt64 = Kind::kInt64;
constexpr Kind kBool = Kind::kBool;
constexpr Kind kString = Kind::kString;
constexpr Kind kBytes = Kind::kBytes;
constexpr Kind kMessage = Kind::kMessage;

template <size_t N>
constexpr int Length(const FieldRow (&)[N]) {
  return static_cast<int>(N);
}

// Name, number, label, kind, has-bit, message type, declared default.

constexpr FieldRow kMarkerPositionInfo[] = {
    {"x", 1, kOptional, kFloat, 0},
    {"y", 2, kOptional, kFloat, 1},
    {"z", 3, kOptional, kFloat, 2},
    {"marker_id", 4, kOptional, kInt32, 3},
};

constexpr FieldRow kMarkerPositionSet[] = {
    {"pos", 1, kRepeated, kMessage, 0, "MarkerPositionInfo"},
    {"head_center", 2, kRepeated, kDouble, 1},
    {"nav_center", 3, kRepeated, kDouble, 2},
};

constexpr FieldRow kCameraIntrinsicsSamplePoints[] = {
    {"img_x", 1, kOptional, kFloat, 0},
    {"img_y", 2, kOptional, kFloat, 1},
    {"tgt_x", 3, kOptional, kFloat, 2},
    {"tgt_y", 4, kOptional, kFloat, 3},
};

constexpr FieldRow kCameraIntrinsics[] = {
    {"fx", 1, kRequired, kDouble, 0},
    {"fy", 2, kRequired, kDouble, 1},
    {"skew", 3, kRequired, kDouble, 2},
    {"cx", 4, kRequired, kDouble, 3},
    {"cy", 5, kRequired, kDouble, 4},
    {"k", 6, kRepeated, kDouble, 5},
    {"p", 7, kRepeated, kDouble, 6},
    {"width", 8, kOptional, kInt32, 7},
    {"height", 9, kOptional, kInt32, 8},
    {"error_per_point", 10, kOptional, kDouble, 9},
    {"x_bin", 11, kOptional, kString, 10},
    {"offset_x", 12, kOptional, kFloat, 11},
    {"offset_y", 13, kOptional, kFloat, 12},
    {"bin_center", 14, kOptional, kFloat, 13},
    {"bin_size", 15, kOptional, kFloat, 14},
    {"sample_points", 16, kRepeated, kMessage, 15, "CameraIntrinsicsSamplePoints"},
    {"tgt_z", 17, kOptional, kFloat, 16},
    {"tgt_width", 18, kOptional, kInt32, 17},
    {"tgt_height", 19, kOptional, kInt32, 18},
};

constexpr FieldRow kCalibrationImage[] = {
    {"width", 1, kOptional, kInt32, 0},   {"height", 2, kOptional, kInt32, 1},
    {"stride", 3, kOptional, kInt32, 2},  {"format", 4, kOptional, kString, 3},
    {"imgdata", 5, kOptional, kBytes, 4},
};

constexpr FieldRow kFocusInfoItem[] = {
    {"target_id", 1, kOptional, kInt32, 0},
    {"target_code", 9, kOptional, kInt32, 1},
    {"cutoff_threshold", 2, kOptional, kFloat, 2},
    {"cutoff_cycles_per_pix", 3, kOptional, kFloat, 3},
    {"cutoff_cycles_per_mm", 4, kOptional, kFloat, 4},
    {"pix_per_mm", 5, kOptional, kFloat, 5},
    {"transfer_function", 6, kRepeated, kFloat, 6},
    {"valid_min", 7, kOptional, kInt32, 7},
    {"valid_max", 8, kOptional, kInt32, 8},
};

constexpr FieldRow kFocusInfo[] = {
    {"focus", 1, kRepeated, kMessage, 0, "FocusInfoItem"},
};

constexpr FieldRow kCameraExtrinsics[] = {
    {"a", 1, kRepeated, kDouble, 0},
};

constexpr FieldRow kCameraCalibration[] = {
    {"intrinsics", 1, kOptional, kMessage, 0, "CameraIntrinsics"},
    {"intrinsics_image", 2, kOptional, kMessage, 1, "CalibrationImage"},
    {"extrinsics", 3, kOptional, kMessage, 2, "CameraExtrinsics"},
    {"extrinsics_image", 4, kOptional, kMessage, 3, "CalibrationImage"},
    {"name", 5, kOptional, kString, 4},
    {"model", 6, kOptional, kString, 5},
    {"serial", 7, kOptional, kString, 6},
};

constexpr FieldRow kRobotCalibration[] = {
    {"camera", 1, kRepeated, kMessage, 0, "CameraCalibration"},
};

constexpr FieldRow kCalibrationMetadataProto[] = {
    {"time", 1, kOptional, kInt64, 0},
    {"base_serial", 2, kOptional, kString, 1},
    {"audio_serial", 3, kOptional, kString, 2},
    {"temperature", 4, kOptional, kFloat, 3},
};

constexpr FieldRow kGyroscopeCalibrationProto[] = {
    {"gyroscope_gain", 1, kOptional, kFloat, 0},
    {"metadata", 2, kOptional, kMessage, 1, "CalibrationMetadataProto"},
};

constexpr FieldRow kCameraCalibrationAdjustmentProto[] = {
    {"params", 1, kOptional, kMessage, 0, "CameraExtrinsics"},
    {"metadata", 2, kOptional, kMessage, 1, "CalibrationMetadataProto"},
};

constexpr FieldRow kBaseCalibrationProto[] = {
    {"wheel_base", 1, kOptional, kFloat, 0, nullptr, "0.4064", 0x3ED013A9},
    {"base_width", 2, kOptional, kFloat, 1, nullptr, "0.457", 0x3EE9FBE7},
    {"base_length", 5, kOptional, kFloat, 2, nullptr, "0.7", 0x3F333333},
    {"global_transform", 3, kOptional, kMessage, 3, "CameraCalibrationAdjustmentProto"},
    {"gyroscope_cal", 4, kOptional, kMessage, 4, "GyroscopeCalibrationProto"},
};

constexpr FieldRow kFocusCheckProto[] = {
    {"value_at_cutoff", 1, kOptional, kFloat, 0},
    {"cutoff", 2, kOptional, kFloat, 1},
    {"bins", 3, kRepeated, kFloat, 2},
    {"name", 4, kOptional, kString, 3},
    {"ok", 5, kOptional, kBool, 4},
};

constexpr FieldRow kFocusCheckSetProto[] = {
    {"spots", 1, kRepeated, kMessage, 0, "FocusCheckProto"},
};

constexpr FieldRow kPTZIntrinsicsItem[] = {
    {"zoom", 1, kOptional, kDouble, 0},
    {"fxy", 2, kOptional, kDouble, 1},
    {"cx", 3, kOptional, kDouble, 2},
    {"cy", 4, kOptional, kDouble, 3},
    {"k1", 5, kOptional, kDouble, 4},
    {"k4", 6, kOptional, kDouble, 5},
    {"p1", 7, kOptional, kDouble, 6},
    {"p2", 8, kOptional, kDouble, 7},
    {"error_per_point", 9, kOptional, kDouble, 8},
};

constexpr FieldRow kPTZIntrinsics[] = {
    {"zx", 1, kOptional, kDouble, 0},
    {"zy", 2, kOptional, kDouble, 1},
    {"width", 3, kOptional, kInt32, 2},
    {"height", 4, kOptional, kInt32, 3},
    {"samples", 5, kRepeated, kMessage, 4, "PTZIntrinsicsItem"},
    {"samples_zoom0", 6, kOptional, kInt32, 5},
    {"samples_zoom_step", 7, kOptional, kInt32, 6},
    {"zoom_min", 8, kOptional, kInt32, 7},
    {"zoom_max", 9, kOptional, kInt32, 8},
};

constexpr FieldRow kPanTiltSystemParameters[] = {
    {"pan_ext", 1, kOptional, kMessage, 0, "CameraExtrinsics"},
    {"tilt_ext", 2, kOptional, kMessage, 1, "CameraExtrinsics"},
    {"device_ext", 3, kOptional, kMessage, 2, "CameraExtrinsics"},
    {"rads_per_pan_unit", 4, kOptional, kFloat, 3},
    {"rads_per_tilt_unit", 5, kOptional, kFloat, 4},
    {"pan_offset", 6, kOptional, kFloat, 5},
    {"tilt_offset", 7, kOptional, kFloat, 6},
    {"pan_min", 8, kOptional, kInt32, 7},
    {"pan_max", 9, kOptional, kInt32, 8},
    {"tilt_min", 10, kOptional, kInt32, 9},
    {"tilt_max", 11, kOptional, kInt32, 10},
    {"max_pan_speed", 12, kOptional, kInt32, 11},
    {"max_tilt_speed", 13, kOptional, kInt32, 12},
    {"avg_model_error", 14, kOptional, kFloat, 13},
    {"max_model_error", 15, kOptional, kFloat, 14},
};

constexpr FieldRow kPTZCameraParameters[] = {
    {"intrinsics", 1, kOptional, kMessage, 0, "PTZIntrinsics"},
    {"pan_tilt", 2, kOptional, kMessage, 1, "PanTiltSystemParameters"},
};

constexpr FieldRow kPTZSystemCalibration[] = {
    {"ptz_camera", 1, kOptional, kMessage, 0, "PTZCameraParameters"},
    {"laser", 2, kOptional, kMessage, 1, "PanTiltSystemParameters"},
    {"other_cameras", 3, kOptional, kMessage, 2, "RobotCalibration"},
};

constexpr MessageRow kMessages[] = {
    {"MarkerPositionInfo", 0, kMarkerPositionInfo, Length(kMarkerPositionInfo)},
    {"MarkerPositionSet", 1, kMarkerPositionSet, Length(kMarkerPositionSet)},
    {"CameraIntrinsicsSamplePoints", 2, kCameraIntrinsicsSamplePoints,
     Length(kCameraIntrinsicsSamplePoints)},
    {"CameraIntrinsics", 3, kCameraIntrinsics, Length(kCameraIntrinsics)},
    {"CalibrationImage", 4, kCalibrationImage, Length(kCalibrationImage)},
    {"FocusInfoItem", 5, kFocusInfoItem, Length(kFocusInfoItem)},
    {"FocusInfo", 6, kFocusInfo, Length(kFocusInfo)},
    {"CameraExtrinsics", 7, kCameraExtrinsics, Length(kCameraExtrinsics)},
    {"CameraCalibration", 8, kCameraCalibration, Length(kCameraCalibration)},
    {"RobotCalibration", 9, kRobotCalibration, Length(kRobotCalibration)},
    {"CalibrationMetadataProto", 10, kCalibrationMetadataProto, Length(kCalibrationMetadataProto)},
    {"GyroscopeCalibrationProto", 11, kGyroscopeCalibrationProto,
     Length(kGyroscopeCalibrationProto)},
    {"CameraCalibrationAdjustmentProto", 12, kCameraCalibrationAdjustmentProto,
     Length(kCameraCalibrationAdjustmentProto)},
    {"BaseCalibrationProto", 13, kBaseCalibrationProto, Length(kBaseCalibrationProto)},
    {"FocusCheckProto", 14, kFocusCheckProto, Length(kFocusCheckProto)},
    {"FocusCheckSetProto", 15, kFocusCheckSetProto, Length(kFocusCheckSetProto)},
    {"PTZIntrinsicsItem", 16, kPTZIntrinsicsItem, Length(kPTZIntrinsicsItem)},
    {"PTZIntrinsics", 17, kPTZIntrinsics, Length(kPTZIntrinsics)},
    {"PanTiltSystemParameters", 18, kPanTiltSystemParameters, Length(kPanTiltSystemParameters)},
    {"PTZCameraParameters", 19, kPTZCameraParameters, Length(kPTZCameraParameters)},
    {"PTZSystemCalibration", 20, kPTZSystemCalibration, Length(kPTZSystemCalibration)},
};

constexpr int CountFields() {
  int count = 0;
  for (const MessageRow& message : kMessages) count += message.field_count;
  return count;
}

static_assert(sizeof(kMessages) / sizeof(kMessages[0]) == kMessageCount, "a message is missing");
static_assert(CountFields() == kFieldCount, "a field is missing");

// Labels and types by the numbers that descriptors are encoded with.
int NumberOf(Label label) {
  switch (label) {
    case Label::kOptional:
      return 1;
    case Label::kRequired:
      return 2;
    case Label::kRepeated:
      return 3;
  }
  return 0;
}

int NumberOf(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return 1;
    case Kind::kFloat:
      return 2;
    case Kind::kInt64:
      return 3;
    case Kind::kInt32:
      return 5;
    case Kind::kBool:
      return 8;
    case Kind::kString:
      return 9;
    case Kind::kMessage:
      return 11;
    case Kind::kBytes:
      return 12;
  }
  return 0;
}

}  // namespace

const std::vector<MessageRow>& Schema() {
  static const std::vector<MessageRow> schema(std::begin(kMessages), std::end(kMessages));
  return schema;
}

std::vector<const char*> MessageNames() {
  std::vector<const char*> names;
  for (const MessageRow& message : kMessages) names.push_back(message.name);
  return names;
}

const MessageRow& FindMessage(const std::string& name) {
  for (const MessageRow& message : kMessages) {
    if (name == message.name) return message;
  }
  std::cerr << "schema_table: no message named '" << name << "'\n";
  std::abort();
}

const FieldRow* FindField(const MessageRow& message, int number) {
  for (const FieldRow& field : message) {
    if (field.number == number) return &field;
  }
  return nullptr;
}

const FieldRow* FindField(const MessageRow& message, const std::string& name) {
  for (const FieldRow& field : message) {
    if (name == field.name) return &field;
  }
  return nullptr;
}

std::vector<const FieldRow*> WireOrder(const MessageRow& message) {
  std::vector<const FieldRow*> fields;
  for (const FieldRow& field : message) fields.push_back(&field);
  std::sort(fields.begin(), fields.end(),
            [](const FieldRow* a, const FieldRow* b) { return a->number < b->number; });
  return fields;
}

WireType WireTypeOf(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return WireType::kFixed64;
    case Kind::kFloat:
      return WireType::kFixed32;
    case Kind::kInt32:
    case Kind::kInt64:
    case Kind::kBool:
      return WireType::kVarint;
    case Kind::kString:
    case Kind::kBytes:
    case Kind::kMessage:
      return WireType::kLengthDelimited;
  }
  std::cerr << "schema_table: no wire type for the kind " << static_cast<int>(kind) << "\n";
  std::abort();
}

uint32_t TagOf(const FieldRow& field) {
  return static_cast<uint32_t>(field.number) << 3 | WireTypeOf(field.kind);
}

std::string FullName(const MessageRow& message) {
  return std::string(kPackage) + "." + message.name;
}

std::string EncodedSchema() {
  WireWriter file;
  file.Tag(1, kLengthDelimited).LengthDelimited(kSchemaFile);
  file.Tag(2, kLengthDelimited).LengthDelimited(kPackage);
  for (const MessageRow& message : Schema()) {
    WireWriter type;
    type.Tag(1, kLengthDelimited).LengthDelimited(message.name);
    for (const FieldRow& row : message) {
      WireWriter field;
      field.Tag(1, kLengthDelimited).LengthDelimited(row.name);
      field.Tag(3, kVarint).Varint(row.number);
      field.Tag(4, kVarint).Varint(NumberOf(row.label));
      field.Tag(5, kVarint).Varint(NumberOf(row.kind));
      if (row.message_type != nullptr) {
        field.Tag(6, kLengthDelimited)
            .LengthDelimited(std::string(".") + kPackage + "." + row.message_type);
      }
      if (row.default_text != nullptr) {
        field.Tag(7, kLengthDelimited).LengthDelimited(row.default_text);
      }
      type.Tag(2, kLengthDelimited).LengthDelimited(field.bytes());
    }
    file.Tag(4, kLengthDelimited).LengthDelimited(type.bytes());
  }
  return file.bytes();
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
