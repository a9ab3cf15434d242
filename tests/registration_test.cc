// Registration, default instances, descriptors and reflection of the whole file.
//
// What loading the library hands to the run-time is seen through support/runtime_calls; everything
// else through the public interface. First use from several threads: concurrency_test. What is left
// after shutdown: shutdown_test.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/fields.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/runtime_calls.h"
#include "tests/support/schema_table.h"
#include "tests/support/sizes.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Descriptor;
using ::google::protobuf::DescriptorPool;
using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::FileDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::MessageFactory;
using ::google::protobuf::Reflection;
using ::google::protobuf::TextFormat;

const FileDescriptor* File() {
  return DescriptorPool::generated_pool()->FindFileByName(kSchemaFile);
}

// --- Loading -------------------------------------------------------------------------------------

TEST(LoadTest, ChecksTheVersionThenAddsTheFileThenAsksForShutdown) {
  EXPECT_EQ(runtime_calls.verify_version, 1);
  EXPECT_EQ(runtime_calls.add_file, 1);
  EXPECT_EQ(runtime_calls.on_shutdown, 1);
  EXPECT_EQ(runtime_calls.verify_version_step, 1);
  EXPECT_EQ(runtime_calls.add_file_step, 2);
  EXPECT_EQ(runtime_calls.on_shutdown_step, 3);
}

TEST(LoadTest, VersionIsThatOfTheHeaders) {
  EXPECT_EQ(runtime_calls.headers_version, GOOGLE_PROTOBUF_VERSION);
  EXPECT_EQ(runtime_calls.oldest_library_version, GOOGLE_PROTOBUF_MIN_LIBRARY_VERSION);
  const std::string path = runtime_calls.source_path;
  const std::string expected = "calibration_common/calibration.pb.cc";
  EXPECT_TRUE(path.size() >= expected.size() &&
              path.compare(path.size() - expected.size(), expected.size(), expected) == 0)
      << path;
}

TEST(LoadTest, ShutdownHookIsTheFilesOwn) {
  EXPECT_EQ(runtime_calls.shutdown_hook,
            &protobuf_ShutdownFile_calibration_5fcommon_2fcalibration_2eproto);
}

// The run-time would accept other spellings of the same descriptor; this is about the bytes as they
// are handed over: each record's fields by ascending number, nothing that is not declared.
TEST(LoadTest, FileIsTheCanonicalEncodingOfTheSchema) {
  const std::string expected = EncodedSchema();
  ASSERT_EQ(expected.size(), kEncodedSchemaSize)
      << "ENCODED_SIZE of tests/support/schema.def, see docs/extending.md";
  ASSERT_EQ(runtime_calls.file_size, static_cast<int>(kEncodedSchemaSize));
  const char* bytes = static_cast<const char*>(runtime_calls.file);
  for (int i = 0; i < runtime_calls.file_size; ++i) {
    ASSERT_EQ(bytes[i], expected[i]) << "at byte " << i;
  }
}

TEST(LoadTest, RegisteringAgainChangesNothing) {
  const FileDescriptor* file = File();
  std::vector<const Message*> defaults;
  std::vector<std::string> texts;
  for (const RecordType& type : RecordTypes()) {
    defaults.push_back(&type.default_instance());
    texts.push_back(type.default_instance().DebugString());
  }
  const int steps = runtime_calls.steps;

  protobuf_AddDesc_calibration_5fcommon_2fcalibration_2eproto();

  EXPECT_EQ(runtime_calls.steps, steps);
  EXPECT_EQ(File(), file);
  for (size_t i = 0; i < RecordTypes().size(); ++i) {
    SCOPED_TRACE(RecordTypes()[i].name);
    EXPECT_EQ(&RecordTypes()[i].default_instance(), defaults[i]);
    EXPECT_EQ(RecordTypes()[i].default_instance().DebugString(), texts[i]);
    EXPECT_EQ(MessageFactory::generated_factory()->GetPrototype(File()->message_type(i)),
              defaults[i]);
  }
}

using LoadDeathTest = ::testing::Test;

TEST(LoadDeathTest, FileMissingFromThePoolIsFatal) {
  // noexcept, since some run-times report fatal errors by an exception after they have logged them.
  const auto assign_without_file = []() noexcept {
    runtime_calls.lose_file = true;
    protobuf_AssignDesc_calibration_5fcommon_2fcalibration_2eproto();
  };
  EXPECT_DEATH(
      assign_without_file(),
      "FATAL .*calibration_common/calibration\\.pb\\.cc:[0-9]+\\] CHECK failed: file != NULL: ");
}

// Each in a process of its own, since one call of any class builds reflection for all of them.
TEST(FirstUseDeathTest, EveryDescriptorIsThereAtOnce) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  ForEachRecord([](auto record) {
    using T = typename decltype(record)::Type;
    const auto finds_itself = [] {
      return T::descriptor() != nullptr && T::descriptor()->file() != nullptr;
    };
    EXPECT_EXIT(std::_Exit(finds_itself() ? 0 : 1), ::testing::ExitedWithCode(0), "")
        << typeid(T).name();
  });
}

// --- Default instances ---------------------------------------------------------------------------

TEST(DefaultInstanceTest, OneObjectAClassAllAbsent) {
  std::set<const Message*> objects;
  for (const MessageRow& message : Schema()) {
    SCOPED_TRACE(message.name);
    const RecordType& type = RecordTypes()[message.index];
    const Message& instance = type.default_instance();
    EXPECT_EQ(&type.default_instance(), &instance);
    objects.insert(&instance);
    EXPECT_EQ(HasBits(instance), 0u);
    const Reflection* reflection = instance.GetReflection();
    for (const FieldRow& row : message) {
      const FieldDescriptor* field = instance.GetDescriptor()->FindFieldByNumber(row.number);
      if (row.repeated()) {
        EXPECT_EQ(reflection->FieldSize(instance, field), 0) << row.name;
      } else {
        EXPECT_FALSE(reflection->HasField(instance, field)) << row.name;
      }
    }
    EXPECT_TRUE(reflection->GetUnknownFields(instance).empty());
    EXPECT_EQ(instance.SerializePartialAsString(), "");
    EXPECT_TRUE(EqualByReflection(instance, *type.make()));
  }
  EXPECT_EQ(objects.size(), static_cast<size_t>(kMessageCount));
}

TEST(DefaultInstanceTest, BaseCalibrationReadsDeclaredDefaults) {
  const BaseCalibrationProto& base = BaseCalibrationProto::default_instance();
  EXPECT_EQ(base.wheel_base(), 0.4064f);
  EXPECT_EQ(base.base_width(), 0.457f);
  EXPECT_EQ(base.base_length(), 0.7f);
  EXPECT_FALSE(base.has_wheel_base());
  EXPECT_FALSE(base.has_base_width());
  EXPECT_FALSE(base.has_base_length());
}

// What the field of a default instance and of a new object refers to.
TEST(DefaultInstanceTest, SubMessagesLinkToTheirClassesDefaultInstances) {
  ForEachMessage([](auto field) {
    using R = typename decltype(field)::Record;
    using Sub = typename decltype(field)::SubMessage;
    EXPECT_EQ(Sub::descriptor()->name(), field.row().message_type);
    const R object;
    const R& instance = R::default_instance();
    const Message* target = &Sub::default_instance();
    EXPECT_EQ(&field.Get(object), target);
    EXPECT_EQ(&field.Get(instance), target);
    EXPECT_FALSE(field.Has(object));
    EXPECT_FALSE(field.Has(instance));
    EXPECT_EQ(&instance.GetReflection()->GetMessage(instance, field.descriptor()), target);
  });
}

// --- Descriptors, metadata and the factory -------------------------------------------------------

TEST(DescriptorTest, IsTheFilesMessageOfTheClassesNumber) {
  ASSERT_NE(File(), nullptr);
  ASSERT_EQ(File()->message_type_count(), kMessageCount);
  int index = 0;
  ForEachRecord([&index](auto record) {
    using T = typename decltype(record)::Type;
    const MessageRow& message = Schema()[index];
    SCOPED_TRACE(message.name);
    const Descriptor* descriptor = T::descriptor();
    EXPECT_EQ(descriptor, File()->message_type(index));
    EXPECT_EQ(descriptor->full_name(), FullName(message));
    EXPECT_EQ(T::descriptor(), descriptor);

    const T object;
    const ::google::protobuf::Metadata metadata = object.GetMetadata();
    EXPECT_EQ(metadata.descriptor, descriptor);
    EXPECT_EQ(object.GetDescriptor(), descriptor);
    EXPECT_NE(metadata.reflection, nullptr);
    EXPECT_EQ(object.GetReflection(), metadata.reflection);
    EXPECT_EQ(T::default_instance().GetMetadata().descriptor, descriptor);
    EXPECT_EQ(T::default_instance().GetMetadata().reflection, metadata.reflection);
    EXPECT_EQ(metadata.reflection->GetMessageFactory(), MessageFactory::generated_factory());
    ++index;
  });
}

TEST(DescriptorTest, EveryClassHasAReflectionOfItsOwn) {
  std::set<const Reflection*> reflections;
  for (const RecordType& type : RecordTypes()) {
    reflections.insert(type.default_instance().GetReflection());
  }
  EXPECT_EQ(reflections.size(), static_cast<size_t>(kMessageCount));
}

TEST(FactoryTest, PrototypeIsTheDefaultInstance) {
  int index = 0;
  ForEachRecord([&index](auto record) {
    using T = typename decltype(record)::Type;
    SCOPED_TRACE(Schema()[index].name);
    const Message* prototype =
        MessageFactory::generated_factory()->GetPrototype(File()->message_type(index));
    ASSERT_EQ(prototype, &T::default_instance());
    const std::unique_ptr<Message> made(prototype->New());
    EXPECT_NE(dynamic_cast<const T*>(made.get()), nullptr);
    ++index;
  });
}

// --- Reflection ----------------------------------------------------------------------------------

// Reflection finds values by the positions it was given, the classes' own code by their members:
// all fields, filled through reflection and written by the class, must come out as the
// run-time's dynamic class writes them.
TEST(ReflectionTest, AgreesWithTheClassesOnEveryMember) {
  for (const RecordType& type : RecordTypes()) {
    SCOPED_TRACE(type.name);
    const std::unique_ptr<Message> record = FullRecord(type.name);
    const std::string bytes = record->SerializeAsString();
    EXPECT_EQ(bytes, DynamicTwin(*record)->SerializeAsString());

    const std::unique_ptr<Message> parsed = type.make();
    ASSERT_TRUE(parsed->ParseFromString(bytes));
    EXPECT_TRUE(EqualByReflection(*record, *parsed));
  }
}

TEST(ReflectionTest, ListsExactlyTheFieldsThatArePresentByNumber) {
  for (const MessageRow& message : Schema()) {
    SCOPED_TRACE(message.name);
    const std::unique_ptr<Message> record = FullRecord(message.name);
    std::vector<const FieldDescriptor*> listed;
    record->GetReflection()->ListFields(*record, &listed);
    const std::vector<const FieldRow*> expected = WireOrder(message);
    ASSERT_EQ(listed.size(), expected.size());
    for (size_t i = 0; i < listed.size(); ++i) EXPECT_EQ(listed[i]->name(), expected[i]->name);

    record->Clear();
    record->GetReflection()->ListFields(*record, &listed);
    EXPECT_TRUE(listed.empty());
  }
}

TEST(ReflectionTest, SwapExchangesEverything) {
  for (const RecordType& type : RecordTypes()) {
    SCOPED_TRACE(type.name);
    const std::unique_ptr<Message> full = FullRecord(type.name);
    const std::unique_ptr<Message> empty = type.make();
    full->GetReflection()->MutableUnknownFields(full.get())->AddVarint(1000, 1);
    const std::string bytes = full->SerializeAsString();
    full->GetReflection()->Swap(full.get(), empty.get());
    EXPECT_EQ(full->SerializePartialAsString(), "");
    EXPECT_EQ(empty->SerializeAsString(), bytes);
  }
}

TEST(ReflectionTest, KnowsTheSizeOfAnObject) {
  ForEachRecord([](auto record) {
    using T = typename decltype(record)::Type;
    const T object;
    EXPECT_EQ(SpaceOf(*object.GetReflection(), object), sizeof(T)) << T::descriptor()->name();
  });
}

// Typed accessors beside reflection where the order of members, of bits and of numbers differ.
TEST(ReflectionTest, SeesWhatAccessorsWrite) {
  FocusInfoItem item;
  item.set_target_code(9);
  item.set_cutoff_threshold(2);
  item.add_transfer_function(6);
  const Reflection* reflection = item.GetReflection();
  const Descriptor* type = FocusInfoItem::descriptor();
  EXPECT_EQ(reflection->GetInt32(item, type->FindFieldByName("target_code")), 9);
  EXPECT_EQ(reflection->GetFloat(item, type->FindFieldByName("cutoff_threshold")), 2);
  EXPECT_EQ(reflection->GetRepeatedFloat(item, type->FindFieldByName("transfer_function"), 0), 6);
  EXPECT_FALSE(reflection->HasField(item, type->FindFieldByName("target_id")));

  BaseCalibrationProto base;
  base.GetReflection()->SetFloat(
      &base, BaseCalibrationProto::descriptor()->FindFieldByName("base_length"), 5);
  EXPECT_TRUE(base.has_base_length());
  EXPECT_EQ(base.base_length(), 5);
  EXPECT_FALSE(base.has_base_width());
  EXPECT_EQ(base.base_width(), 0.457f);
}

TEST(TextFormatTest, EveryRecordIsPrintedAndReadBack) {
  for (const MessageRow& message : Schema()) {
    SCOPED_TRACE(message.name);
    const std::unique_ptr<Message> record = FullRecord(message.name);
    std::string text;
    ASSERT_TRUE(TextFormat::PrintToString(*record, &text));
    for (const FieldRow& row : message) {
      const std::string start = row.name + std::string(row.kind == Kind::kMessage ? " {" : ": ");
      EXPECT_TRUE(text.compare(0, start.size(), start) == 0 ||
                  text.find("\n" + start) != std::string::npos)
          << "'" << start << "' does not start a line of:\n"
          << text;
    }
    const std::unique_ptr<Message> read = NewRecord(message.name);
    ASSERT_TRUE(TextFormat::ParseFromString(text, read.get())) << text;
    EXPECT_TRUE(EqualByReflection(*record, *read));
  }
}

TEST(TextFormatTest, Example) {
  CameraCalibration camera;
  camera.set_name("left");
  camera.mutable_extrinsics()->add_a(0.5);
  EXPECT_EQ(camera.DebugString(), "extrinsics {\n  a: 0.5\n}\nname: \"left\"\n");
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
