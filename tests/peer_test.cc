// The records against the classes that the run-time's own schema compiler makes of the same schema
// (see cmake/PeerClasses.cmake). Each side reads what the other wrote, and writes the same bytes.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <typeinfo>

#include "peer/calibration.pb.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Descriptor;
using ::google::protobuf::Message;
using ::google::protobuf::MessageFactory;

constexpr uint32_t kSeeds = 100;

// The peer's class of the same name, or null.
std::unique_ptr<Message> NewPeer(const std::string& name) {
  const Descriptor* descriptor =
      ::peer::calibration::RobotCalibration::descriptor()->file()->FindMessageTypeByName(name);
  if (descriptor == nullptr) return nullptr;
  return std::unique_ptr<Message>(
      MessageFactory::generated_factory()->GetPrototype(descriptor)->New());
}

// Each holds what the other does, and writes it alike.
void ExpectAlike(const Message& record, const Message& peer) {
  EXPECT_EQ(record.DebugString(), peer.DebugString());
  const std::string bytes = peer.SerializePartialAsString();
  EXPECT_TRUE(record.SerializePartialAsString() == bytes);
  EXPECT_EQ(record.ByteSizeLong(), bytes.size());
  EXPECT_EQ(record.IsInitialized(), peer.IsInitialized());
  EXPECT_EQ(record.InitializationErrorString(), peer.InitializationErrorString());
}

TEST(PeerTest, EachReadsWhatTheOtherWrote) {
  ::google::protobuf::LogSilencer no_remarks_on_utf8;
  for (const RecordType& type : RecordTypes()) {
    for (uint32_t seed = 0; seed < kSeeds; ++seed) {
      SCOPED_TRACE(type.name + ", seed " + std::to_string(seed));
      std::mt19937 random(seed);
      RandomOptions options;
      options.percent_set = seed % 2 == 0 ? kSparse : kDense;
      options.always_required = seed % 5 != 0;

      const std::unique_ptr<Message> record = type.make();
      const std::unique_ptr<Message> peer = NewPeer(type.name);
      ASSERT_NE(peer, nullptr) << "the peer has no such class";
      const std::unique_ptr<Message> dynamic = NewDynamic(peer->GetDescriptor());
      const Message& made = *peer;
      const Message& loose = *dynamic;
      ASSERT_TRUE(typeid(made) != typeid(loose)) << "the peer has no class of its own";
      FillRandomly(&random, options, record.get());
      EXPECT_TRUE(peer->ParsePartialFromString(record->SerializePartialAsString()));
      ExpectAlike(*record, *peer);

      const std::unique_ptr<Message> other_peer = NewPeer(type.name);
      const std::unique_ptr<Message> other_record = type.make();
      FillRandomly(&random, options, other_peer.get());
      EXPECT_TRUE(other_record->ParsePartialFromString(other_peer->SerializePartialAsString()));
      ExpectAlike(*other_record, *other_peer);

      // The bytes of two records are those of the two merged.
      const std::string both =
          record->SerializePartialAsString() + other_record->SerializePartialAsString();
      record->MergeFrom(*other_record);
      peer->MergeFrom(*other_peer);
      ExpectAlike(*record, *peer);
      EXPECT_TRUE(other_record->ParsePartialFromString(both));
      EXPECT_TRUE(other_peer->ParsePartialFromString(both));
      ExpectAlike(*other_record, *other_peer);
      EXPECT_TRUE(EqualByReflection(*record, *other_record));
      if (HasFailure()) return;
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
