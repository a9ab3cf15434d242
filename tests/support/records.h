// The record classes, once as types and once as a run-time table.
//
//   TYPED_TEST_SUITE(CopyTest, AllRecords);                       one test a class
//   ForEachRecord([](auto record) { using T = typename decltype(record)::Type; ... });
//   std::unique_ptr<Message> m = NewRecord("CameraIntrinsics");
#ifndef CALIBRATION_TESTS_SUPPORT_RECORDS_H_
#define CALIBRATION_TESTS_SUPPORT_RECORDS_H_

#include <google/protobuf/generated_message_util.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace testing {

namespace internal {
template <class Nothing, class... T>
struct TypesBehind {
  using Types = ::testing::Types<T...>;
};
}  // namespace internal

// In file order.
using AllRecords = internal::TypesBehind<void
#define MESSAGE(Class) , Class
#include "tests/support/schema.def"
                                         >::Types;

// Stands for a class in calls that choose code by type.
template <class T>
struct RecordOf {
  using Type = T;
};

namespace internal {
template <class F, class... T>
void ForEachOf(::testing::Types<T...>, F f) {
  (f(RecordOf<T>()), ...);
}
}  // namespace internal

// Calls f(RecordOf<T>()) for every class T, in file order.
template <class F>
void ForEachRecord(F f) {
  internal::ForEachOf(AllRecords(), f);
}

struct RecordType {
  std::string name;
  std::unique_ptr<::google::protobuf::Message> (*make)();
  const ::google::protobuf::Message& (*default_instance)();
};

inline const std::vector<RecordType>& RecordTypes() {
  static const std::vector<RecordType> types = [] {
    std::vector<RecordType> all;
    ForEachRecord([&all](auto record) {
      using T = typename decltype(record)::Type;
      all.push_back({T::descriptor()->name(),
                     []() -> std::unique_ptr<::google::protobuf::Message> {
                       return std::unique_ptr<::google::protobuf::Message>(new T);
                     },
                     []() -> const ::google::protobuf::Message& { return T::default_instance(); }});
    });
    return all;
  }();
  return types;
}

// REQUIRES: a record of that name exists.
inline std::unique_ptr<::google::protobuf::Message> NewRecord(const std::string& name) {
  for (const RecordType& type : RecordTypes()) {
    if (type.name == name) return type.make();
  }
  std::cerr << "records: no record named '" << name << "'\n";
  std::abort();
}

// A record in memory that was all zero before, so that its bytes can be compared, padding included.
template <class T>
class OnZeroedMemory {
 public:
  OnZeroedMemory() : record_(new (memory_) T) {}
  ~OnZeroedMemory() { record_->~T(); }
  OnZeroedMemory(const OnZeroedMemory&) = delete;
  OnZeroedMemory& operator=(const OnZeroedMemory&) = delete;

  T* record() { return record_; }
  std::string bytes() const {
    return std::string(reinterpret_cast<const char*>(record_), sizeof(T));
  }

 private:
  alignas(T) char memory_[sizeof(T)] = {};
  T* const record_;
};

// The presence bits as they stand in the object: one word behind the virtual-table pointer and the
// metadata word, in every record.
inline uint32_t HasBits(const ::google::protobuf::Message& record) {
  uint32_t bits;
  std::memcpy(&bits, reinterpret_cast<const char*>(&record) + 2 * sizeof(void*), sizeof bits);
  return bits;
}

// What the text fields of an empty record refer to, all of them.
inline const std::string* SharedEmptyString() {
  return &::google::protobuf::internal::GetEmptyStringAlreadyInited();
}

// A number's bytes as they stand in memory, to compare values bit for bit.
template <class V>
std::string BytesOf(const V& value) {
  static_assert(std::is_arithmetic<V>::value, "not a number");
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_RECORDS_H_
