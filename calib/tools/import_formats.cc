#include "calib/tools/import_formats.h"

#include <algorithm>

#include "calib/console/failure.h"

namespace calib {

using zarvo::calibration::RobotCalibration;

namespace {

// Imports from a tool that writes one file.
template <ImportFile* import>
void ImportOne(const std::vector<Foreign>& files, const LensModel* lens, RobotCalibration* robot) {
  if (files.size() > 1) {
    files[1].Refuse("is a second file, but this tool writes one",
                    "Bring them in one by one, and put them together with 'calib merge'.");
  }
  import(files[0], lens, robot);
}

std::string List(const std::vector<const ImportFormat*>& formats) {
  std::string list;
  for (const ImportFormat* format : formats) {
    list += (list.empty() ? "" : ", ") + std::string(format->name) + " (" + format->files + ")";
  }
  return list;
}

}  // namespace

const std::vector<ImportFormat>& ImportFormats() {
  static const std::vector<ImportFormat> formats = {
      {"ros", "ROS camera_info", ImportOne<ImportCameraInfo>, IsCameraInfo, false},
      {"kalibr", "Kalibr or OpenVINS camchain", ImportOne<ImportCamchain>, IsCamchain, true},
      {"opencv", "OpenCV FileStorage", ImportOpenCv, IsOpenCv, false},
      {"euroc", "EuRoC sensor.yaml", ImportOne<ImportEuroc>, IsEuroc, false},
      {"mrcal", "mrcal .cameramodel", ImportOne<ImportMrcal>, IsMrcal, false},
      {"basalt", "Basalt calibration", ImportOne<ImportBasalt>, IsBasalt, true},
      {"colmap", "COLMAP cameras.txt or rig_config.json", ImportOne<ImportColmap>, IsColmap, true},
      {"camodocal", "camodocal (VINS)", ImportCamodocal, IsCamodocal, false},
      {"depthai", "DepthAI calibration", ImportOne<ImportDepthAi>, IsDepthAi, true},
      {"orbslam3", "ORB-SLAM settings", ImportOne<ImportOrbSlam>, IsOrbSlam, false},
      {"nerfstudio", "nerfstudio transforms.json", ImportOne<ImportNerfstudio>, IsNerfstudio,
       false},
      {"mcap", "MCAP recording", ImportOne<ImportMcap>, IsMcap, false},
  };
  return formats;
}

const ImportFormat& FormatOf(const std::string& name, const std::vector<Foreign>& files) {
  std::vector<const ImportFormat*> all, fitting;
  for (const ImportFormat& format : ImportFormats()) {
    all.push_back(&format);
    if (std::all_of(files.begin(), files.end(), format.is_file)) fitting.push_back(&format);
  }
  if (fitting.size() == 1) return *fitting[0];
  if (fitting.empty()) {
    throw Failure(name + ": is of no tool that is known: " + List(all),
                  "If it is of one of them, --from tells what it lacks.");
  }
  throw Failure(name + ": may be of more than one tool: " + List(fitting),
                "Say with --from which it is.");
}

}  // namespace calib
