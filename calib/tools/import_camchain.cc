// Kalibr camchain: a map of cameras, cam0, cam1 and so on. A camchain-imucam has in addition where
// each camera sits relative to the IMU.
#include <cmath>
#include <cstdint>
#include <limits>

#include "calib/tools/import_common.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

bool IsCameraKey(const std::string& key) {
  return key.size() > 3 && key.compare(0, 3, "cam") == 0 &&
         key.find_first_not_of("0123456789", 3) == std::string::npos;
}

struct Model {
  const char* name;
  size_t numbers_before_fx;
};
constexpr Model kModels[] = {{"pinhole", 0}, {"omni", 1}, {"eucm", 2}, {"ds", 2}};

void StoreProjection(const Foreign& chain, CameraIntrinsics* intrinsics) {
  const Foreign model = chain.At({"camera_model"}), list = chain.At({"intrinsics"});
  const std::string name = model.Text();
  for (const Model& known : kModels) {
    if (name != known.name) continue;
    const std::vector<double> numbers = list.Numbers();
    if (numbers.size() != known.numbers_before_fx + 4) {
      list.Refuse("has " + std::to_string(numbers.size()) + " numbers, but camera_model " + name +
                      " takes " + std::to_string(known.numbers_before_fx + 4),
                  "Check which of the two is wrong, and correct it.");
    }
    model.NotKept("a record does not tell the camera model");
    if (known.numbers_before_fx > 0) {
      list.Remark("the last four are kept, but not those before, which belong to " + name);
    }
    intrinsics->set_fx(numbers[known.numbers_before_fx]);
    intrinsics->set_fy(numbers[known.numbers_before_fx + 1]);
    intrinsics->set_skew(0);
    intrinsics->set_cx(numbers[known.numbers_before_fx + 2]);
    intrinsics->set_cy(numbers[known.numbers_before_fx + 3]);
    return;
  }
  model.Refuse("'" + name + "' is no camera model", "Known are pinhole, omni, eucm and ds.");
}

void StoreNamedDistortion(const Foreign& chain, CameraIntrinsics* intrinsics) {
  const std::optional<Foreign> model = chain.Find({"distortion_model"});
  const std::optional<Foreign> list = chain.Find({"distortion_coeffs"});
  if (!model || !list) return;
  const std::string name = model->Text();
  model->NotKept("a record does not tell the distortion model");
  if (name == "radtan") {
    StoreDistortion(*list, list->Numbers(), CoefficientOrder::kBrown, {4}, intrinsics);
  } else if (name == "equidistant" || name == "equi") {
    StoreDistortion(*list, list->Numbers(), CoefficientOrder::kFisheye, {4}, intrinsics);
  } else if (name == "none") {
    StoreDistortion(*list, list->Numbers(), CoefficientOrder::kFisheye, {0}, intrinsics);
  }  // of others, the coefficients are reported as not kept
}

// A camera has one set of extrinsics. Where it sits relative to the IMU says the same for every
// camera, so it goes first.
void StoreExtrinsics(const Foreign& chain, CameraCalibration* camera) {
  if (const auto imu = chain.Find({"T_cam_imu"})) {
    StoreTransform(*imu, imu->Rows(4, 4), "from the IMU to this camera",
                   camera->mutable_extrinsics());
  } else if (const auto previous = chain.Find({"T_cn_cnm1"})) {
    StoreTransform(*previous, previous->Rows(4, 4), "from the camera before to this one",
                   camera->mutable_extrinsics());
  }
}

bool IsPixelCount(double number) {
  return number >= 1 && number <= std::numeric_limits<int32_t>::max() &&
         number == std::floor(number);
}

void StoreCamera(const Foreign& chain, CameraCalibration* camera) {
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  StoreProjection(chain, intrinsics);
  StoreNamedDistortion(chain, intrinsics);
  const Foreign resolution = chain.At({"resolution"});
  const std::vector<double> size = resolution.Numbers();
  if (size.size() != 2 || !IsPixelCount(size[0]) || !IsPixelCount(size[1])) {
    resolution.Refuse("expected [width, height], two whole numbers from 1", "Correct it there.");
  }
  intrinsics->set_width(static_cast<int32_t>(size[0]));
  intrinsics->set_height(static_cast<int32_t>(size[1]));
  StoreExtrinsics(chain, camera);
}

}  // namespace

void ImportCamchain(const Foreign& file, zarvo::calibration::RobotCalibration* robot) {
  file.ForEachEntry([robot](const std::string& key, const Foreign& chain) {
    if (!IsCameraKey(key)) return;
    CameraCalibration* camera = robot->add_camera();
    camera->set_name(key);
    StoreCamera(chain, camera);
  });
  if (robot->camera_size() == 0) {
    file.Refuse("has no cam0", "Check that --from names the tool that wrote the file.");
  }
}

}  // namespace calib
