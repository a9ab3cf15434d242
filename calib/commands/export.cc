// calib export --to FORMAT FILE
#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/field_path.h"
#include "calib/fields/parts.h"
#include "calib/formats/codec.h"
#include "calib/formats/record.h"
#include "calib/tools/exporters.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

struct Flags {
  std::string path, format, model;
  std::string output_path = "-";
  InputFlags input;
  CameraFlag camera;
};

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

std::string ToRos(const Record& record, const Flags& flags) {
  if (record.type == CameraIntrinsics::descriptor()) {
    CameraCalibration camera;
    camera.mutable_intrinsics()->CopyFrom(*record.message);
    return CameraInfo(camera, record.name + ":", record.name + ":", flags.model);
  }
  const Part part = Only(record, flags, CameraCalibration::descriptor());
  const std::string place = record.name + ":" + (part.path.empty() ? "" : " " + part.path);
  return CameraInfo(static_cast<const CameraCalibration&>(*part.message), place,
                    record.name + ": " + JoinPath(part.path, "intrinsics"), flags.model);
}

std::string ToJson(const Record& record, const Flags& flags) {
  const google::protobuf::Message* message = record.message.get();
  if (flags.camera.number >= 0) {
    message = Only(record, flags, CameraCalibration::descriptor()).message;
  }
  return EncodeFor(OutputName(flags.output_path), Format::kJson, *message);
}

}  // namespace

void AddExport(CLI::App* program, int* status) {
  CLI::App* command = program->add_subcommand("export", "Writes a camera for other tools");
  const auto flags = std::make_shared<Flags>();
  AddChoice(command, "--to", &flags->format, {"ros", "json"},
            "Format of the output; ros is its camera_info")
      ->required();
  command->add_option("FILE", flags->path, "The file to read")->required();
  command->add_option("--output", flags->output_path, "The file to write; else standard output")
      ->type_name("OUT");
  flags->input.AddTo(command);
  flags->camera.AddTo(command);
  AddChoice(command, "--distortion-model", &flags->model,
            {"plumb_bob", "rational_polynomial", "equidistant"}, "What k and p mean, for ros");
  command->footer(
      "What camera_info has no key for is named on standard error. Its rectification is the "
      "identity and its projection the camera matrix, as of a camera on its own.\n\n"
      "Examples:\n"
      "  calib export --to ros --camera 0 --distortion-model plumb_bob \\\n"
      "    rig.RobotCalibration.binpb\n"
      "  calib export --to json rig.RobotCalibration.binpb --output rig.json");
  command->callback([flags, status] {
    const Record record = ReadRecord(flags->path, flags->input);
    WriteFile(flags->output_path,
              flags->format == "ros" ? ToRos(record, *flags) : ToJson(record, *flags));
    *status = kFine;
  });
}

}  // namespace calib
