// calib export --to TOOL FILE
#include <unistd.h>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/field_path.h"
#include "calib/fields/parts.h"
#include "calib/formats/record_reader.h"
#include "calib/tools/export_files.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/exporters.h"
#include "calib/tools/leftovers.h"
#include "calib/tools/lens_flag.h"

namespace calib {
namespace {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

struct Flags {
  std::string path, format, folder, projection_path;
  std::string output_path = "-";
  std::string extrinsics = "to-camera";
  ExportOptions options;
  InputFlags input;
  CameraFlag camera;
  LensFlag lens;
  LeftoverFlags leftovers;
};

std::vector<std::string> ExportFormats() {
  std::vector<std::string> names;
  for (const Exporter& exporter : Exporters()) names.push_back(exporter.format);
  return names;
}

// The cameras of the record, or the one that --camera names. A record of intrinsics becomes `own`.
std::vector<CameraInRecord> Cameras(const Record& record, const Flags& flags,
                                    CameraCalibration* own) {
  const std::string file = record.name + ":";
  const std::vector<Part> parts =
      flags.camera.Choose(*record.message, record.name, {CameraCalibration::descriptor()});
  if (record.type == CameraIntrinsics::descriptor()) {
    own->mutable_intrinsics()->CopyFrom(*record.message);
    return {{own, file, file}};
  }
  std::vector<CameraInRecord> cameras;
  cameras.reserve(parts.size());
  for (const Part& part : parts) {
    cameras.push_back({static_cast<const CameraCalibration*>(part.message),
                       file + (part.path.empty() ? "" : " " + part.path),
                       file + " " + JoinPath(part.path, "intrinsics")});
  }
  if (!cameras.empty()) return cameras;
  throw Failure(record.name + ": has no CameraCalibration",
                "Name a record of a camera; 'calib show' shows what is in this one.");
}

// That so many cameras can be written, and to one file if no folder is named.
void CheckNumber(const Record& record, const Flags& flags, const Exporter& exporter,
                 size_t cameras) {
  CheckCameraCount(exporter, record.name, cameras);
  const std::string found =
      record.name + ": has " + std::to_string(cameras) + (cameras == 1 ? " camera" : " cameras");
  if (exporter.file_a_camera && cameras > 1 && flags.folder.empty()) {
    throw Failure(found, "Say which one with --camera N, or write them all with --output-dir DIR.");
  }
  if (cameras == 1) return;
  for (const auto& [option, given] :
       {std::pair("--name", !flags.options.name.empty()),
        std::pair("--projection-from", !flags.projection_path.empty())}) {
    if (given) throw Failure(found + ", and " + option + " is for one", "Say which with --camera.");
  }
}

void Tell(const Record& record, const Flags& flags, const ExportRig& rig,
          const ExportReport& report) {
  TellLeftovers(record.name, flags.leftovers, [&](const LeftoverVisitor& visit) {
    for (const Leftover& leftover : report.leftovers) visit(leftover);
  });
  for (const ExportCamera& camera : rig.cameras) {
    if (rig.options.lens != nullptr || camera.form == nullptr) break;
    const std::string& place = camera.intrinsics_place;
    Note(WithColon(place) + " " + CoefficientCounts(camera.intrinsics()) + " are written as " +
         (camera.form->word.empty() ? camera.form->lens : camera.form->word));
  }
  for (const std::string& note : report.notes) Note(record.name + ": " + note);
}

// That there is a place for each file.
void CheckNumber(const Flags& flags, const Record& record, const std::vector<ExportedFile>& files) {
  if (!flags.folder.empty() || files.size() == 1) return;
  throw Failure(record.name + ": becomes " + std::to_string(files.size()) + " files",
                "Name a folder for them with --output-dir DIR.");
}

void WriteAll(const Flags& flags, const std::vector<ExportedFile>& files) {
  if (!flags.folder.empty()) return WriteToFolder(flags.folder, files);
  const bool binary = files[0].text.find('\0') != std::string::npos;
  if (binary && flags.output_path == "-" && isatty(STDOUT_FILENO) != 0) {
    throw Failure("standard output: is a terminal, which cannot show a binary file",
                  "Name a file with --output.");
  }
  WriteFile(flags.output_path, files[0].text);
}

void Export(const Flags& flags) {
  const Exporter& exporter = *FindExporter(flags.format);
  const Record record = ReadRecord(flags.path, flags.input);
  CameraCalibration own;
  const std::vector<CameraInRecord> cameras = Cameras(record, flags, &own);
  CheckNumber(record, flags, exporter, cameras.size());
  ExportOptions options = flags.options;
  options.lens = flags.lens.model();
  options.from_camera = flags.extrinsics == "from-camera";
  options.folder = !flags.folder.empty();
  if (!flags.projection_path.empty()) {
    if (!exporter.has_projection) {
      throw Failure("--projection-from is for ros and mcap, the formats that have a projection",
                    "Leave it out.");
    }
    TakeProjection(
        Foreign::Parse(InputName(flags.projection_path), ReadFile(flags.projection_path)),
        cameras[0], &options);
  }
  if (!options.frame.empty() && !exporter.lenses.empty()) {
    throw Failure("--frame is for tf and urdf, and " + exporter.format + " names no frame",
                  "Leave it out.");
  }
  ExportReport report;
  ExportRig rig = PrepareRig(exporter, cameras, options, &report);
  rig.record = flags.camera.camera.empty() ? record.message.get() : cameras[0].camera;
  const std::vector<ExportedFile> files = exporter.write(rig, &report);
  CheckNumber(flags, record, files);
  CheckFileNames(record.name, files);
  TellTransforms(rig, files, &report);
  Tell(record, flags, rig, report);
  WriteAll(flags, files);
}

// A size in pixels.
void AddSize(Command* command, const std::string& name, int* value,
             const std::string& description) {
  command->AddOption(name, *value, description)->Check(CountFromOne())->ValueName("N");
}

}  // namespace

void AddExport(Command* program, int* status) {
  Command* command = program->AddCommand("export", "Writes cameras for other tools");
  const auto flags = std::make_shared<Flags>();
  AddChoice(command, "--to", &flags->format, ExportFormats(), "What is to read the files")
      ->Required();
  command->AddOption("FILE", flags->path, "The file to read")->Required();
  Option* output =
      command->AddOption("--output", flags->output_path, "The file to write; else standard output")
          ->ValueName("OUT");
  command
      ->AddOption("--output-dir", flags->folder,
                  "The folder to write to, a file for each camera, named after it")
      ->ValueName("DIR")
      ->Excludes(output);
  flags->input.AddTo(command);
  flags->camera.AddTo(command);
  flags->lens.AddTo(command,
                    "What k and p mean; auto goes by their numbers: 4 k and no p are equidistant, "
                    "else plumb_bob or rational_polynomial");
  AddChoice(command, "--extrinsics", &flags->extrinsics, {"to-camera", "from-camera"},
            "What the record's extrinsics map: points of the rig to the camera's frame, or back");
  AddSize(command, "--width", &flags->options.width,
          "Width of the image, where the record has none");
  AddSize(command, "--height", &flags->options.height,
          "Height of the image, where the record has none");
  command->AddOption("--name", flags->options.name, "Name of the camera, where it has none");
  command
      ->AddOption("--projection-from", flags->projection_path,
                  "Of ros and mcap: a camera_info whose rectification and projection to take over")
      ->ValueName("FILE");
  command
      ->AddOption("--frame", flags->options.frame,
                  "Of tf and urdf: what the frame of reference is called; else rig")
      ->ValueName("NAME");
  flags->leftovers.AddTo(command, true);
  command->Footer(
      "Writes ROS camera_info (ros), Kalibr camchain, OpenCV's files of one camera and of a stereo "
      "pair, ORB-SLAM3 settings, OpenVINS, camodocal (VINS), Basalt, mrcal, COLMAP cameras.txt and "
      "rig_config.json, nerfstudio transforms.json, MCAP with what Foxglove draws, and of the "
      "extrinsics alone ROS's static transforms (tf) and URDF. What a file has no place for is "
      "counted on "
      "standard error, and listed by --verbose; a lens that it cannot hold is refused, and so is "
      "what no camera can have, such as a focal length of 0 or NaN. 'calib convert' writes "
      "JSON.\n\n"
      "Examples:\n"
      "  calib export --to ros --camera cam0 rig.RobotCalibration.binpb\n"
      "  calib export --to kalibr rig.RobotCalibration.binpb --output camchain.yaml\n"
      "  calib export --to opencv rig.RobotCalibration.binpb --output-dir cameras\n"
      "  calib export --to urdf --frame base_link rig.RobotCalibration.binpb\n"
      "  calib export --to ros --distortion-model plumb_bob cam.CameraCalibration.binpb");
  command->Callback([flags, status] {
    Export(*flags);
    *status = kFine;
  });
}

}  // namespace calib
