// The entry point of every suite: runs the tests, then has the run-time give back what it holds, so
// that a memory checker finds nothing left at the end.
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>

#include "tests/support/reflect.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  ::zarvo::calibration::testing::ForgetDynamicClasses();
  ::google::protobuf::ShutdownProtobufLibrary();
  return result;
}
