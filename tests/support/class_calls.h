// Calls on a record's own class, for tests that hold the record as a Message.
#ifndef CALIBRATION_TESTS_SUPPORT_CLASS_CALLS_H_
#define CALIBRATION_TESTS_SUPPORT_CLASS_CALLS_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/entrances.h"
#include "tests/support/records.h"

namespace zarvo {
namespace calibration {
namespace testing {

// T::MergePartialFromCodedStream, T being the record's class.
// REQUIRES: the record is of one of the table's classes.
inline bool MergeOnClass(::google::protobuf::Message* record,
                         ::google::protobuf::io::CodedInputStream* input) {
  using Merge = bool (*)(::google::protobuf::Message*, ::google::protobuf::io::CodedInputStream*);
  static const std::vector<Merge> merges = [] {
    std::vector<Merge> all;
    ForEachRecord([&all](auto type) {
      using T = typename decltype(type)::Type;
      all.push_back(
          [](::google::protobuf::Message* m, ::google::protobuf::io::CodedInputStream* stream) {
            return static_cast<T*>(m)->MergePartialFromCodedStream(stream);
          });
    });
    return all;
  }();
  return merges[record->GetDescriptor()->index()](record, input);
}

// Merges the bytes, all of them, on the record's class: from one buffer if `block` is 0, else from
// a stream that hands over so many bytes at a time.
inline bool MergeOnClass(::google::protobuf::Message* record, const std::string& bytes,
                         int block = 0) {
  const int size = static_cast<int>(bytes.size());
  if (block == 0) {
    ::google::protobuf::io::CodedInputStream input(reinterpret_cast<const uint8_t*>(bytes.data()),
                                                   size);
    return MergeOnClass(record, &input) && input.ConsumedEntireMessage();
  }
  ::google::protobuf::io::ArrayInputStream stream(bytes.data(), size, block);
  ::google::protobuf::io::CodedInputStream input(&stream);
  return MergeOnClass(record, &input) && input.ConsumedEntireMessage();
}

// The table of calls on the class of that name.
inline std::vector<Entrance> ConcreteEntrances(const std::string& name) {
  std::vector<Entrance> table;
  ForEachRecord([&](auto type) {
    using T = typename decltype(type)::Type;
    if (T::descriptor()->name() == name) table = ConcreteEntrances<T>();
  });
  return table;
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_CLASS_CALLS_H_
