// calib export --to TOOL FILE
#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/field_path.h"
#include "calib/fields/parts.h"
#include "calib/formats/record_reader.h"
#include "calib/tools/exporters.h"
#include "calib/tools/leftovers.h"
#include "calib/tools/lens_flag.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

struct Flags {
  std::string path, tool;
  std::string output_path = "-";
  InputFlags input;
  CameraFlag camera;
  LensFlag lens;
  LeftoverFlags leftovers;
};

// What is wrong with the value of --to; "" if it is right.
std::string WhyNotTool(const std::string& tool) {
  if (tool == "ros") return "";
  return "is '" + tool + "', expected ros" +
         (tool == "json" ? "; JSON is what 'calib convert' writes" : "");
}

// The one part of the record that is of the type.
Part Only(const Record& record, const Flags& flags, const Descriptor* type) {
  const std::vector<Part> parts = flags.camera.Choose(*record.message, record.name, {type});
  if (parts.size() == 1) return parts[0];
  if (parts.empty()) {
    throw Failure(record.name + ": has no " + type->name(),
                  "Name a record of a camera; 'calib show' shows what is in this one.");
  }
  throw Failure(record.name + ": has " + std::to_string(parts.size()) + " cameras, from " +
                    parts.front().path + " to " + parts.back().path,
                "Say which one with --camera N.");
}

// `camera_place` and `place` as in exporters.h.
std::string ToRos(const std::string& name, const CameraCalibration& camera,
                  const std::string& camera_place, const std::string& place, const Flags& flags) {
  const LensModel& model = CameraInfoModel(camera.intrinsics(), place, flags.lens.model());
  std::vector<Leftover> leftovers;
  std::string file = CameraInfo(camera, camera_place, place, model,
                                [&](const Leftover& leftover) { leftovers.push_back(leftover); });
  TellLeftovers(name, flags.leftovers, [&](const LeftoverVisitor& visit) {
    for (const Leftover& leftover : leftovers) visit(leftover);
  });
  if (flags.lens.model() == nullptr) {
    Note(place + (place.back() == ':' ? " " : ": ") + CoefficientCounts(camera.intrinsics()) +
         " are written as " + model.name);
  }
  return file;
}

std::string ToRos(const Record& record, const Flags& flags) {
  const std::string file = record.name + ":";
  if (record.type == CameraIntrinsics::descriptor()) {
    CameraCalibration camera;
    camera.mutable_intrinsics()->CopyFrom(*record.message);
    return ToRos(record.name, camera, file, file, flags);
  }
  const Part part = Only(record, flags, CameraCalibration::descriptor());
  return ToRos(record.name, static_cast<const CameraCalibration&>(*part.message),
               file + (part.path.empty() ? "" : " " + part.path),
               file + " " + JoinPath(part.path, "intrinsics"), flags);
}

}  // namespace

void AddExport(Command* program, int* status) {
  Command* command = program->AddCommand("export", "Writes a camera for other tools");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("--to", flags->tool, "Format of the output; ros is its camera_info")
      ->Check(WhyNotTool)
      ->ValueName("{ros}")
      ->Required();
  command->AddOption("FILE", flags->path, "The file to read")->Required();
  command->AddOption("--output", flags->output_path, "The file to write; else standard output")
      ->ValueName("OUT");
  flags->input.AddTo(command);
  flags->camera.AddTo(command);
  flags->lens.AddTo(command,
                    "What k and p mean; auto goes by their numbers: 4 k and no p are equidistant, "
                    "else plumb_bob or rational_polynomial");
  flags->leftovers.AddTo(command, false);
  command->Footer(
      "What camera_info has no key for is counted on standard error, and listed by --verbose. Its "
      "rectification is the identity and its projection the camera matrix, as of a camera on its "
      "own. What no camera can have, such as a focal length of 0 or NaN, is refused. 'calib "
      "convert' writes JSON.\n\n"
      "Examples:\n"
      "  calib export --to ros --camera 0 rig.RobotCalibration.binpb\n"
      "  calib export --to ros --distortion-model plumb_bob cam.CameraCalibration.binpb");
  command->Callback([flags, status] {
    const Record record = ReadRecord(flags->path, flags->input);
    WriteFile(flags->output_path, ToRos(record, *flags));
    *status = kFine;
  });
}

}  // namespace calib
