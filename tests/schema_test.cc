// The registered schema and the field-number constants, held against the hand-written table.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/records.h"
#include "tests/support/schema_table.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Descriptor;
using ::google::protobuf::DescriptorPool;
using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::FileDescriptor;
using ::google::protobuf::FileDescriptorProto;
using ::google::protobuf::Message;

// What to say where the schema and the table are not the same.
constexpr char kHowTo[] =
    "calibration.proto and tests/support/schema.def differ; docs/extending.md tells how messages "
    "and fields are added";

const FileDescriptor* File() {
  return DescriptorPool::generated_pool()->FindFileByName(kSchemaFile);
}

FieldDescriptor::Type TypeOf(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
      return FieldDescriptor::TYPE_DOUBLE;
    case Kind::kFloat:
      return FieldDescriptor::TYPE_FLOAT;
    case Kind::kInt32:
      return FieldDescriptor::TYPE_INT32;
    case Kind::kInt64:
      return FieldDescriptor::TYPE_INT64;
    case Kind::kBool:
      return FieldDescriptor::TYPE_BOOL;
    case Kind::kString:
      return FieldDescriptor::TYPE_STRING;
    case Kind::kBytes:
      return FieldDescriptor::TYPE_BYTES;
    case Kind::kMessage:
      return FieldDescriptor::TYPE_MESSAGE;
  }
  ADD_FAILURE() << "a kind without a type";
  return FieldDescriptor::TYPE_GROUP;
}

FieldDescriptor::Label LabelOf(Label label) {
  switch (label) {
    case Label::kOptional:
      return FieldDescriptor::LABEL_OPTIONAL;
    case Label::kRequired:
      return FieldDescriptor::LABEL_REQUIRED;
    case Label::kRepeated:
      return FieldDescriptor::LABEL_REPEATED;
  }
  ADD_FAILURE() << "an unknown label";
  return FieldDescriptor::LABEL_OPTIONAL;
}

uint32_t FloatBits(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

TEST(SchemaTest, FileHoldsTheMessagesAndNothingElse) {
  const FileDescriptor* file = File();
  ASSERT_NE(file, nullptr) << kSchemaFile << " is not registered";
  EXPECT_EQ(file->name(), kSchemaFile);
  EXPECT_EQ(file->package(), kPackage);
  EXPECT_EQ(file->syntax(), FileDescriptor::SYNTAX_PROTO2);
  EXPECT_EQ(file->dependency_count(), 0);
  EXPECT_EQ(file->enum_type_count(), 0);
  EXPECT_EQ(file->service_count(), 0);
  EXPECT_EQ(file->extension_count(), 0);
  EXPECT_EQ(file->options().SerializeAsString(), "");
  EXPECT_EQ(file->message_type_count(), kMessageCount) << kHowTo;
}

TEST(SchemaTest, MessagesInOrder) {
  ASSERT_EQ(File()->message_type_count(), kMessageCount);
  for (const MessageRow& message : Schema()) {
    SCOPED_TRACE(message.name);
    const Descriptor* descriptor = File()->message_type(message.index);
    EXPECT_EQ(descriptor->name(), message.name) << kHowTo;
    EXPECT_EQ(descriptor->full_name(), FullName(message));
    EXPECT_EQ(DescriptorPool::generated_pool()->FindMessageTypeByName(FullName(message)),
              descriptor);
    EXPECT_EQ(descriptor->field_count(), message.field_count());
    EXPECT_EQ(descriptor->nested_type_count(), 0);
    EXPECT_EQ(descriptor->enum_type_count(), 0);
    EXPECT_EQ(descriptor->extension_count(), 0);
    EXPECT_EQ(descriptor->extension_range_count(), 0);
    EXPECT_EQ(descriptor->oneof_decl_count(), 0);
    EXPECT_EQ(descriptor->options().SerializeAsString(), "");
  }
}

TEST(SchemaTest, ClassesInOrder) {
  ASSERT_EQ(RecordTypes().size(), Schema().size());
  for (const MessageRow& message : Schema()) {
    const RecordType& type = RecordTypes()[message.index];
    EXPECT_EQ(type.name, message.name);
    EXPECT_EQ(type.default_instance().GetDescriptor(), File()->message_type(message.index));
    EXPECT_EQ(type.default_instance().GetTypeName(), FullName(message));
  }
}

// The value that a getter returns while the field is unset.
void ExpectDefault(const FieldRow& row, const FieldDescriptor* field) {
  EXPECT_EQ(field->has_default_value(), row.default_text != nullptr);
  if (row.repeated() || row.kind == Kind::kMessage) return;
  switch (row.kind) {
    case Kind::kDouble:
      EXPECT_EQ(field->default_value_double(), 0.0);
      break;
    case Kind::kFloat:
      EXPECT_EQ(FloatBits(field->default_value_float()), row.default_bits);
      break;
    case Kind::kInt32:
      EXPECT_EQ(field->default_value_int32(), 0);
      break;
    case Kind::kInt64:
      EXPECT_EQ(field->default_value_int64(), 0);
      break;
    case Kind::kBool:
      EXPECT_FALSE(field->default_value_bool());
      break;
    default:
      EXPECT_EQ(field->default_value_string(), "");
  }
}

TEST(SchemaTest, FieldsInOrder) {
  int fields = 0;
  for (const MessageRow& message : Schema()) {
    const Descriptor* descriptor = File()->message_type(message.index);
    ASSERT_EQ(descriptor->field_count(), message.field_count()) << message.name << ": " << kHowTo;
    for (const FieldRow& row : message) {
      SCOPED_TRACE(FullName(message) + "." + row.name);
      ++fields;
      const FieldDescriptor* field = descriptor->field(row.has_bit);
      EXPECT_EQ(field->name(), row.name);
      EXPECT_EQ(field->index(), row.has_bit);
      EXPECT_EQ(field->number(), row.number);
      EXPECT_EQ(field->label(), LabelOf(row.label));
      EXPECT_EQ(field->type(), TypeOf(row.kind));
      EXPECT_EQ(field->containing_type(), descriptor);
      EXPECT_FALSE(field->is_extension());
      EXPECT_FALSE(field->is_packed());
      EXPECT_EQ(field->options().SerializeAsString(), "");
      EXPECT_EQ(descriptor->FindFieldByNumber(row.number), field);
      EXPECT_EQ(descriptor->FindFieldByName(row.name), field);
      if (row.kind == Kind::kMessage) {
        ASSERT_NE(field->message_type(), nullptr);
        EXPECT_EQ(field->message_type()->name(), row.message_type);
        EXPECT_LT(field->message_type()->index(), message.index) << "a reference forward";
        EXPECT_EQ(field->message_type()->file(), File());
      } else {
        EXPECT_EQ(field->message_type(), nullptr);
      }
      ExpectDefault(row, field);
    }
  }
  EXPECT_EQ(fields, kFieldCount);
}

TEST(SchemaTest, DescriptorIsTheCanonicalBytes) {
  FileDescriptorProto proto;
  File()->CopyTo(&proto);
  const std::string bytes = proto.SerializeAsString();
  EXPECT_EQ(bytes.size(), kEncodedSchemaSize) << "ENCODED_SIZE: " << kHowTo;
  EXPECT_TRUE(bytes == EncodedSchema()) << "the registered file is not the table:\n"
                                        << proto.DebugString();
  EXPECT_FALSE(proto.has_syntax());
  EXPECT_FALSE(proto.has_options());
}

struct NumberConstant {
  const char* message;
  const char* name;
  const int* address;
};

// Taking the address requires a definition in the library.
std::vector<NumberConstant> NumberConstants() {
  std::vector<NumberConstant> constants;
#define MESSAGE(Class)    \
  {                       \
    using Record = Class; \
    const char* const message = #Class;
#define END_MESSAGE }
#define FIELD(label, type, name, Constant, number) \
  constants.push_back({message, "k" #Constant "FieldNumber", &Record::k##Constant##FieldNumber});
#include "tests/support/schema.def"
  return constants;
}

// "error_per_point" gives "kErrorPerPointFieldNumber".
std::string ConstantName(const std::string& field_name) {
  std::string name = "k";
  bool piece_starts = true;
  for (const char c : field_name) {
    if (c == '_') {
      piece_starts = true;
    } else {
      name += piece_starts && c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
      piece_starts = false;
    }
  }
  return name + "FieldNumber";
}

TEST(FieldNumberConstantTest, NamingRule) {
  EXPECT_EQ(ConstantName("fx"), "kFxFieldNumber");
  EXPECT_EQ(ConstantName("x_bin"), "kXBinFieldNumber");
  EXPECT_EQ(ConstantName("error_per_point"), "kErrorPerPointFieldNumber");
  EXPECT_EQ(ConstantName("samples_zoom0"), "kSamplesZoom0FieldNumber");
  EXPECT_EQ(ConstantName("k1"), "kK1FieldNumber");
  EXPECT_EQ(ConstantName("a"), "kAFieldNumber");
}

TEST(FieldNumberConstantTest, OneForEveryField) {
  std::map<std::pair<std::string, std::string>, const int*> constants;
  std::set<const int*> addresses;
  for (const NumberConstant& constant : NumberConstants()) {
    constants[{constant.message, constant.name}] = constant.address;
    addresses.insert(constant.address);
  }
  EXPECT_EQ(constants.size(), static_cast<size_t>(kFieldCount));
  EXPECT_EQ(addresses.size(), static_cast<size_t>(kFieldCount)) << "two constants are one object";
  for (const MessageRow& message : Schema()) {
    for (const FieldRow& field : message) {
      SCOPED_TRACE(FullName(message) + "." + field.name);
      const auto found = constants.find({message.name, ConstantName(field.name)});
      ASSERT_NE(found, constants.end()) << "no constant " << ConstantName(field.name);
      EXPECT_EQ(*found->second, field.number);
    }
  }
}

// A constant expression: usable as a case label and an array bound.
static_assert(CameraIntrinsics::kFxFieldNumber == 1, "");
static_assert(FocusInfoItem::kTargetCodeFieldNumber == 9, "");
static_assert(BaseCalibrationProto::kBaseLengthFieldNumber == 5, "");

TEST(SchemaTest, EveryFieldOwnsTheBitOfItsPosition) {
  for (const MessageRow& message : Schema()) {
    for (const FieldRow& row : message) {
      SCOPED_TRACE(FullName(message) + "." + row.name);
      const std::unique_ptr<Message> record = NewRecord(message.name);
      ASSERT_EQ(HasBits(*record), 0u);
      const FieldDescriptor* field = record->GetDescriptor()->FindFieldByNumber(row.number);
      ASSERT_NE(field, nullptr) << kHowTo;
      const auto* reflection = record->GetReflection();
      switch (row.kind) {
        case Kind::kDouble:
          row.repeated() ? reflection->AddDouble(record.get(), field, 1)
                         : reflection->SetDouble(record.get(), field, 1);
          break;
        case Kind::kFloat:
          row.repeated() ? reflection->AddFloat(record.get(), field, 1)
                         : reflection->SetFloat(record.get(), field, 1);
          break;
        case Kind::kInt32:
          reflection->SetInt32(record.get(), field, 1);
          break;
        case Kind::kInt64:
          reflection->SetInt64(record.get(), field, 1);
          break;
        case Kind::kBool:
          reflection->SetBool(record.get(), field, true);
          break;
        case Kind::kString:
        case Kind::kBytes:
          reflection->SetString(record.get(), field, "1");
          break;
        case Kind::kMessage:
          row.repeated() ? reflection->AddMessage(record.get(), field)
                         : reflection->MutableMessage(record.get(), field);
          break;
      }
      EXPECT_EQ(HasBits(*record), row.repeated() ? 0u : 1u << row.has_bit);
    }
  }
}

TEST(SchemaTest, FocusInfoItemDeclaresTargetCodeSecondAndWritesItLast) {
  FocusInfoItem item;
  item.set_target_code(7);
  EXPECT_EQ(HasBits(item), 0x2u);
  EXPECT_EQ(item.SerializeAsString(), WireWriter().Tag(9, kVarint).Varint(7).bytes());

  FocusInfoItem other;
  other.set_valid_max(7);
  EXPECT_EQ(HasBits(other), 0x100u);
  EXPECT_EQ(other.SerializeAsString(), WireWriter().Tag(8, kVarint).Varint(7).bytes());
}

TEST(SchemaTest, BaseCalibrationReadsItsDeclaredDefaults) {
  const BaseCalibrationProto base;
  EXPECT_EQ(FloatBits(base.wheel_base()), 0x3ED013A9u);
  EXPECT_EQ(FloatBits(base.base_width()), 0x3EE9FBE7u);
  EXPECT_EQ(FloatBits(base.base_length()), 0x3F333333u);
  EXPECT_EQ(base.wheel_base(), 0.4064f);
  EXPECT_EQ(base.base_width(), 0.457f);
  EXPECT_EQ(base.base_length(), 0.7f);
  EXPECT_FALSE(base.has_wheel_base());
  EXPECT_FALSE(base.has_base_width());
  EXPECT_FALSE(base.has_base_length());
  EXPECT_EQ(base.SerializeAsString(), "");
}

// Sets the required fields whose bits are in the mask.
void SetRequired(unsigned mask, CameraIntrinsics* intrinsics) {
  if (mask & 0x01) intrinsics->set_fx(1);
  if (mask & 0x02) intrinsics->set_fy(1);
  if (mask & 0x04) intrinsics->set_skew(1);
  if (mask & 0x08) intrinsics->set_cx(1);
  if (mask & 0x10) intrinsics->set_cy(1);
}

TEST(SchemaTest, CameraIntrinsicsRequiresFiveFields) {
  for (unsigned mask = 0; mask <= 0x1F; ++mask) {
    CameraIntrinsics intrinsics;
    SetRequired(mask, &intrinsics);
    EXPECT_EQ(intrinsics.IsInitialized(), mask == 0x1F) << "mask " << mask;
    intrinsics.set_width(640);
    intrinsics.add_k(0.5);
    intrinsics.set_x_bin("x");
    intrinsics.add_sample_points();
    EXPECT_EQ(intrinsics.IsInitialized(), mask == 0x1F) << "mask " << mask << ", others set";
  }
}

TEST(SchemaTest, SystemIsInitializedWhenItsOtherCamerasAre) {
  PTZSystemCalibration system;
  EXPECT_TRUE(system.IsInitialized());
  system.mutable_ptz_camera()->mutable_intrinsics()->add_samples();
  system.mutable_ptz_camera()->mutable_pan_tilt()->mutable_pan_ext();
  system.mutable_laser()->mutable_tilt_ext();
  EXPECT_TRUE(system.IsInitialized()) << "nothing there is required";
  RobotCalibration* cameras = system.mutable_other_cameras();
  EXPECT_TRUE(system.IsInitialized()) << "no camera yet";
  cameras->add_camera();
  EXPECT_TRUE(system.IsInitialized()) << "a camera without intrinsics";
  SetRequired(0x1F, cameras->add_camera()->mutable_intrinsics());
  CameraIntrinsics* last = cameras->add_camera()->mutable_intrinsics();
  SetRequired(0x0F, last);
  EXPECT_FALSE(system.IsInitialized()) << "cy is missing in the third camera";
  EXPECT_FALSE(cameras->IsInitialized());
  EXPECT_FALSE(cameras->camera(2).IsInitialized());
  last->set_cy(1);
  EXPECT_TRUE(system.IsInitialized());
}

TEST(SchemaTest, FieldsNamedAlikeAreUnrelated) {
  EXPECT_EQ(CameraIntrinsics::kWidthFieldNumber + 0, 8);
  EXPECT_EQ(CameraIntrinsics::kHeightFieldNumber + 0, 9);
  EXPECT_EQ(CalibrationImage::kWidthFieldNumber + 0, 1);
  EXPECT_EQ(CalibrationImage::kHeightFieldNumber + 0, 2);
  EXPECT_EQ(PTZIntrinsics::kWidthFieldNumber + 0, 3);
  EXPECT_EQ(PTZIntrinsics::kHeightFieldNumber + 0, 4);
  EXPECT_EQ(CameraIntrinsics::kErrorPerPointFieldNumber + 0, 10);
  EXPECT_EQ(PTZIntrinsicsItem::kErrorPerPointFieldNumber + 0, 9);
  const CameraIntrinsics& of_camera = CameraCalibration::default_instance().intrinsics();
  const PTZIntrinsics& of_ptz_camera = PTZCameraParameters::default_instance().intrinsics();
  EXPECT_EQ(of_camera.GetDescriptor(), CameraIntrinsics::descriptor());
  EXPECT_EQ(of_ptz_camera.GetDescriptor(), PTZIntrinsics::descriptor());
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
