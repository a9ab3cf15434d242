// The importers. Each reads the files of another tool into cameras, says on standard error what it
// did not keep, and throws Failure where the file is not what that tool writes.
// docs/calib-import.md has the mapping.
#ifndef CALIB_TOOLS_IMPORTERS_H_
#define CALIB_TOOLS_IMPORTERS_H_

#include <string>
#include <vector>

#include "calib/tools/foreign.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

void ImportCameraInfo(const Foreign& file, zarvo::calibration::RobotCalibration* robot);
void ImportCamchain(const Foreign& file, zarvo::calibration::RobotCalibration* robot);
// Reads one file, or the two of a stereo calibration.
void ImportOpenCv(const std::vector<Foreign>& files, zarvo::calibration::RobotCalibration* robot);

// The cameras that were read from the file `name`, or the only one of them, as a record of the type
// `type`. Says on standard error what that type does not hold.
const google::protobuf::Message& ImportedRecord(const std::string& name,
                                                const google::protobuf::Descriptor* type,
                                                const zarvo::calibration::RobotCalibration& robot);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORTERS_H_
