// Measures what happens once in a process: loading the library of a side, and the first use of
// reflection.
//
//   benchmark_probe SIDE LIBRARY TYPE
//
// loads the shared library and asks for the reflection of the message type with that full name.
// Prints the nanoseconds that each took; under callgrind, dumps the instructions of each under the
// label that benchmark_instructions would use.
#include <dlfcn.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <string>

#include "benchmarks/clock.h"

namespace {

template <class Function>
bool Measure(const std::string& cell, Function function) {
  const std::string label = cell + "/1";
  CALLGRIND_ZERO_STATS;
  const zarvo::calibration::benchmarks::Stopwatch stopwatch;
  CALLGRIND_TOGGLE_COLLECT;
  const bool done = function();
  CALLGRIND_TOGGLE_COLLECT;
  const double nanoseconds = stopwatch.Nanoseconds();
  CALLGRIND_DUMP_STATS_AT(label.c_str());
  std::printf("%s %.0f\n", cell.c_str(), nanoseconds);
  return done;
}

}  // namespace

int main(int argc, char** argv) {
  using ::google::protobuf::Descriptor;
  using ::google::protobuf::DescriptorPool;
  using ::google::protobuf::Message;
  using ::google::protobuf::MessageFactory;
  if (argc != 4) {
    std::fprintf(stderr, "usage: %s SIDE LIBRARY TYPE\n", argv[0]);
    return 2;
  }
  const std::string side = argv[1];
  const std::string type_name = argv[3];
  // The run-time's own descriptors and the clock's overhead are no part of either cell.
  zarvo::calibration::benchmarks::Stopwatch().Nanoseconds();
  DescriptorPool::generated_pool()->FindMessageTypeByName("google.protobuf.DescriptorProto");

  if (!Measure(side + "/library load/-",
               [&] { return dlopen(argv[2], RTLD_NOW | RTLD_LOCAL) != nullptr; })) {
    std::fprintf(stderr, "%s: cannot load %s: %s\n", argv[0], argv[2], dlerror());
    return 1;
  }
  if (!Measure(side + "/first reflection/-", [&] {
        const Descriptor* type = DescriptorPool::generated_pool()->FindMessageTypeByName(type_name);
        if (type == nullptr) return false;
        const Message* prototype = MessageFactory::generated_factory()->GetPrototype(type);
        return prototype != nullptr && prototype->GetReflection() != nullptr;
      })) {
    std::fprintf(stderr, "%s: %s registers no type %s\n", argv[0], argv[2], argv[3]);
    return 1;
  }
  return 0;
}
