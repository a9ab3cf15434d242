// What the commands of calib compute with the cameras of any record, for fuzz targets.
#ifndef FUZZ_CALIB_COMPUTATIONS_H_
#define FUZZ_CALIB_COMPUTATIONS_H_

#include <google/protobuf/message.h>

#include <string>

namespace calib {

// Aborts unless each number is one, or it is told why there is none. Messages call the record
// `file`.
void ComputeWithCameras(const google::protobuf::Message& record, const std::string& file);

// Writes the record as files of every tool. Aborts unless each is written, or refused with a
// reason.
void ExportToAll(const google::protobuf::Message& record, const std::string& file);

}  // namespace calib

#endif  // FUZZ_CALIB_COMPUTATIONS_H_
