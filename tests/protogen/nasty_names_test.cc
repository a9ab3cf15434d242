// Classes that the generator makes from nasty_names.proto, whose messages and fields are named like
// what the generated code uses itself. That they compile is most of the test; here they are used.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/random_record.h"
#include "tests/support/reflect.h"

// Behind the other headers: it has a namespace std in a namespace of this project.
#include "tests/protogen/nasty_names.pb.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

namespace named = ::zarvo::calibration::nasty::std::google::zarvo::internal::file;

using ::google::protobuf::Descriptor;
using ::google::protobuf::Message;

using MessagePtr = std::unique_ptr<Message>;

std::vector<const Descriptor*> Messages() {
  const ::google::protobuf::FileDescriptor* file = named::Cast::descriptor()->file();
  std::vector<const Descriptor*> messages(file->message_type_count());
  for (size_t i = 0; i < messages.size(); ++i)
    messages[i] = file->message_type(static_cast<int>(i));
  return messages;
}

class NastyNamesTest : public ::testing::TestWithParam<const Descriptor*> {
 protected:
  static MessagePtr New() {
    return MessagePtr(
        ::google::protobuf::MessageFactory::generated_factory()->GetPrototype(GetParam())->New());
  }
  static MessagePtr Filled() {
    MessagePtr record = New();
    FillFully(record.get());
    return record;
  }
};

INSTANTIATE_TEST_SUITE_P(All, NastyNamesTest, ::testing::ValuesIn(Messages()),
                         [](const ::testing::TestParamInfo<const Descriptor*>& info) {
                           return info.param->name();
                         });

TEST_P(NastyNamesTest, IsWrittenAndRead) {
  const MessagePtr record = Filled();
  const std::string bytes = record->SerializeAsString();
  EXPECT_TRUE(bytes == DynamicTwin(*record)->SerializeAsString())
      << "a dynamic message writes other bytes";

  std::string streamed;
  {
    ::google::protobuf::io::StringOutputStream stream(&streamed);
    EXPECT_TRUE(record->SerializeToZeroCopyStream(&stream));
  }
  EXPECT_TRUE(streamed == bytes) << "a stream is written other bytes";

  const MessagePtr read = New();
  EXPECT_TRUE(read->ParseFromString(bytes));
  EXPECT_TRUE(EqualByReflection(*read, *record));

  // A byte at a time, so that all that has a length is read through the stream's own calls.
  const MessagePtr read_bytewise = New();
  ::google::protobuf::io::ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), 1);
  EXPECT_TRUE(read_bytewise->ParseFromZeroCopyStream(&stream));
  EXPECT_TRUE(EqualByReflection(*read_bytewise, *record));
}

TEST_P(NastyNamesTest, IsMergedAndCleared) {
  const MessagePtr record = Filled(), copy = New();
  copy->MergeFrom(*record);
  EXPECT_TRUE(EqualByReflection(*copy, *record));
  EXPECT_TRUE(copy->IsInitialized());
  copy->Clear();
  EXPECT_TRUE(EqualByReflection(*copy, *New()));
  EXPECT_EQ(copy->SerializePartialAsString(), "");
}

TEST(NastyNamesAccessorsTest, MeanTheField) {
  named::LocalTexts texts;
  texts.set_value("1");
  texts.set_size("2", 1);
  texts.set_from(std::string("3"));
  texts.mutable_output()->assign("4");
  const std::unique_ptr<std::string> released(texts.release_output());
  EXPECT_EQ(*released, "4");
  EXPECT_EQ(texts.ShortDebugString(), R"(from: "3" value: "1" size: "2")");

  named::LocalSingle single;
  single.mutable_message()->set_x(1);
  single.set_allocated_other(new named::Message);
  single.mutable_released();
  delete single.release_released();
  EXPECT_EQ(single.ShortDebugString(), "other { } message { x: 1 }");

  named::LocalLists lists;
  lists.add_tag(5);
  lists.set_tag(0, 6);
  lists.add_index(7);
  EXPECT_EQ(lists.index(0), 7);
  EXPECT_EQ(lists.ShortDebugString(), "tag: 6 index: 7");

  named::OuterLists outer;
  outer.add_total(1);
  outer.add_std(2);
  EXPECT_EQ(outer.total_size(), 1);
  EXPECT_EQ(outer.std(0), 2);
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
