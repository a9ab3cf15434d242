// camodocal: the camera files of VINS and its descendants, with coefficients by their names. A
// settings file of VINS-Mono has in addition where the camera sits relative to the IMU; that of
// VINS-Fusion, where each of the cameras does whose files it names.
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

constexpr char kFrame[] = "the IMU";

// Before the file itself, which knows them as values that belong to a lens.
std::vector<Foreign> MapsOfLens(const Foreign& file) {
  std::vector<Foreign> maps;
  for (const char* key : {"mirror_parameters", "distortion_parameters", "projection_parameters"}) {
    if (const auto map = file.Find({key})) maps.push_back(*map);
  }
  maps.push_back(file);
  return maps;
}

void StoreIntrinsics(const Foreign& file, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const Foreign name = file.At({"model_type"});
  if (SqueezeName(name.Peek()) == "scaramuzza") {
    name.Refuse("is " + name.Spell() + ", of which a record can hold nothing",
                "Calibrate the camera with another model.");
  }
  const Foreign projection = file.At({"projection_parameters"});
  // VINS asks with `fisheye` for a mask over the image, whatever the lens is.
  const LensImport lens(MapsOfLens(file), chosen, "fisheye");
  if (projection.Find({"mu"})) {
    StorePinhole(projection, NumbersOf(projection, {"mu", "mv", "u0", "v0"}), intrinsics);
    lens.Store(projection, NumbersOf(projection, {"k2", "k3", "k4", "k5"}), intrinsics);
  } else {
    const bool mei = projection.Find({"gamma1"}).has_value();
    StorePinhole(projection,
                 mei ? NumbersOf(projection, {"gamma1", "gamma2", "u0", "v0"})
                     : NumbersOf(projection, {"fx", "fy", "cx", "cy"}),
                 intrinsics);
    if (const auto distortion = file.Find({"distortion_parameters"})) {
      lens.StoreNamed(*distortion, intrinsics);
    } else {
      lens.StoreNone();
    }
    const auto mirror = file.Find({"mirror_parameters"});
    const auto xi = mirror ? mirror->Find({"xi"}) : std::nullopt;
    if (xi && xi->IsZero()) xi->Number();
  }
  lens.LoseUnread();
}

std::string PoseKey(int camera) { return "body_T_cam" + std::to_string(camera); }

bool HasModel(const Foreign& file) {
  return file.Has({"model_type"}) && file.Has({"projection_parameters"});
}

// Whether there was one. VINS writes matrices as OpenCV does.
bool StoreImuPose(const Foreign& file, int number, CameraCalibration* camera) {
  const auto pose = file.Find({PoseKey(number)});
  if (!pose) return false;
  StorePose("camodocal", *pose, ReadTransform(*pose), kFrame, camera->mutable_extrinsics());
  return true;
}

void StoreImuVectors(const Foreign& file, CameraCalibration* camera) {
  const auto rotation = file.Find({"extrinsicRotation"});
  const auto translation = file.Find({"extrinsicTranslation"});
  if (!rotation || !translation) return;
  const std::vector<double> r = MatrixData(*rotation, 3, 3, 1);
  const std::vector<double> t = MatrixData(*translation, 3, 1, 1);
  StorePose("camodocal", *rotation,
            RigidTransform::FromRows(
                {r[0], r[1], r[2], t[0], r[3], r[4], r[5], t[1], r[6], r[7], r[8], t[2]}),
            kFrame, camera->mutable_extrinsics());
}

void ImportCamera(const Foreign& file, const LensModel* lens, CameraCalibration* camera) {
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  StoreIntrinsics(file, lens, intrinsics);
  intrinsics->set_width(file.At({"image_width"}).Count());
  intrinsics->set_height(file.At({"image_height"}).Count());
  if (const auto name = file.Find({"camera_name"})) camera->set_name(name->Text());
}

}  // namespace

bool IsCamodocal(const Foreign& file) {
  // Of a pair, the first camera may be the frame of reference.
  return HasModel(file) || file.Has({PoseKey(0), PoseKey(1)});
}

void ImportCamodocal(const std::vector<Foreign>& files, const LensModel* lens,
                     zarvo::calibration::RobotCalibration* robot) {
  const Foreign* poses = nullptr;
  for (const Foreign& file : files) {
    if (files.size() == 1 && !HasModel(file) && IsCamodocal(file)) {
      file.Refuse("has where cameras sit, but no camera", "Name the files of the cameras, too.");
    }
    if (HasModel(file) || files.size() == 1) {
      ImportCamera(file, lens, robot->add_camera());
    } else if (poses == nullptr) {
      poses = &file;
    } else {
      file.Refuse("is a second file that is none of a camera",
                  "Name the files of the cameras, and one that has " + PoseKey(0) + ".");
    }
  }
  if (files.size() == 1) {
    CameraCalibration* camera = robot->mutable_camera(0);
    if (!StoreImuPose(files[0], 0, camera)) StoreImuVectors(files[0], camera);
  }
  for (int i = 0; poses != nullptr && i < robot->camera_size(); ++i) {
    StoreImuPose(*poses, i, robot->mutable_camera(i));
  }
}

}  // namespace calib
