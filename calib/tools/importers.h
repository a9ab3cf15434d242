// The importers. Each reads the files of another tool into cameras, leaves in the files what it did
// not keep (Foreign::ForEachLeftover()), and throws Failure where a file is not what that tool
// writes. `lens` is the model that the user says where a file leaves it open, or nullptr.
// docs/calib-import.md has the mapping.
#ifndef CALIB_TOOLS_IMPORTERS_H_
#define CALIB_TOOLS_IMPORTERS_H_

#include <string>
#include <vector>

#include "calib/tools/foreign.h"
#include "calib/tools/leftovers.h"
#include "calib/tools/lens_models.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using ImportFile = void(const Foreign& file, const LensModel* lens,
                        zarvo::calibration::RobotCalibration* robot);
ImportFile ImportBasalt, ImportCamchain, ImportCameraInfo, ImportCameraInfoIni, ImportColmap,
    ImportDepthAi, ImportEuroc, ImportMcap, ImportMrcal, ImportNerfstudio, ImportOrbSlam;
// Reads the files of cameras, and one with where these sit.
void ImportCamodocal(const std::vector<Foreign>& files, const LensModel* lens,
                     zarvo::calibration::RobotCalibration* robot);
// Reads one file, or the two of a stereo calibration.
void ImportOpenCv(const std::vector<Foreign>& files, const LensModel* lens,
                  zarvo::calibration::RobotCalibration* robot);

// Whether a file has what one of that tool is told by, though it may not be whole.
using IsFile = bool(const Foreign& file);
IsFile IsBasalt, IsCamchain, IsCameraInfo, IsCameraInfoIni, IsCamodocal, IsColmap, IsDepthAi,
    IsEuroc, IsMcap, IsMrcal, IsNerfstudio, IsOpenCv, IsOrbSlam;

// The cameras that were read from the file `name`, or the only one of them, as a record of the type
// `type`. Visits what that type does not hold.
const google::protobuf::Message& ImportedRecord(const std::string& name,
                                                const google::protobuf::Descriptor* type,
                                                const zarvo::calibration::RobotCalibration& robot,
                                                const LeftoverVisitor& visit);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORTERS_H_
