// calib transform FILE
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number_rows.h"
#include "calib/fields/rigid_numbers.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"
#include "calib/tools/rig_geometry.h"

namespace calib {
namespace {

using geometry::Transform;

const char* const kCommon = "common";

struct Flags {
  std::string path, output_path, rebase, body, form = "matrix";
  std::vector<std::string> relative;
  bool inverse = false;
  InputFlags input;
  OutputFlags output;
  ExtrinsicsFlags extrinsics;
};

struct Rig {
  std::vector<GivenCamera> cameras;
  std::vector<Transform> transforms;  // from the common frame to each
};

// From the common frame to that of a camera, or to itself.
Transform ToFrame(const Rig& rig, const Record& record, const std::string& name) {
  if (name == kCommon) return {};
  const GivenCamera camera = CameraCalled(*record.message, record.name, name);
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    if (rig.cameras[i].place == camera.place) return rig.transforms[i];
  }
  return {};
}

Transform ReadTransform(const std::string& path) {
  const std::string name = InputName(path);
  const std::vector<NumberRow> rows = NumberRows(name, ReadFile(path), {"r", "r", "r", "t"});
  if (rows.size() != 4) {
    throw Failure(
        name + ": has " + std::to_string(rows.size()) + " rows, expected 4 of a 4x4 matrix",
        "Write its numbers row by row, the last one 0 0 0 1.");
  }
  Transform transform;
  for (size_t i = 0; i < 16; ++i) transform.m[i] = rows[i / 4].numbers[i % 4];
  if (!(geometry::RotationDefect(transform) <= kRotationTolerance)) {
    throw Failure(
        name + ": is no rotation and translation within " + ToDigits(kRotationTolerance, 1),
        "Correct it there.");
  }
  return transform;
}

std::string Spelled(const Transform& transform, const std::string& form) {
  const double* m = transform.m;
  std::string text;
  if (form == "matrix") {
    for (size_t row = 0; row < 4; ++row) {
      text += "  " + NumberLine({m + 4 * row, m + 4 * row + 4});
    }
    return text;
  }
  text = "  translation x y z: " + NumberLine({m[3], m[7], m[11]});
  if (form == "quaternion") {
    const geometry::Quaternion q = geometry::QuaternionOf(transform);
    return text + "  quaternion x y z w: " + NumberLine({q.x, q.y, q.z, q.w});
  }
  const geometry::RollPitchYaw angles = geometry::RollPitchYawOf(transform);
  return text +
         "  roll pitch yaw in radians: " + NumberLine({angles.roll, angles.pitch, angles.yaw});
}

void PrintOne(const Flags& flags, const std::string& from, const std::string& to,
              const Transform& transform) {
  const bool inverse = flags.inverse;
  Print("from " + (inverse ? to : from) + " to " + (inverse ? from : to) + ":\n" +
        Spelled(inverse ? geometry::Invert(transform) : transform, flags.form));
}

void Transforms(const Flags& flags) {
  Record record = ReadRecord(flags.path, flags.input);
  Rig rig;
  rig.cameras = CamerasOf(*record.message, record.name);
  if (MutableCameras(record.message.get()).empty()) {
    throw Failure(record.name + ": has no camera with extrinsics",
                  "Name a RobotCalibration or a CameraCalibration.");
  }
  rig.transforms = RigOf(rig.cameras, record.name, flags.extrinsics);
  if (!flags.relative.empty()) {
    const std::string &from = flags.relative[0], &to = flags.relative[1];
    PrintOne(
        flags, from, to,
        geometry::Compose(ToFrame(rig, record, to), geometry::Invert(ToFrame(rig, record, from))));
    return;
  }
  std::string base = kCommon;
  Transform common_from_base;
  if (!flags.rebase.empty()) {
    base = flags.rebase;
    common_from_base = geometry::Invert(ToFrame(rig, record, base));
  } else if (!flags.body.empty()) {
    base = "body";
    common_from_base = ReadTransform(flags.body);
  }
  std::vector<zarvo::calibration::CameraCalibration*> cameras =
      MutableCameras(record.message.get());
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const bool same = !flags.rebase.empty() && rig.cameras[i].name == flags.rebase;
    const Transform transform =
        same ? Transform() : geometry::Compose(rig.transforms[i], common_from_base);
    if (flags.output_path.empty()) {
      PrintOne(flags, base, rig.cameras[i].name, transform);
      continue;
    }
    StoreTransform(flags.inverse ? geometry::Invert(transform) : transform,
                   cameras[i]->mutable_extrinsics());
  }
  if (flags.output_path.empty()) return;
  WriteRecord(flags.output_path, *record.message, flags.output);
  Note(OutputName(flags.output_path) + ": extrinsics are written " +
       (flags.inverse ? "from-camera, from each camera to " : "to-camera, to each camera from ") +
       (base == kCommon  ? "the common frame"
        : base == "body" ? "the body frame"
                         : base));
}

}  // namespace

void AddTransform(Command* program, int* status) {
  Command* command = program->AddCommand("transform", "Inverts, chains and rebases extrinsics");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The record of the cameras")->Required();
  Option* relative =
      command
          ->AddOption("--relative", flags->relative,
                      "Print the transform from the frame of one camera to that of another; "
                      "'common' is the common frame")
          ->Values(2)
          ->ValueName("FROM TO");
  Option* rebase =
      command->AddOption("--rebase", flags->rebase, "Make this camera the common frame")
          ->ValueName("CAMERA");
  command
      ->AddOption(
          "--body", flags->body,
          "Make another frame the common one: the file has the 4x4 matrix from it to that of "
          "now")
      ->ValueName("MATRIX")
      ->Excludes(rebase)
      ->Excludes(relative);
  rebase->Excludes(relative);
  command->AddFlag("--inverse", flags->inverse, "Print or write the inverse: from the cameras");
  AddChoice(command, "--as", &flags->form, {"matrix", "quaternion", "rpy"},
            "Print a 4x4 matrix; or translation and quaternion x y z w, or roll, pitch and yaw");
  command
      ->AddOption("--output", flags->output_path,
                  "Write the record with these extrinsics instead of printing them")
      ->ValueName("OUT")
      ->Excludes(relative);
  flags->input.AddTo(command);
  flags->output.AddTo(command);
  flags->extrinsics.AddTo(command);
  command->Footer(
      "Prints the transform from the common frame to each camera; cameras are called by their "
      "name, "
      "or number from 0. A point p of the one frame is at R p + t in the other. The rotation of "
      "roll, pitch and yaw is Rz(yaw) Ry(pitch) Rx(roll), about fixed axes. Extrinsics that are no "
      "rotation within 1e-4 are refused.\n\n"
      "Examples:\n"
      "  calib transform rig.RobotCalibration.binpb --relative cam0 cam1 --as quaternion\n"
      "  calib transform rig.RobotCalibration.binpb --rebase cam0 \\\n"
      "      --output rebased.RobotCalibration.binpb\n"
      "  calib transform rig.RobotCalibration.binpb --inverse --as rpy");
  command->Callback([flags, status] {
    Transforms(*flags);
    *status = kFine;
  });
}

}  // namespace calib
