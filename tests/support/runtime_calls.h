// Watches the calls by which the library introduces itself to the run-time.
//
// A program that has runtime_calls.cc among its own sources defines these functions of the run-time
// itself: the dynamic loader then gives the program's definitions to the library, they note the
// call, and pass it on. Works from the first instruction of the library's initializer on.
#ifndef CALIBRATION_TESTS_SUPPORT_RUNTIME_CALLS_H_
#define CALIBRATION_TESTS_SUPPORT_RUNTIME_CALLS_H_

#include <atomic>

namespace zarvo {
namespace calibration {
namespace testing {

// Only calls that come from the library count. Zero until the first.
struct RuntimeCalls {
  int steps;  // counts the calls that have a step

  int verify_version;
  int verify_version_step;
  int headers_version;
  int oldest_library_version;
  const char* source_path;

  int add_file;
  int add_file_step;
  const void* file;
  int file_size;

  int on_shutdown;
  int on_shutdown_step;
  void (*shutdown_hook)();

  std::atomic<int> find_file;  // once for each time that reflection is built
  bool lose_file;              // set it, and the library does not find its file
};

extern RuntimeCalls runtime_calls;

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_RUNTIME_CALLS_H_
