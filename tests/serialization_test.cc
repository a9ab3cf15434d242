// Sizing and writing: every field, every boundary value, both writers, every call that writes.
//
// What must come out is built by hand (sample_values, wire_writer); what goes in is set through
// reflection, or through the accessors where a case is spelled out.
#include <fcntl.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <ostream>
#include <random>
#include <set>
#include <streambuf>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/entrances.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/runtime_facts.h"
#include "tests/support/sample_values.h"
#include "tests/support/schema_table.h"
#include "tests/support/sizes.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::UnknownFieldSet;
using ::google::protobuf::io::ArrayOutputStream;
using ::google::protobuf::io::CodedOutputStream;
using ::google::protobuf::io::ZeroCopyOutputStream;

static_assert(std::is_same<decltype(std::declval<const CameraIntrinsics&>().ByteSize()), int>(),
              "a size is a signed 32-bit number");

// The operations under test, called on a concrete class or on Message.
struct Calls {
  int (*size)(const Message&);
  uint8_t* (*to_array)(const Message&, uint8_t*);
  void (*to_stream)(const Message&, CodedOutputStream*);
  bool (*serialize_to_array)(const Message&, void*, int);
  bool (*serialize_partial_to_array)(const Message&, void*, int);
  bool (*serialize_to_stream)(const Message&, ZeroCopyOutputStream*);
  bool (*serialize_partial_to_stream)(const Message&, ZeroCopyOutputStream*);
  bool (*serialize_to_coded_stream)(const Message&, CodedOutputStream*);
  bool (*serialize_to_ostream)(const Message&, std::ostream*);
  bool (*serialize_to_file)(const Message&, int);
  std::vector<Exit> exits;
};

template <class M>
Calls CallsOn(std::vector<Exit> exits) {
#define ON(record) static_cast<const M&>(record)
  return {
      [](const Message& m) { return SizeOf(ON(m)); },
      [](const Message& m, uint8_t* p) { return ON(m).SerializeWithCachedSizesToArray(p); },
      [](const Message& m, CodedOutputStream* out) { ON(m).SerializeWithCachedSizes(out); },
      [](const Message& m, void* p, int n) { return ON(m).SerializeToArray(p, n); },
      [](const Message& m, void* p, int n) { return ON(m).SerializePartialToArray(p, n); },
      [](const Message& m, ZeroCopyOutputStream* out) {
        return ON(m).SerializeToZeroCopyStream(out);
      },
      [](const Message& m, ZeroCopyOutputStream* out) {
        return ON(m).SerializePartialToZeroCopyStream(out);
      },
      [](const Message& m, CodedOutputStream* out) { return ON(m).SerializeToCodedStream(out); },
      [](const Message& m, std::ostream* out) { return ON(m).SerializeToOstream(out); },
      [](const Message& m, int file) { return ON(m).SerializeToFileDescriptor(file); },
      std::move(exits),
  };
#undef ON
}

// On the record's own class, and on Message.
std::vector<const Calls*> BothCalls(const Message& record) {
  static const std::map<std::string, Calls> concrete = [] {
    std::map<std::string, Calls> all;
    ForEachRecord([&all](auto type) {
      using T = typename decltype(type)::Type;
      all[T::descriptor()->name()] = CallsOn<T>(ConcreteExits<T>());
    });
    return all;
  }();
  static const Calls generic = CallsOn<Message>(GenericExits());
  return {&concrete.at(record.GetDescriptor()->name()), &generic};
}

std::string ToArray(const Calls& calls, const Message& record, int size) {
  constexpr char kGuard = '\x5A';
  std::string room(static_cast<size_t>(size) + 2, kGuard);
  uint8_t* begin = reinterpret_cast<uint8_t*>(&room[1]);
  EXPECT_EQ(calls.to_array(record, begin), begin + size);
  EXPECT_EQ(room.front(), kGuard);
  EXPECT_EQ(room.back(), kGuard) << "more was written than the size says";
  return room.substr(1, static_cast<size_t>(size));
}

std::string ToStream(const Calls& calls, const Message& record, int size, int block) {
  std::string room(static_cast<size_t>(size) + 64, '\0');
  ArrayOutputStream stream(&room[0], static_cast<int>(room.size()), block);
  {
    CodedOutputStream output(&stream);
    calls.to_stream(record, &output);
    EXPECT_FALSE(output.HadError());
    EXPECT_EQ(output.ByteCount(), size);
  }
  return room.substr(0, static_cast<size_t>(stream.ByteCount()));
}

// Sizes the record, writes it both ways on its class and on Message, and reads it back.
void ExpectWrites(const Message& record, const std::string& expected) {
  const std::unique_ptr<Message> before = DynamicTwin(record);
  const uint32_t has_bits = HasBits(record);
  const int size = static_cast<int>(expected.size());
  for (const Calls* calls : BothCalls(record)) {
    ASSERT_EQ(calls->size(record), size);
    EXPECT_EQ(record.GetCachedSize(), size);
    EXPECT_TRUE(ToArray(*calls, record, size) == expected);
    for (const int block : {1, 3, 16, 4096}) {
      EXPECT_TRUE(ToStream(*calls, record, size, block) == expected) << "blocks of " << block;
    }
  }
  EXPECT_EQ(HasBits(record), has_bits);
  EXPECT_TRUE(EqualByReflection(*before, record)) << "a writer changed the record";
  const std::unique_ptr<Message> read(record.New());
  EXPECT_TRUE(read->ParsePartialFromString(expected));
  EXPECT_TRUE(EqualByReflection(record, *read));
}

// --- Single cases, spelled out -------------------------------------------------------------------

std::string Bytes(std::initializer_list<int> bytes) {
  std::string out;
  for (const int byte : bytes) out.push_back(static_cast<char>(byte));
  return out;
}

struct SpelledCase {
  const char* what;
  std::shared_ptr<Message> record;
  std::string bytes;
};

template <class T>
SpelledCase Spelled(const char* what, std::function<void(T*)> fill,
                    std::initializer_list<int> bytes) {
  auto record = std::make_shared<T>();
  fill(record.get());
  return {what, record, Bytes(bytes)};
}

std::vector<SpelledCase> SpelledCases() {
  return {
      Spelled<CameraIntrinsics>(
          "the required fields",
          [](CameraIntrinsics* r) {
            r->set_fx(1);
            r->set_fy(2);
            r->set_skew(0);
            r->set_cx(-2);
            r->set_cy(0.5);
          },
          {0x09, 0,    0,    0,    0,    0,    0,    0xF0, 0x3F, 0x11, 0, 0, 0,    0,    0,
           0,    0x00, 0x40, 0x19, 0,    0,    0,    0,    0,    0,    0, 0, 0x21, 0,    0,
           0,    0,    0,    0,    0x00, 0xC0, 0x29, 0,    0,    0,    0, 0, 0,    0xE0, 0x3F}),
      Spelled<CameraIntrinsics>(
          "two of the required fields",
          [](CameraIntrinsics* r) {
            r->set_cy(2);
            r->set_fx(1);
          },
          {0x09, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0x29, 0, 0, 0, 0, 0, 0, 0x00, 0x40}),
      Spelled<CameraIntrinsics>("width -1", [](CameraIntrinsics* r) { r->set_width(-1); },
                                {0x40, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}),
      Spelled<CameraIntrinsics>("width 127", [](CameraIntrinsics* r) { r->set_width(127); },
                                {0x40, 0x7F}),
      Spelled<CameraIntrinsics>("width 128", [](CameraIntrinsics* r) { r->set_width(128); },
                                {0x40, 0x80, 0x01}),
      Spelled<CameraIntrinsics>("width 2^31-1",
                                [](CameraIntrinsics* r) { r->set_width(0x7FFFFFFF); },
                                {0x40, 0xFF, 0xFF, 0xFF, 0xFF, 0x07}),
      Spelled<CameraIntrinsics>("width -2^31",
                                [](CameraIntrinsics* r) { r->set_width(-0x7FFFFFFF - 1); },
                                {0x40, 0x80, 0x80, 0x80, 0x80, 0xF8, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}),
      Spelled<CameraIntrinsics>(
          "tgt_width -1: a tag of two bytes", [](CameraIntrinsics* r) { r->set_tgt_width(-1); },
          {0x90, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}),
      Spelled<CameraIntrinsics>("tgt_height", [](CameraIntrinsics* r) { r->set_tgt_height(5); },
                                {0x98, 0x01, 0x05}),
      Spelled<CameraIntrinsics>("tgt_z", [](CameraIntrinsics* r) { r->set_tgt_z(1); },
                                {0x8D, 0x01, 0x00, 0x00, 0x80, 0x3F}),
      Spelled<CameraIntrinsics>("an empty element under a tag of two bytes",
                                [](CameraIntrinsics* r) { r->add_sample_points(); },
                                {0x82, 0x01, 0x00}),
      Spelled<CameraIntrinsics>("k and p: a tag before each element",
                                [](CameraIntrinsics* r) {
                                  r->add_p(1);
                                  r->add_k(0);
                                  r->add_k(2);
                                },
                                {0x31, 0, 0,    0,    0,    0, 0, 0, 0, 0x31, 0, 0,    0,   0,
                                 0,    0, 0x00, 0x40, 0x39, 0, 0, 0, 0, 0,    0, 0xF0, 0x3F}),
      Spelled<CameraCalibration>("a present, empty sub-message",
                                 [](CameraCalibration* r) { r->mutable_intrinsics(); },
                                 {0x0A, 0x00}),
      Spelled<CameraCalibration>("a present, empty string",
                                 [](CameraCalibration* r) { r->set_name(""); }, {0x2A, 0x00}),
      Spelled<CalibrationImage>(
          "bytes that are no text",
          [](CalibrationImage* r) { r->set_imgdata(std::string("\0\xFF\x80", 3)); },
          {0x2A, 0x03, 0x00, 0xFF, 0x80}),
      Spelled<BaseCalibrationProto>("present with its default value",
                                    [](BaseCalibrationProto* r) { r->set_wheel_base(0.4064f); },
                                    {0x0D, 0xA9, 0x13, 0xD0, 0x3E}),
      Spelled<FocusInfoItem>("declared second, written last",
                             [](FocusInfoItem* r) {
                               r->set_target_code(3);
                               r->set_valid_max(2);
                               r->set_target_id(1);
                             },
                             {0x08, 0x01, 0x40, 0x02, 0x48, 0x03}),
      Spelled<BaseCalibrationProto>("declared third, written last",
                                    [](BaseCalibrationProto* r) {
                                      r->set_base_length(1);
                                      r->mutable_gyroscope_cal();
                                      r->mutable_global_transform();
                                    },
                                    {0x1A, 0x00, 0x22, 0x00, 0x2D, 0x00, 0x00, 0x80, 0x3F}),
      Spelled<MarkerPositionSet>(
          "three elements",
          [](MarkerPositionSet* r) {
            for (const double value : {1, 2, -2}) r->add_head_center(value);
          },
          {0x11, 0, 0,    0,    0,    0, 0, 0xF0, 0x3F, 0x11, 0, 0,    0,   0,
           0,    0, 0x00, 0x40, 0x11, 0, 0, 0,    0,    0,    0, 0x00, 0xC0}),
      Spelled<MarkerPositionSet>("an element with something in it",
                                 [](MarkerPositionSet* r) {
                                   r->add_pos()->set_marker_id(300);
                                   r->add_pos();
                                 },
                                 {0x0A, 0x03, 0x20, 0xAC, 0x02, 0x0A, 0x00}),
      Spelled<FocusCheckProto>("ok false", [](FocusCheckProto* r) { r->set_ok(false); },
                               {0x28, 0x00}),
      Spelled<FocusCheckProto>("ok true", [](FocusCheckProto* r) { r->set_ok(true); },
                               {0x28, 0x01}),
      Spelled<CalibrationMetadataProto>(
          "time -1", [](CalibrationMetadataProto* r) { r->set_time(-1); },
          {0x08, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}),
      Spelled<CalibrationMetadataProto>(
          "time 2^35", [](CalibrationMetadataProto* r) { r->set_time(int64_t{1} << 35); },
          {0x08, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01}),
      Spelled<MarkerPositionInfo>("unknown fields behind the known ones",
                                  [](MarkerPositionInfo* r) {
                                    r->mutable_unknown_fields()->AddVarint(
                                        2, 5);  // a number smaller than a known one's
                                    r->set_marker_id(1);
                                  },
                                  {0x20, 0x01, 0x10, 0x05}),
  };
}

TEST(SerializationTest, SpelledOut) {
  for (const SpelledCase& c : SpelledCases()) {
    SCOPED_TRACE(c.record->GetDescriptor()->name() + ": " + c.what);
    ExpectWrites(*c.record, c.bytes);
    EXPECT_EQ(EncodeByTable(*c.record), c.bytes) << "the judge of the other tests is wrong";
  }
}

TEST(SerializationTest, NothingSetWritesNothing) {
  for (const RecordType& type : RecordTypes()) {
    SCOPED_TRACE(type.name);
    const std::unique_ptr<Message> record = type.make();
    ExpectWrites(*record, "");
    ExpectWrites(type.default_instance(), "");

    // A container for unknown fields that holds none.
    record->GetReflection()->MutableUnknownFields(record.get());
    ExpectWrites(*record, "");

    const std::unique_ptr<Message> cleared = FullRecord(type.name);
    EXPECT_GT(BothCalls(*cleared)[0]->size(*cleared), 0);
    cleared->Clear();
    ExpectWrites(*cleared, "");
  }
}

// --- Fields --------------------------------------------------------------------------------------

TEST(SerializationTest, EveryFieldAtEveryBoundary) {
  int fields = 0;
  for (const MessageRow& message : Schema()) {
    for (const FieldRow& field : message) {
      ++fields;
      std::unique_ptr<Message> all = NewRecord(message.name);
      std::string all_bytes;
      int index = 0;
      for (const SampleValue& sample : SamplesOf(field.kind)) {
        SCOPED_TRACE(std::string(message.name) + "." + field.name + ", sample " +
                     std::to_string(index++));
        const std::unique_ptr<Message> record = NewRecord(message.name);
        Put(field, sample, record.get());
        ExpectWrites(*record, Encode(field, sample));
        if (field.repeated()) {
          Put(field, sample, all.get());
          all_bytes += Encode(field, sample);
        }
      }
      SCOPED_TRACE(std::string(message.name) + "." + field.name + ", all samples");
      ExpectWrites(*all, all_bytes);
    }
  }
  EXPECT_EQ(fields, kFieldCount);
}

// Each bit at its place, in varints of every length.
TEST(SerializationTest, EveryBitOfAVarint) {
  for (int bit = 0; bit < 64; ++bit) {
    for (const uint64_t value :
         {1ull << bit, ~(1ull << bit), (1ull << bit) - 1, 0xA5C3966A3C5A9B71ull >> bit}) {
      SCOPED_TRACE(std::to_string(value));
      CalibrationMetadataProto record;
      record.set_time(static_cast<int64_t>(value));
      record.mutable_unknown_fields()->AddGroup(9)->AddVarint(1, value);
      const std::string varint = WireWriter().Tag(1, kVarint).Varint(value).bytes();
      ExpectWrites(record, varint + WireWriter().Group(9, varint).bytes());
    }
  }
}

// Records with `count` doubles and floats, and their bytes.
struct RepeatedNumbers {
  explicit RepeatedNumbers(int count) {
    for (int i = 1; i <= count; ++i) {
      doubles.add_k(i);
      floats.add_transfer_function(static_cast<float>(i));
      double_bytes.Tag(CameraIntrinsics::kKFieldNumber, kFixed64).Double(i);
      float_bytes.Tag(FocusInfoItem::kTransferFunctionFieldNumber, kFixed32)
          .Float(static_cast<float>(i));
    }
  }

  CameraIntrinsics doubles;
  FocusInfoItem floats;
  WireWriter double_bytes;
  WireWriter float_bytes;
};

TEST(SerializationTest, RepeatedNumbersOfEveryCount) {
  for (int count = 0; count < 140; ++count) {
    SCOPED_TRACE(count);
    const RepeatedNumbers numbers(count);
    ExpectWrites(numbers.doubles, numbers.double_bytes.bytes());
    ExpectWrites(numbers.floats, numbers.float_bytes.bytes());
  }
}

// A million of them and more go to a stream as a few do.
TEST(SerializationTest, RepeatedNumbersInAnyNumber) {
  const RepeatedNumbers numbers((1 << 20) + 65);
  const auto expect = [](const Message& record, const std::string& expected) {
    const int size = static_cast<int>(expected.size());
    for (const Calls* calls : BothCalls(record)) {
      ASSERT_EQ(calls->size(record), size);
      EXPECT_TRUE(ToArray(*calls, record, size) == expected);
      EXPECT_TRUE(ToStream(*calls, record, size, 4096) == expected);
    }
  };
  expect(numbers.doubles, numbers.double_bytes.bytes());
  expect(numbers.floats, numbers.float_bytes.bytes());
}

TEST(SerializationTest, DeclaredDefaultsAreWrittenWhenPresent) {
  int defaults = 0;
  for (const MessageRow& message : Schema()) {
    for (const FieldRow& field : message) {
      if (field.repeated() || field.kind == Kind::kMessage) continue;
      SCOPED_TRACE(std::string(message.name) + "." + field.name);
      const SampleValue value = {field.default_bits, ""};
      const std::unique_ptr<Message> record = NewRecord(message.name);
      Put(field, value, record.get());
      ExpectWrites(*record, Encode(field, value));
      defaults += field.default_text != nullptr;
    }
  }
  EXPECT_EQ(defaults, 3);
}

// Any two fields of a class: each is written whatever the other is, in number order.
TEST(SerializationTest, EveryPairOfFields) {
  for (const MessageRow& message : Schema()) {
    const std::vector<const FieldRow*> order = WireOrder(message);
    for (size_t i = 0; i < order.size(); ++i) {
      for (size_t j = i + 1; j < order.size(); ++j) {
        SCOPED_TRACE(std::string(message.name) + "." + order[i]->name + " and " + order[j]->name);
        const SampleValue& first = SamplesOf(order[i]->kind)[1];
        const SampleValue& second = SamplesOf(order[j]->kind)[0];
        const std::unique_ptr<Message> record = NewRecord(message.name);
        Put(*order[j], second, record.get());
        Put(*order[i], first, record.get());
        ExpectWrites(*record, Encode(*order[i], first) + Encode(*order[j], second));
      }
    }
  }
}

TEST(SerializationTest, EveryCombinationOfRequiredFields) {
  const MessageRow& intrinsics = FindMessage("CameraIntrinsics");
  const FieldRow& optional = *FindField(intrinsics, "width");
  const FieldRow& repeated = *FindField(intrinsics, "k");
  for (unsigned subset = 0; subset < 32; ++subset) {
    SCOPED_TRACE("has-bits " + std::to_string(subset));
    CameraIntrinsics record;
    std::string bytes;
    int required = 0;
    for (const FieldRow& field : intrinsics) {
      if (field.label != Label::kRequired || (subset >> field.has_bit & 1) == 0) continue;
      ++required;
      const SampleValue& value = SamplesOf(field.kind)[static_cast<size_t>(field.number)];
      Put(field, value, &record);
      bytes += Encode(field, value);
    }
    EXPECT_EQ(record.ByteSize(), 9 * required);
    ExpectWrites(record, bytes);

    // The other fields neither fill in for required ones nor hide them.
    for (const FieldRow* field : {&repeated, &optional}) {
      Put(*field, SamplesOf(field->kind)[1], &record);
      bytes += Encode(*field, SamplesOf(field->kind)[1]);
    }
    ExpectWrites(record, bytes);

    // Nor does a missing one keep a record that holds it from being written.
    CameraCalibration camera;
    *camera.mutable_intrinsics() = record;
    for (const Calls* calls : BothCalls(camera)) {
      for (const Exit& exit : calls->exits) {
        if (!exit.partial) continue;
        SCOPED_TRACE(exit.name);
        std::string written;
        EXPECT_TRUE(exit.write(camera, &written));
        EXPECT_TRUE(written ==
                    WireWriter().Tag(1, kLengthDelimited).LengthDelimited(bytes).bytes());
      }
    }
  }
}

// Whether it is a fatal error to write a message of the run-time's own that lacks a required field:
// not if the run-time was built with NDEBUG.
bool RuntimeChecksRequiredFields() {
  std::string written;
  try {
    ::google::protobuf::UninterpretedOption::NamePart().SerializeToString(&written);
  } catch (const ::google::protobuf::FatalException&) {
    return true;
  }
  return false;
}

// A fatal error, whether the caller knows the class or a Message& only, and however the caller was
// compiled.
TEST(SerializationTest, WhatLacksRequiredFieldsIsRefusedByAllCallsAlike) {
  const ::google::protobuf::LogSilencer quiet;
  const bool runtime_checks = RuntimeChecksRequiredFields();
  const CameraIntrinsics record;
  std::vector<std::vector<bool>> refused;
  for (const Calls* calls : BothCalls(record)) {
    refused.emplace_back();
    for (const Exit& exit : calls->exits) {
      if (exit.partial) continue;
      std::string written;
      bool threw = false;
      try {
        exit.write(record, &written);
      } catch (const ::google::protobuf::FatalException&) {
        threw = true;
      }
      refused.back().push_back(threw);
    }
    EXPECT_EQ(refused.back(), std::vector<bool>(refused.back().size(), refused.back().front()));
  }
  EXPECT_EQ(kClassesCheckRequiredFields || runtime_checks, refused.front().front());
  EXPECT_EQ(runtime_checks, refused.back().front());
}

// --- Whole records -------------------------------------------------------------------------------

TEST(SerializationTest, FullRecordsInWireOrder) {
  for (const MessageRow& message : Schema()) {
    SCOPED_TRACE(message.name);
    const std::unique_ptr<Message> record = FullRecord(message.name);
    std::string tags;
    for (const FieldRow* field : WireOrder(message)) {
      const FieldDescriptor* f = record->GetDescriptor()->FindFieldByNumber(field->number);
      const int count = field->repeated() ? record->GetReflection()->FieldSize(*record, f) : 1;
      for (int i = 0; i < count; ++i) {
        tags += WireWriter().Tag(field->number, WireTypeOf(field->kind)).bytes();
      }
    }
    const std::string expected = EncodeByTable(*record);
    ExpectWrites(*record, expected);

    // Read as a record without any known field, the tags come in the order of the table.
    UnknownFieldSet fields;
    ASSERT_TRUE(fields.ParseFromArray(expected.data(), static_cast<int>(expected.size())));
    std::string written_tags;
    for (int i = 0; i < fields.field_count(); ++i) {
      const FieldRow* field = FindField(message, fields.field(i).number());
      ASSERT_NE(field, nullptr);
      written_tags += WireWriter().Tag(field->number, WireTypeOf(field->kind)).bytes();
    }
    EXPECT_EQ(written_tags, tags);
  }
}

// Groups of fields that are sized together, less one of them.
TEST(SerializationTest, FullRecordsLessOneField) {
  for (const MessageRow& message : Schema()) {
    for (const FieldRow& field : message) {
      SCOPED_TRACE(std::string(message.name) + " without " + field.name);
      const std::unique_ptr<Message> record = FullRecord(message.name);
      record->GetReflection()->ClearField(record.get(),
                                          record->GetDescriptor()->FindFieldByNumber(field.number));
      ExpectWrites(*record, EncodeByTable(*record));
    }
  }
}

// Unknown fields of every wire type follow byte for byte, in a sub-message as at the top, and in
// the order in which they came.
TEST(SerializationTest, UnknownFieldsComeLast) {
  for (const MessageRow& message : Schema()) {
    SCOPED_TRACE(message.name);
    const std::unique_ptr<Message> record = FullRecord(message.name);
    const std::string known = EncodeByTable(*record);

    UnknownFieldSet* unknown = record->GetReflection()->MutableUnknownFields(record.get());
    unknown->AddVarint(2047, 0xFFFFFFFFFFFFFFFF);
    unknown->AddFixed32(20, 0x04030201);
    unknown->AddFixed64((1 << 29) - 1, 0x0807060504030201);
    unknown->AddLengthDelimited(20, std::string(128, '\xFE'));
    UnknownFieldSet* group = unknown->AddGroup(1000);
    group->AddVarint(1, 0);
    group->AddGroup(2)->AddLengthDelimited(3, "");
    unknown->AddVarint(21, 128);
    const std::string expected_unknown =
        WireWriter()
            .Tag(2047, kVarint)
            .Varint(0xFFFFFFFFFFFFFFFF)
            .Tag(20, kFixed32)
            .Fixed32(0x04030201)
            .Tag((1 << 29) - 1, kFixed64)
            .Fixed64(0x0807060504030201)
            .Tag(20, kLengthDelimited)
            .LengthDelimited(std::string(128, '\xFE'))
            .Group(1000, WireWriter()
                             .Tag(1, kVarint)
                             .Varint(0)
                             .Group(2, WireWriter().Tag(3, kLengthDelimited).Varint(0).bytes())
                             .bytes())
            .Tag(21, kVarint)
            .Varint(128)
            .bytes();
    ExpectWrites(*record, known + expected_unknown);

    const std::unique_ptr<Message> alone = NewRecord(message.name);
    ASSERT_TRUE(alone->ParsePartialFromString(expected_unknown));
    ExpectWrites(*alone, expected_unknown);
  }
}

TEST(SerializationTest, EveryCallWritesTheSame) {
  for (const RecordType& type : RecordTypes()) {
    std::vector<std::unique_ptr<Message>> records;
    records.push_back(FullRecord(type.name));
    records.push_back(FullRecord(type.name));
    std::mt19937 random(7);
    AddRandomUnknown(&random, records.back().get());
    for (uint32_t seed = 0; seed < 6; ++seed) {
      random.seed(seed);
      RandomOptions options;
      options.percent_set = seed == 0 ? 0 : seed % 2 == 0 ? kSparse : kDense;
      options.always_required = seed < 4;
      records.push_back(type.make());
      FillRandomly(&random, options, records.back().get());
    }
    for (size_t i = 0; i < records.size(); ++i) {
      const Message& record = *records[i];
      const std::string expected = EncodeByTable(record);
      for (const Calls* calls : BothCalls(record)) {
        for (const Exit& exit : calls->exits) {
          if (!exit.partial && !record.IsInitialized()) continue;
          SCOPED_TRACE(type.name + ", record " + std::to_string(i) + ", " + exit.name);
          std::string written;
          EXPECT_TRUE(exit.write(record, &written));
          EXPECT_TRUE(written == expected);
        }
      }
    }
  }
}

// Several hundred KB, of numbers, of sub-messages, of texts and of unknown fields: more than any
// call takes at once.
TEST(SerializationTest, EveryCallWritesLargeRecords) {
  std::vector<std::unique_ptr<Message>> records;
  CameraIntrinsics intrinsics;
  for (int i = 0; i < 45000; ++i) intrinsics.add_k(i);
  records.emplace_back(new CameraIntrinsics(intrinsics));
  RobotCalibration robot;
  const std::unique_ptr<Message> camera = FullRecord("CameraCalibration");
  for (int i = 0; i < 400; ++i) robot.add_camera()->MergeFrom(*camera);
  robot.add_camera()->mutable_intrinsics()->CopyFrom(intrinsics);
  robot.mutable_camera(0)->set_name(std::string(100000, 'n'));
  records.emplace_back(new RobotCalibration(robot));
  CalibrationMetadataProto metadata;
  for (int i = 0; i < 80000; ++i) metadata.mutable_unknown_fields()->AddFixed32(100, 7);
  records.emplace_back(new CalibrationMetadataProto(metadata));

  for (const auto& record : records) {
    const std::string expected = EncodeByTable(*record);
    EXPECT_GT(expected.size(), 390000u);
    ExpectWrites(*record, expected);
    for (const Calls* calls : BothCalls(*record)) {
      for (const Exit& exit : calls->exits) {
        if (!exit.partial && !record->IsInitialized()) continue;
        SCOPED_TRACE(record->GetTypeName() + ", " + exit.name);
        std::string written;
        EXPECT_TRUE(exit.write(*record, &written));
        EXPECT_TRUE(written == expected);
      }
    }
  }
}

TEST(SerializationTest, StreamInBlocksOfAnySize) {
  for (const RecordType& type : RecordTypes()) {
    const std::unique_ptr<Message> record = FullRecord(type.name);
    const std::string expected = EncodeByTable(*record);
    for (const Calls* calls : BothCalls(*record)) {
      const int size = calls->size(*record);
      for (int block = 1; block <= 40; ++block) {
        SCOPED_TRACE(type.name + ", blocks of " + std::to_string(block));
        EXPECT_TRUE(ToStream(*calls, *record, size, block) == expected);
      }
    }
  }
}

// --- Cached sizes --------------------------------------------------------------------------------

void VisitTree(const Message& record, const std::function<void(const Message&)>& visit) {
  visit(record);
  const Reflection* r = record.GetReflection();
  for (const FieldRow& field : FindMessage(record.GetDescriptor()->name())) {
    if (field.kind != Kind::kMessage) continue;
    const FieldDescriptor* f = record.GetDescriptor()->FindFieldByNumber(field.number);
    if (field.repeated()) {
      for (int i = 0; i < r->FieldSize(record, f); ++i) {
        VisitTree(r->GetRepeatedMessage(record, f, i), visit);
      }
    } else if (r->HasField(record, f)) {
      VisitTree(r->GetMessage(record, f), visit);
    }
  }
}

TEST(SerializationTest, SizingCoversTheWholeTree) {
  for (const RecordType& type : RecordTypes()) {
    SCOPED_TRACE(type.name);
    const std::unique_ptr<Message> record = FullRecord(type.name);
    VisitTree(*record, [](const Message& m) {
      EXPECT_EQ(m.GetCachedSize(), 0) << m.GetDescriptor()->name() << " was never sized";
    });
    for (const Calls* calls : BothCalls(*record)) {
      calls->size(*record);
      VisitTree(*record, [](const Message& m) {
        EXPECT_EQ(m.GetCachedSize(), static_cast<int>(EncodeByTable(m).size()))
            << m.GetDescriptor()->name();
      });
      // What was cached before is out of date now, in every object of the tree.
      VisitTree(*record, [](const Message& m) {
        m.GetReflection()
            ->MutableUnknownFields(const_cast<Message*>(&m))
            ->AddLengthDelimited(300, std::string(200, 'x'));
      });
    }
    ExpectWrites(*record, EncodeByTable(*record));
    VisitTree(*record, [](const Message& m) {
      EXPECT_EQ(m.GetCachedSize(), static_cast<int>(EncodeByTable(m).size()))
          << m.GetDescriptor()->name();
    });
  }
}

// The run-time's own sizing, by reflection, comes to the same and is cached in the same place.
TEST(SerializationTest, SizingByReflection) {
  for (const RecordType& type : RecordTypes()) {
    SCOPED_TRACE(type.name);
    const std::unique_ptr<Message> record = FullRecord(type.name);
    const int expected = static_cast<int>(EncodeByTable(*record).size());
    EXPECT_EQ(SizeByReflection(*record), static_cast<size_t>(expected));
    EXPECT_EQ(record->GetCachedSize(), expected);
  }
}

// The writers take every length from the cached sizes and compute none.
TEST(SerializationTest, LengthsAreTheCachedSizes) {
  CameraCalibration camera;
  camera.mutable_intrinsics_image()->set_width(300);
  ASSERT_EQ(camera.ByteSize(), 5);
  camera.mutable_intrinsics_image()->set_width(1);
  const std::string stale = Bytes({0x12, 0x03, 0x08, 0x01});
  std::string room(8, '\0');
  uint8_t* begin = reinterpret_cast<uint8_t*>(&room[0]);
  EXPECT_EQ(camera.SerializeWithCachedSizesToArray(begin), begin + stale.size());
  EXPECT_EQ(room.substr(0, stale.size()), stale);
}

// A user's own class below T, which counts who comes to write it by its virtual function.
template <class T>
class CountsVirtualWrites : public T {
 public:
  static int count;
  uint8_t* SerializeWithCachedSizesToArray(uint8_t* target) const override {
    ++count;
    return T::SerializeWithCachedSizesToArray(target);
  }
};
template <class T>
int CountsVirtualWrites<T>::count = 0;

// The array writer knows the classes of its sub-messages and calls them directly.
TEST(SerializationTest, ArrayWriterCallsSubMessagesDirectly) {
  int fields = 0;
  ForEachRecord([&fields](auto type) {
    using T = typename decltype(type)::Type;
    using Counting = CountsVirtualWrites<T>;
    for (const MessageRow& message : Schema()) {
      for (const FieldRow& field : message) {
        if (field.kind != Kind::kMessage || T::descriptor()->name() != field.message_type) continue;
        SCOPED_TRACE(std::string(message.name) + "." + field.name);
        ++fields;
        const std::unique_ptr<Message> record = NewRecord(message.name);
        const FieldDescriptor* f = record->GetDescriptor()->FindFieldByNumber(field.number);
        const Reflection* r = record->GetReflection();
        if (field.repeated()) {
          r->AddAllocatedMessage(record.get(), f, new Counting);
        } else {
          r->SetAllocatedMessage(record.get(), new Counting, f);
        }
        const Calls* calls = BothCalls(*record)[0];
        const int size = calls->size(*record);
        EXPECT_EQ(ToArray(*calls, *record, size), EncodeByTable(*record));
        EXPECT_EQ(Counting::count, 0);
      }
    }
  });
  EXPECT_EQ(fields, 23);
}

// --- Targets that are too small or fail ----------------------------------------------------------

TEST(SerializationTest, ArrayTooSmall) {
  for (const RecordType& type : RecordTypes()) {
    const std::unique_ptr<Message> record = FullRecord(type.name);
    const std::string expected = EncodeByTable(*record);
    for (const Calls* calls : BothCalls(*record)) {
      for (auto write : {calls->serialize_to_array, calls->serialize_partial_to_array}) {
        for (size_t size = 0; size < expected.size(); ++size) {
          // Exactly as large as announced, so that a sanitizer sees the first byte too many.
          std::vector<char> room(size + 1);
          ASSERT_FALSE(write(*record, room.data(), static_cast<int>(size)))
              << type.name << " into " << size << " of " << expected.size() << " bytes";
          ASSERT_EQ(room[size], 0) << type.name << " into " << size;
        }
        std::string exact(expected.size(), '\0');
        EXPECT_TRUE(write(*record, &exact[0], static_cast<int>(exact.size()))) << type.name;
        EXPECT_TRUE(exact == expected);
        std::string larger(expected.size() + 3, '\x5A');
        EXPECT_TRUE(write(*record, &larger[0], static_cast<int>(larger.size()))) << type.name;
        EXPECT_TRUE(larger == expected + "\x5A\x5A\x5A");
      }
    }
  }
}

// Takes `capacity` bytes in blocks and then fails.
class FailingStream : public ZeroCopyOutputStream {
 public:
  FailingStream(size_t capacity, int block) : room_(capacity, '\0'), block_(block) {}

  bool Next(void** data, int* size) override {
    const int rest = static_cast<int>(room_.size()) - used_;
    if (rest == 0) return false;
    *data = &room_[static_cast<size_t>(used_)];
    *size = rest < block_ ? rest : block_;
    used_ += *size;
    return true;
  }
  void BackUp(int count) override { used_ -= count; }
  ::google::protobuf::int64 ByteCount() const override { return used_; }

  std::string written() const { return room_.substr(0, static_cast<size_t>(used_)); }

 private:
  std::string room_;
  int block_;
  int used_ = 0;
};

TEST(SerializationTest, StreamFailsAfterAnyByte) {
  for (const RecordType& type : RecordTypes()) {
    const std::unique_ptr<Message> record = FullRecord(type.name);
    const std::string expected = EncodeByTable(*record);
    for (const Calls* calls : BothCalls(*record)) {
      for (const int block : {1, 7, 1 << 20}) {
        SCOPED_TRACE(type.name + ", blocks of " + std::to_string(block));
        for (auto write : {calls->serialize_to_stream, calls->serialize_partial_to_stream}) {
          for (size_t capacity = 0; capacity < expected.size(); ++capacity) {
            FailingStream stream(capacity, block);
            ASSERT_FALSE(write(*record, &stream)) << "fails after " << capacity << " bytes";
          }
          FailingStream enough(expected.size(), block);
          EXPECT_TRUE(write(*record, &enough));
          EXPECT_TRUE(enough.written() == expected);
        }
        // Here the error may only show when what is held back is handed over.
        for (size_t capacity = 0; capacity < expected.size(); ++capacity) {
          FailingStream stream(capacity, block);
          CodedOutputStream output(&stream);
          const bool ok = calls->serialize_to_coded_stream(*record, &output);
          output.Trim();
          ASSERT_FALSE(ok && !output.HadError()) << "fails after " << capacity << " bytes";
        }
      }
    }
  }
}

// A disk that is full after `capacity` bytes.
class FailingBuffer : public std::streambuf {
 public:
  explicit FailingBuffer(size_t capacity) : room_(capacity, '\0') {
    setp(&room_[0], &room_[0] + capacity);
  }

 private:
  std::string room_;
};

TEST(SerializationTest, OstreamFailsAfterAnyByte) {
  for (const RecordType& type : RecordTypes()) {
    const std::unique_ptr<Message> record = FullRecord(type.name);
    const std::string expected = EncodeByTable(*record);
    for (const Calls* calls : BothCalls(*record)) {
      for (size_t capacity = 0; capacity <= expected.size(); ++capacity) {
        FailingBuffer buffer(capacity);
        std::ostream stream(&buffer);
        ASSERT_EQ(calls->serialize_to_ostream(*record, &stream), capacity == expected.size())
            << type.name << ", " << capacity << " bytes";
      }
    }
  }
}

TEST(SerializationTest, FullDisk) {
  const int file = open("/dev/full", O_WRONLY);
  ASSERT_GE(file, 0) << "/dev/full cannot be opened";
  CalibrationImage image;
  // More than the run-time holds back before it writes: the 3.0 series loses track of what comes
  // later.
  image.set_imgdata(std::string(100000, 'i'));
  for (const Calls* calls : BothCalls(image)) EXPECT_FALSE(calls->serialize_to_file(image, file));
  close(file);
}

// --- Large strings without a copy ----------------------------------------------------------------

// Takes strings where they are, and notes where that was.
class AliasingStream : public ZeroCopyOutputStream {
 public:
  bool Next(void** data, int* size) override {
    Keep();
    *data = block_;
    *size = held_ = static_cast<int>(sizeof block_);
    return true;
  }
  void BackUp(int count) override { held_ -= count; }
  ::google::protobuf::int64 ByteCount() const override {
    return static_cast<int>(bytes_.size()) + held_;
  }
  bool AllowsAliasing() const override { return true; }
  bool WriteAliasedRaw(const void* data, int size) override {
    Keep();
    bytes_.append(static_cast<const char*>(data), static_cast<size_t>(size));
    aliased_.insert(data);
    return true;
  }

  std::string Finish() {
    Keep();
    return bytes_;
  }
  bool aliased(const std::string& text) const { return aliased_.count(text.data()) > 0; }

 private:
  void Keep() {
    bytes_.append(block_, static_cast<size_t>(held_));
    held_ = 0;
  }

  char block_[64];
  int held_ = 0;
  std::string bytes_;
  std::set<const void*> aliased_;
};

TEST(SerializationTest, StreamMayTakeStringsInPlace) {
  const std::string large(16384, 'z');
  int fields = 0;
  for (const MessageRow& message : Schema()) {
    const std::unique_ptr<Message> record = NewRecord(message.name);
    for (const FieldRow& field : message) {
      if (field.kind == Kind::kString || field.kind == Kind::kBytes)
        Put(field, {0, large}, record.get());
    }
    AliasingStream stream;
    {
      BothCalls(*record)[0]->size(*record);
      CodedOutputStream output(&stream);
      output.EnableAliasing(true);
      BothCalls(*record)[0]->to_stream(*record, &output);
    }
    EXPECT_TRUE(stream.Finish() == EncodeByTable(*record)) << message.name;
    for (const FieldRow& field : message) {
      if (field.kind != Kind::kString && field.kind != Kind::kBytes) continue;
      ++fields;
      std::string scratch;
      EXPECT_TRUE(stream.aliased(record->GetReflection()->GetStringReference(
          *record, record->GetDescriptor()->FindFieldByNumber(field.number), &scratch)))
          << message.name << "." << field.name;
    }
  }
  EXPECT_EQ(fields, 9);
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
