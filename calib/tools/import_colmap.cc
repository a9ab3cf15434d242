// COLMAP: the list of cameras of a model, cameras.txt, and the cameras of a rig, rig_config.json,
// as programs of today and of the 3.8 release write it.
#include <map>

#include "calib/console/number.h"
#include "calib/tools/colmap_models.h"
#include "calib/tools/conventions.h"
#include "calib/tools/import_common.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

constexpr size_t kFisheyeCoefficients = 4;

std::string KnownModels() {
  std::string names;
  for (const ColmapModel& model : ColmapModels()) {
    names += (names.empty() ? "" : ", ") + model.name;
  }
  return names;
}

std::map<std::string, double> Parameters(const Foreign& list, const ColmapModel& model) {
  const std::vector<double> numbers = list.Numbers();
  if (numbers.size() != model.parameters.size()) {
    list.Refuse("has " + std::to_string(numbers.size()) + " parameters, but " + model.name +
                    " takes " + std::to_string(model.parameters.size()),
                "Check which of the two is wrong, and correct it.");
  }
  std::map<std::string, double> parameters;
  for (size_t i = 0; i < numbers.size(); ++i) parameters[model.parameters[i]] = numbers[i];
  return parameters;
}

// Takes those of the names out, up to the first that is not there.
std::vector<double> Take(const std::vector<std::string>& names,
                         std::map<std::string, double>* parameters) {
  std::vector<double> taken;
  for (const std::string& name : names) {
    const auto found = parameters->find(name);
    if (found == parameters->end()) break;
    taken.push_back(found->second);
    parameters->erase(found);
  }
  return taken;
}

void StoreIntrinsics(const Foreign& name, const Foreign& list, const LensModel* chosen,
                     CameraIntrinsics* intrinsics) {
  const ColmapModel* model = FindColmapModel(name.Text());
  if (model == nullptr) {
    name.Refuse("is " + name.Spell() + ", a camera model that is not known",
                "Known are " + KnownModels() + ".");
  }
  const LensModel* lens = FindLensModel(model->fisheye ? "equidistant" : "plumb_bob");
  if (chosen != nullptr && chosen->order != lens->order) {
    name.Refuse("is " + name.Spell() + ", but --distortion-model says " + chosen->name,
                "Correct it there if it is wrong, else leave the option out.");
  }
  std::map<std::string, double> parameters = Parameters(list, *model);
  std::vector<double> focal = Take({"fx", "fy"}, &parameters);
  if (focal.empty()) {
    focal = Take({"f"}, &parameters);
    focal.push_back(focal[0]);
  }
  const std::vector<double> centre = Take({"cx", "cy"}, &parameters);
  const Conventions& conventions = ConventionsOf("colmap");
  StorePinhole(list,
               {focal[0], focal[1], conventions.PixelToRecord(centre[0]),
                conventions.PixelToRecord(centre[1])},
               intrinsics);
  list.Convert("cx and cy are kept less 0.5, since a record counts from the first pixel's centre");
  std::vector<double> k = Take({"k1", "k2", "k3", "k4", "k5", "k6"}, &parameters);
  if (model->fisheye) k.resize(kFisheyeCoefficients);
  for (const double number : k) intrinsics->add_k(number);
  if (!model->fisheye) {
    for (const double number : Take({"p1", "p2"}, &parameters)) intrinsics->add_p(number);
  }
  std::string lost;
  for (const auto& [parameter, value] : parameters) {
    if (value == 0) continue;
    lost += (lost.empty() ? "" : " and ") + parameter + " is " + Shortest(value);
  }
  if (!lost.empty()) list.Lose(lost + ", of " + model->name + ", which no field of a record holds");
}

// Of a rig's camera; the rotation is a quaternion w, x, y, z.
void StoreRigPose(const Foreign& camera, CameraCalibration* calibration) {
  const auto rotation = camera.Find({"cam_from_rig_rotation", "rel_qvec"});
  const auto translation = camera.Find({"cam_from_rig_translation", "rel_tvec"});
  if (!rotation || !translation) return;
  const std::vector<double> q = rotation->Numbers();
  if (q.size() != 4) {
    rotation->Refuse("has " + std::to_string(q.size()) + " numbers, expected 4: w, x, y, z",
                     "Correct it there.");
  }
  StorePose("colmap-rig", *rotation,
            FromQuaternion(*rotation, {q[0], q[1], q[2], q[3]}, Three(*translation)), "the rig",
            calibration->mutable_extrinsics());
}

void ImportRig(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  const std::vector<Foreign> rigs = file.Elements();
  if (rigs.size() != 1) {
    file.Refuse("has " + std::to_string(rigs.size()) + " rigs, expected one",
                "A record holds the cameras of one robot: make a file of each.");
  }
  for (const Foreign& camera : rigs[0].At({"cameras"}).Elements()) {
    CameraCalibration* calibration = robot->add_camera();
    const Foreign name = camera.At({"image_prefix"});
    std::string folder = name.Text();
    if (!folder.empty() && folder.back() == '/') folder.pop_back();
    calibration->set_name(folder);
    if (const auto reference = camera.Find({"ref_sensor"})) reference->Text();
    const auto model = camera.Find({"camera_model_name"});
    const auto parameters = camera.Find({"camera_params"});
    if (model && parameters) {
      StoreIntrinsics(*model, *parameters, lens, calibration->mutable_intrinsics());
    }
    StoreRigPose(camera, calibration);
  }
}

bool IsCameraEntry(const Foreign& value) {
  return value.Has({"camera_params"}) && value.Has({"camera_id"});
}

}  // namespace

bool IsColmap(const Foreign& file) {
  bool found = false;
  if (file.IsList()) {
    for (const Foreign& rig : file.Elements()) found = found || rig.Has({"cameras"});
  } else if (file.IsMap()) {
    file.ForEachEntry(
        [&](const std::string&, const Foreign& value) { found = found || IsCameraEntry(value); });
  }
  return found;
}

void ImportColmap(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  if (file.IsList()) return ImportRig(file, lens, robot);
  file.ForEachEntry([&](const std::string& key, const Foreign& camera) {
    if (!IsCameraEntry(camera)) return;
    CameraCalibration* calibration = robot->add_camera();
    CameraIntrinsics* intrinsics = calibration->mutable_intrinsics();
    camera.At({"camera_id"}).Text();
    calibration->set_name(key);
    StoreIntrinsics(camera.At({"camera_model_name"}), camera.At({"camera_params"}), lens,
                    intrinsics);
    intrinsics->set_width(camera.At({"width"}).Count());
    intrinsics->set_height(camera.At({"height"}).Count());
  });
  if (robot->camera_size() == 0) {
    file.Refuse("has no line of a camera", "Check that --from names the tool that wrote the file.");
  }
}

}  // namespace calib
