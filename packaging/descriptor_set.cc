// Writes the schema as a FileDescriptorSet of one file, for programs in other languages.
//
//   descriptor_set OUTPUT
//
// The bytes come from the library itself, so that they are the schema it was built with.

#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>

#include <cstdio>
#include <fstream>

#include "calibration_common/calibration.pb.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: descriptor_set OUTPUT\n");
    return 2;
  }
  google::protobuf::FileDescriptorSet set;
  zarvo::calibration::RobotCalibration::descriptor()->file()->CopyTo(set.add_file());
  std::ofstream output(argv[1], std::ios::binary | std::ios::trunc);
  if (!set.SerializeToOstream(&output) || !output.flush()) {
    std::fprintf(stderr, "descriptor_set: %s: could not be written completely\n", argv[1]);
    return 1;
  }
  return 0;
}
