// First use of reflection from many threads at once, and records in parallel.
//
// Reflection is built once in a process, so that its first use needs one of its own: the program's
// argument says which call the threads begin with (descriptor, metadata, reflection, prototype, or
// mixed: each thread another), and ctest runs it once for each. Meant for ThreadSanitizer as well.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/runtime_calls.h"
#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Descriptor;
using ::google::protobuf::DescriptorPool;
using ::google::protobuf::Message;
using ::google::protobuf::MessageFactory;
using ::google::protobuf::Reflection;

constexpr int kThreads = 8;

// Runs work(0) to work(kThreads - 1), each in a thread, all let go at the same moment.
void RunTogether(const std::function<void(int)>& work) {
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([i, &waiting, &work] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// What one call tells about a class; the rest is null.
struct Seen {
  const Descriptor* descriptor;
  const Reflection* reflection;
  const Message* prototype;
};

template <class T>
Seen ByDescriptor() {
  return {T::descriptor(), nullptr, nullptr};
}
template <class T>
Seen ByMetadata() {
  const auto metadata = T::default_instance().GetMetadata();
  return {metadata.descriptor, metadata.reflection, nullptr};
}
template <class T>
Seen ByReflection() {
  const T object;
  return {object.GetDescriptor(), object.GetReflection(), nullptr};
}
// Asks by name, so that the library hears of it from the factory and not before.
Seen ByPrototype(int index) {
  const Descriptor* descriptor =
      DescriptorPool::generated_pool()->FindMessageTypeByName(FullName(Schema()[index]));
  return {descriptor, nullptr, MessageFactory::generated_factory()->GetPrototype(descriptor)};
}

const char* const kCalls[] = {"descriptor", "metadata", "reflection", "prototype"};
std::string first_call = "mixed";

// For each class, in file order, the four calls in the order of kCalls.
std::vector<std::vector<std::function<Seen()>>> AllCalls() {
  std::vector<std::vector<std::function<Seen()>>> all;
  ForEachRecord([&all](auto record) {
    using T = typename decltype(record)::Type;
    const int index = static_cast<int>(all.size());
    all.push_back({&ByDescriptor<T>, &ByMetadata<T>, &ByReflection<T>,
                   [index] { return ByPrototype(index); }});
  });
  return all;
}

// Runs first: see the top of the file.
TEST(ConcurrencyTest, FirstUseOfReflection) {
  // Up to here: everything but reflection, which none of it may build.
  RobotCalibration robot;
  for (const double value : {1.0, 2.0}) {
    CameraIntrinsics* intrinsics = robot.add_camera()->mutable_intrinsics();
    intrinsics->set_fx(value);
    intrinsics->set_fy(value);
    intrinsics->set_skew(value);
    intrinsics->set_cx(value);
    intrinsics->set_cy(value);
  }
  RobotCalibration parsed;
  ASSERT_TRUE(parsed.ParseFromString(robot.SerializeAsString()));
  parsed.MergeFrom(robot);
  parsed = robot;
  parsed.Swap(&robot);
  ASSERT_EQ(runtime_calls.find_file, 0) << "reflection has been built before its first use";

  const std::vector<std::vector<std::function<Seen()>>> calls = AllCalls();
  const int call_count = static_cast<int>(std::size(kCalls));
  int begin_with = call_count;
  for (int call = 0; call < call_count; ++call) {
    if (first_call == kCalls[call]) begin_with = call;
  }

  // seen[thread][class][call]; the threads start with different classes.
  std::vector<std::vector<std::vector<Seen>>> seen(
      kThreads, std::vector<std::vector<Seen>>(kMessageCount, std::vector<Seen>(call_count)));
  RunTogether([&](int thread) {
    const int first = begin_with == call_count ? thread : begin_with;
    for (int i = 0; i < call_count; ++i) {
      for (int j = 0; j < kMessageCount; ++j) {
        const int call = (first + i) % call_count;
        const int index = (5 * thread + j) % kMessageCount;
        seen[thread][index][call] = calls[index][call]();
      }
    }
  });

  EXPECT_EQ(runtime_calls.find_file, 1) << "how often reflection was built";
  for (int index = 0; index < kMessageCount; ++index) {
    SCOPED_TRACE(Schema()[index].name);
    const Message& instance = RecordTypes()[index].default_instance();
    for (int thread = 0; thread < kThreads; ++thread) {
      for (int call = 0; call < call_count; ++call) {
        SCOPED_TRACE(kCalls[call]);
        const Seen& one = seen[thread][index][call];
        EXPECT_EQ(one.descriptor, instance.GetDescriptor());
        if (call == 1 || call == 2) {
          EXPECT_NE(one.reflection, nullptr);
          EXPECT_EQ(one.reflection, instance.GetReflection());
        }
        if (call == 3) {
          EXPECT_EQ(one.prototype, &instance);
        }
      }
    }
  }
}

TEST(ConcurrencyTest, RecordsInParallel) {
  std::vector<std::string> encodings;
  for (const MessageRow& message : Schema()) {
    encodings.push_back(FullRecord(message.name)->SerializeAsString());
  }
  std::atomic<int> wrong{0};
  RunTogether([&](int thread) {
    for (int i = 0; i < 3 * kMessageCount; ++i) {
      const int index = (5 * thread + i) % kMessageCount;
      const std::unique_ptr<Message> record = RecordTypes()[index].make();
      if (!record->ParseFromString(encodings[index])) ++wrong;
      if (record->SerializeAsString() != encodings[index]) ++wrong;
      const std::unique_ptr<Message> copy(record->New());
      copy->CopyFrom(*record);
      record->Clear();
      record->MergeFrom(*copy);
      if (!EqualByReflection(*record, *copy)) ++wrong;
      if (record->DebugString() != copy->DebugString()) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(ConcurrencyTest, DefaultInstancesInParallel) {
  std::vector<std::string> texts;
  for (const RecordType& type : RecordTypes()) {
    texts.push_back(type.default_instance().DebugString());
  }
  std::atomic<int> wrong{0};
  RunTogether([&](int thread) {
    for (int i = 0; i < kMessageCount; ++i) {
      const int index = (5 * thread + i) % kMessageCount;
      const Message& instance = RecordTypes()[index].default_instance();
      if (instance.DebugString() != texts[index]) ++wrong;
      const std::unique_ptr<Message> copy(instance.New());
      copy->CopyFrom(instance);
      if (!EqualByReflection(*copy, instance)) ++wrong;
      if (instance.IsInitialized() != copy->IsInitialized()) ++wrong;
    }
    const PTZSystemCalibration& system = PTZSystemCalibration::default_instance();
    if (&system.ptz_camera().pan_tilt().pan_ext() != &CameraExtrinsics::default_instance() ||
        !CameraCalibration::default_instance().intrinsics().x_bin().empty() ||
        BaseCalibrationProto::default_instance().base_length() != 0.7f) {
      ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace

bool SetFirstCall(const std::string& call) {
  first_call = call;
  if (call == "mixed") return true;
  for (const char* known : kCalls) {
    if (call == known) return true;
  }
  return false;
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (argc > 2 || (argc == 2 && !::zarvo::calibration::testing::SetFirstCall(argv[1]))) {
    std::cerr << "usage: concurrency_test [descriptor|metadata|reflection|prototype|mixed]\n";
    return 2;
  }
  const int result = RUN_ALL_TESTS();
  ::google::protobuf::ShutdownProtobufLibrary();
  return result;
}
