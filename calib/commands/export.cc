// calib export --to TOOL FILE
#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/field_path.h"
#include "calib/fields/parts.h"
#include "calib/formats/record_reader.h"
#include "calib/tools/exporters.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

struct Flags {
  std::string path, tool, model;
  std::string output_path = "-";
  InputFlags input;
  CameraFlag camera;
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

}  // namespace

void AddExport(CLI::App* program, int* status) {
  CLI::App* command = program->add_subcommand("export", "Writes a camera for other tools");
  const auto flags = std::make_shared<Flags>();
  command->add_option("--to", flags->tool, "Format of the output; ros is its camera_info")
      ->check(CLI::Validator(WhyNotTool, ""))
      ->type_name("{ros}")
      ->required();
  command->add_option("FILE", flags->path, "The file to read")->required();
  command->add_option("--output", flags->output_path, "The file to write; else standard output")
      ->type_name("OUT");
  flags->input.AddTo(command);
  flags->camera.AddTo(command);
  AddChoice(command, "--distortion-model", &flags->model,
            {"plumb_bob", "rational_polynomial", "equidistant"}, "What k and p mean");
  command->footer(
      "What camera_info has no key for is named on standard error. Its rectification is the "
      "identity and its projection the camera matrix, as of a camera on its own. 'calib convert' "
      "writes JSON.\n\n"
      "Examples:\n"
      "  calib export --to ros --camera 0 --distortion-model plumb_bob \\\n"
      "    rig.RobotCalibration.binpb");
  command->callback([flags, status] {
    const Record record = ReadRecord(flags->path, flags->input);
    WriteFile(flags->output_path, ToRos(record, *flags));
    *status = kFine;
  });
}

}  // namespace calib
