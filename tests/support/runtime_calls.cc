#include "tests/support/runtime_calls.h"

#include <dlfcn.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/stubs/common.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace testing {

RuntimeCalls runtime_calls;

namespace {

// The library's static initializer runs ahead of this program's: nothing here may need one.
template <class Function>
Function Original(const char* mangled_name) {
  void* const symbol = dlsym(RTLD_NEXT, mangled_name);
  if (symbol == nullptr) {
    std::fprintf(stderr, "runtime_calls: the run-time has no function %s: %s\n", mangled_name,
                 dlerror());
    std::abort();
  }
  return reinterpret_cast<Function>(symbol);
}

// True of the library's code and data.
bool IsInLibrary(const void* address) {
  Dl_info info;
  return dladdr(address, &info) != 0 &&
         std::strstr(info.dli_fname, "libcalibration_protolib") != nullptr;
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

namespace google {
namespace protobuf {

using ::zarvo::calibration::testing::IsInLibrary;
using ::zarvo::calibration::testing::Original;
using ::zarvo::calibration::testing::runtime_calls;

void DescriptorPool::InternalAddGeneratedFile(const void* file, int size) {
  static const auto original = Original<void (*)(const void*, int)>(
      "_ZN6google8protobuf14DescriptorPool24"
      "InternalAddGeneratedFileEPKvi");
  if (IsInLibrary(file)) {
    ++runtime_calls.add_file;
    runtime_calls.add_file_step = ++runtime_calls.steps;
    runtime_calls.file = file;
    runtime_calls.file_size = size;
    // Registration is under way; a call that comes in between must return at once.
    ::zarvo::calibration::protobuf_AddDesc_calibration_5fcommon_2fcalibration_2eproto();
  }
  original(file, size);
}

const FileDescriptor* DescriptorPool::FindFileByName(const std::string& name) const {
  // A member function takes its object as its first argument.
  static const auto original =
      Original<const FileDescriptor* (*)(const DescriptorPool*, const std::string&)>(
          "_ZNK6google8protobuf14DescriptorPool14FindFileByNameERKNSt7__cxx1112basic_stringIcSt11"
          "char_traitsIcESaIcEEE");
  // The run-time looks the file up as well: only the caller tells the two apart.
  if (IsInLibrary(__builtin_return_address(0))) {
    ++runtime_calls.find_file;
    if (runtime_calls.lose_file) return nullptr;
  }
  return original(this, name);
}

namespace internal {

void VerifyVersion(int headers_version, int oldest_library_version, const char* source_path) {
  static const auto original = Original<void (*)(int, int, const char*)>(
      "_ZN6google8protobuf8internal13VerifyVersionEiiPKc");
  if (IsInLibrary(source_path)) {
    ++runtime_calls.verify_version;
    runtime_calls.verify_version_step = ++runtime_calls.steps;
    runtime_calls.headers_version = headers_version;
    runtime_calls.oldest_library_version = oldest_library_version;
    runtime_calls.source_path = source_path;
  }
  original(headers_version, oldest_library_version, source_path);
}

void OnShutdown(void (*hook)()) {
  static const auto original =
      Original<void (*)(void (*)())>("_ZN6google8protobuf8internal10OnShutdownEPFvvE");
  if (IsInLibrary(reinterpret_cast<const void*>(hook))) {
    ++runtime_calls.on_shutdown;
    runtime_calls.on_shutdown_step = ++runtime_calls.steps;
    runtime_calls.shutdown_hook = hook;
  }
  original(hook);
}

}  // namespace internal
}  // namespace protobuf
}  // namespace google
