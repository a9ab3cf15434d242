// What the fuzz targets share.
//
// A target is one file that defines LLVMFuzzerTestOneInput(). With -DCALIBRATION_FUZZ=ON (clang) it
// becomes a libFuzzer program, see scripts/fuzz; in every other build run_over_files.cc runs it
// over its seeds, as a test. A target that finds a promise broken says so and aborts.
//
// Inputs of the targets that are about records: the first byte chooses the class.
#ifndef CALIBRATION_FUZZ_FUZZER_H_
#define CALIBRATION_FUZZ_FUZZER_H_

#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/support/records.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace zarvo {
namespace calibration {
namespace testing {

// Ends the process unless `holds`. `result` may be a bool or an AssertionResult, which tells more.
inline void Require(bool holds, const std::string& promise) {
  if (holds) return;
  std::cerr << "Broken promise: " << promise << std::endl;
  std::abort();
}
inline void Require(const ::testing::AssertionResult& result, const std::string& promise) {
  Require(static_cast<bool>(result), promise + "\n" + result.message());
}

// The run-time logs what it refuses; a fuzzer would drown in it.
inline void SilenceTheRunTime() {
  static const auto* const silencer = new ::google::protobuf::LogSilencer;
  (void)silencer;
}

struct RecordInput {
  const RecordType& type;
  std::string bytes;
};

// REQUIRES: size > 0.
inline RecordInput TakeRecordInput(const uint8_t* data, size_t size) {
  return {RecordTypes()[data[0] % RecordTypes().size()],
          std::string(reinterpret_cast<const char*>(data) + 1, size - 1)};
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_FUZZ_FUZZER_H_
