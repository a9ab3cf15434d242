// ORB-SLAM3 settings: one camera or a stereo pair among the settings of the program, with flat
// keys. Files of ORB-SLAM2 and of the first releases of ORB-SLAM3 call the first camera Camera, and
// its transforms Tbc and Tlr.
#include "calib/tools/conventions.h"
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

constexpr char kFormat[] = "orbslam3";
const std::string kSecond = "Camera2.";

bool IsNew(const Foreign& file) { return file.Has({"Camera1.fx"}); }

bool IsRectified(const Foreign& file) {
  const auto type = file.Find({"Camera.type"});
  return type && type->Peek() == "Rectified";
}

// The images of rectified cameras have no distortion, whatever their lenses had.
void StoreIntrinsics(const Foreign& file, const std::string& prefix, const LensModel* chosen,
                     CameraIntrinsics* intrinsics) {
  const LensImport lens({file}, chosen);
  StorePinhole(file.At({prefix + "fx"}),
               NumbersOf(file, {prefix + "fx", prefix + "fy", prefix + "cx", prefix + "cy"}),
               intrinsics);
  if (IsRectified(file)) {
    file.At({"Camera.type"}).Text();
  } else {
    lens.StoreNamed(file, intrinsics, prefix);
  }
  lens.LoseUnread();
  if (const auto width = file.Find({"Camera.width"})) intrinsics->set_width(width->Count());
  if (const auto height = file.Find({"Camera.height"})) intrinsics->set_height(height->Count());
}

// Tlr has three rows.
RigidTransform ReadPose(const Foreign& value) {
  if (!value.IsMap() || value.At({"rows"}).Peek() != "3") return ReadTransform(value);
  return RigidTransform::FromRows(MatrixData(value, 3, 4, 1));
}

// Stores where the second camera sits: relative to the IMU if the first does, else to the first.
void StorePairPose(const Foreign& pose, const RigidTransform& second_to_first,
                   const CameraExtrinsics& first, CameraExtrinsics* second) {
  CheckRigid(pose, second_to_first);
  const bool chained = first.a_size() > 0;
  RigidTransform to_second =
      ConventionsOf(kFormat).ToRecord(Conventions::Direction::kFromCamera, second_to_first);
  if (chained) {
    to_second = to_second * RigidTransform::FromRows({first.a().begin(), first.a().end()});
  }
  for (const double element : to_second.Rows()) second->add_a(element + 0.0);  // no -0
  pose.Convert(
      std::string("maps from the second camera to the first; kept inverted, as extrinsics ") +
      (chained ? "from where those of the first do to the second"
               : "from the first camera to the second"));
}

// The second camera, if there is one: a rectified pair has the same twice, with a distance between.
void ImportSecond(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  const auto pose = file.Find({"Stereo.T_c1_c2", "Tlr"});
  const auto distance = IsRectified(file) ? file.Find({"Stereo.b"}) : std::nullopt;
  if (!file.Find({kSecond + "fx"}) && !distance) return;
  CameraCalibration* camera = robot->add_camera();
  const CameraCalibration& first = robot->camera(0);
  RigidTransform second_to_first;
  if (distance) {
    *camera->mutable_intrinsics() = first.intrinsics();
    second_to_first.t[0] = distance->Number();
  } else {
    StoreIntrinsics(file, kSecond, lens, camera->mutable_intrinsics());
    if (!pose) return;
    second_to_first = ReadPose(*pose);
  }
  StorePairPose(distance ? *distance : *pose, second_to_first, first.extrinsics(),
                camera->mutable_extrinsics());
}

}  // namespace

bool IsOrbSlam(const Foreign& file) { return IsNew(file) || file.Has({"Camera.fx"}); }

void ImportOrbSlam(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  CameraCalibration* camera = robot->add_camera();
  const auto type = file.Find({"Camera.type"});
  if (type && !IsRectified(file) && FindLensModel(type->Peek()) == nullptr) {
    type->Lose("is " + type->Spell() + ", no lens model that a record can hold");
  }
  StoreIntrinsics(file, IsNew(file) ? "Camera1." : "Camera.", lens, camera->mutable_intrinsics());
  if (const auto version = file.Find({"File.version"})) version->Text();
  if (const auto pose = file.Find({"IMU.T_b_c1", "Tbc"})) {
    StorePose(kFormat, *pose, ReadPose(*pose), "the IMU", camera->mutable_extrinsics());
  }
  ImportSecond(file, lens, robot);
}

}  // namespace calib
