// nerfstudio transforms.json, and that of instant-ngp: the intrinsics of one camera, and where it
// was for each image, a frame. Frames that have intrinsics of their own are a camera each.
#include <algorithm>

#include "calib/tools/conventions.h"
#include "calib/tools/import_common.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

constexpr char kFormat[] = "nerfstudio";
constexpr size_t kFisheyeCoefficients = 4;

// What the file says of a camera: for all frames, or in one of them.
class Values {
 public:
  Values(const Foreign& file, std::optional<Foreign> frame)
      : file_(file), frame_(std::move(frame)) {}

  std::optional<Foreign> Find(const std::string& key) const {
    const auto common = file_.Find({key});
    const auto own = frame_ ? frame_->Find({key}) : std::nullopt;
    if (common && own) {
      own->Refuse("is there for all frames, too", "Tools differ in which they take: keep one.");
    }
    return common ? common : own;
  }
  Foreign At(const std::string& key) const {
    const auto value = Find(key);
    return value ? *value : file_.At({key});
  }

 private:
  Foreign file_;
  std::optional<Foreign> frame_;
};

bool HasIntrinsics(const Foreign& frame) {
  return frame.Has({"fl_x", "fl_y", "cx", "cy", "w", "h", "k1", "k2", "k3", "k4", "p1", "p2"});
}

// Whether the coefficients are those of a fisheye, whatever says so.
bool IsFisheye(const Values& values, const LensModel* chosen) {
  const auto name = values.Find("camera_model"), flag = values.Find("is_fisheye");
  std::optional<Foreign> told;
  bool fisheye = false;
  if (name) {
    static const std::vector<std::string> perspective = {
        "SIMPLE_PINHOLE", "PINHOLE", "SIMPLE_RADIAL", "RADIAL", "OPENCV", "PERSPECTIVE"};
    told = name;
    const std::string model = name->Text();
    fisheye = model == "OPENCV_FISHEYE";
    if (!fisheye && std::find(perspective.begin(), perspective.end(), model) == perspective.end()) {
      name->Lose("is " + name->Spell() + ", no lens model that a record can hold");
    }
  } else if (flag) {
    told = flag;
    fisheye = flag->Text() == "true";
  } else if (chosen != nullptr) {
    return chosen->order == LensModel::Order::kFisheye;
  }
  if (told && chosen != nullptr && (chosen->order == LensModel::Order::kFisheye) != fisheye) {
    told->Refuse("is " + told->Spell() + ", but --distortion-model says " + chosen->name,
                 "Correct it there if it is wrong, else leave the option out.");
  }
  return fisheye;
}

// Those of the keys, up to the last that is there; others are 0.
std::vector<double> Coefficients(const Values& values, const std::vector<std::string>& keys) {
  std::vector<double> numbers;
  for (size_t i = 0; i < keys.size(); ++i) {
    const auto value = values.Find(keys[i]);
    if (!value) continue;
    numbers.resize(i);
    numbers.push_back(value->Number());
  }
  return numbers;
}

void LoseUnlessZero(const Values& values, const std::vector<std::string>& keys,
                    const std::string& of) {
  for (const std::string& key : keys) {
    const auto value = values.Find(key);
    if (!value || value->Number() == 0) continue;
    value->Lose("is " + value->Spell() + ", of " + of + ", which no field of a record holds");
  }
}

void StoreDistortion(const Values& values, bool fisheye, CameraIntrinsics* intrinsics) {
  std::vector<double> k = Coefficients(values, {"k1", "k2", "k3"}), p;
  if (fisheye) {
    k = Coefficients(values, {"k1", "k2", "k3", "k4"});
    k.resize(kFisheyeCoefficients);
    LoseUnlessZero(values, {"p1", "p2"}, "a fisheye");
  } else {
    p = Coefficients(values, {"p1", "p2"});
    if (!p.empty()) p.resize(2);
    LoseUnlessZero(values, {"k4"}, "a polynomial with r^8");
  }
  for (const double number : k) intrinsics->add_k(number);
  for (const double number : p) intrinsics->add_p(number);
}

void StoreIntrinsics(const Values& values, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const Conventions& conventions = ConventionsOf(kFormat);
  if (const auto angle = values.Find("camera_angle_x"); angle && !values.Find("fl_x")) {
    angle->Refuse("is the angle of view, and there is no fl_x",
                  "Add fl_x and fl_y, w / (2 tan(camera_angle_x / 2)), cx and cy, w and h, where w "
                  "is the width of the images.");
  }
  const Foreign cx = values.At("cx");
  StorePinhole(
      values.At("fl_x"),
      {values.At("fl_x").Number(), values.At("fl_y").Number(),
       conventions.PixelToRecord(cx.Number()), conventions.PixelToRecord(values.At("cy").Number())},
      intrinsics);
  cx.Convert("cx and cy are kept less 0.5, since a record counts from the first pixel's centre");
  StoreDistortion(values, IsFisheye(values, chosen), intrinsics);
  if (const auto width = values.Find("w")) intrinsics->set_width(PixelCount(*width));
  if (const auto height = values.Find("h")) intrinsics->set_height(PixelCount(*height));
}

// A frame that is the only one of its camera: its image is called as the camera is.
void StoreFrame(const Foreign& frame, CameraCalibration* camera) {
  if (const auto path = frame.Find({"file_path"})) {
    const std::string text = path->Text();
    const std::string file = text.substr(text.find_last_of('/') + 1);
    camera->set_name(file.substr(0, file.find_last_of('.')));
  }
  if (const auto pose = frame.Find({"transform_matrix"})) {
    StorePose(kFormat, *pose, ReadTransform(*pose), "the world", camera->mutable_extrinsics());
  }
}

}  // namespace

bool IsNerfstudio(const Foreign& file) {
  if (!file.Has({"frames"}) || !file.At({"frames"}).IsList()) return false;
  const std::vector<Foreign> frames = file.At({"frames"}).Elements();
  return std::any_of(frames.begin(), frames.end(),
                     [](const Foreign& frame) { return frame.Has({"transform_matrix"}); });
}

void ImportNerfstudio(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  const std::vector<Foreign> frames = file.At({"frames"}).Elements();
  if (frames.size() != 1 && std::none_of(frames.begin(), frames.end(), HasIntrinsics)) {
    return StoreIntrinsics({file, {}}, lens, robot->add_camera()->mutable_intrinsics());
  }
  for (const Foreign& frame : frames) {
    CameraCalibration* camera = robot->add_camera();
    StoreIntrinsics({file, frame}, lens, camera->mutable_intrinsics());
    StoreFrame(frame, camera);
  }
}

}  // namespace calib
