// calib import [--from TOOL] FILE
#include <algorithm>
#include <filesystem>
#include <string_view>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/mapped_file.h"
#include "calib/formats/names.h"
#include "calib/formats/record_writer.h"
#include "calib/tools/foreign_mcap.h"
#include "calib/tools/import_fit.h"
#include "calib/tools/import_formats.h"
#include "calib/tools/leftovers.h"
#include "calib/tools/lens_flag.h"
#include "calib/tools/mcap_reader.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::RobotCalibration;

constexpr char kAuto[] = "auto";

struct Flags {
  std::vector<std::string> paths, topics;
  std::string source = kAuto, type;
  std::string output_path = "-";
  OutputFlags output;
  LensFlag lens;
  FitFlags fit;
  LeftoverFlags leftovers;
};

const Descriptor* OutputType(const Flags& flags, bool several_cameras) {
  if (!flags.type.empty()) return RecordType(flags.type);
  if (const Descriptor* named = FactsFromName(flags.output_path).type) return named;
  return several_cameras ? RobotCalibration::descriptor() : CameraCalibration::descriptor();
}

// What messages on all files call them.
std::string Names(const std::vector<std::string>& paths) {
  std::string names;
  for (const std::string& path : paths) names += (names.empty() ? "" : ", ") + InputName(path);
  return names;
}

const ImportFormat& Format(const Flags& flags, const std::vector<Foreign>& files) {
  if (flags.source == kAuto) {
    const std::string names = Names(flags.paths);
    const ImportFormat& format = FormatOf(names, files);
    Note(names + ": taken as " + format.files + " (--from " + format.name + ")");
    return format;
  }
  const std::vector<ImportFormat>& formats = ImportFormats();
  return *std::find_if(formats.begin(), formats.end(),
                       [&](const ImportFormat& format) { return format.name == flags.source; });
}

void Fit(const std::vector<Foreign>& files, const ImportFormat& format, const Flags& flags,
         RobotCalibration* robot) {
  if (!MayBeFitted(format.name, files)) {
    throw Failure(
        Names(flags.paths) + ": --fit is for lenses that a record cannot hold, and it has none",
        "Leave --fit out; 'calib convert-lens' turns lenses that a record holds.");
  }
  FitCameras(format.name, files, flags.fit, robot);
}

// A recording may be larger than memory, so a regular file is not read before it is known to be
// none.
Foreign ReadForeign(const std::string& path, const std::vector<std::string>& topics) {
  const std::string name = InputName(path);
  std::error_code error;
  if (path != "-" && std::filesystem::is_regular_file(path, error)) {
    const MappedFile mapped(path);
    const std::string_view bytes(mapped.bytes().data, mapped.bytes().size);
    if (BeginsAsMcap(bytes)) return ReadMcapCameras(name, bytes, topics);
  }
  std::string bytes = ReadFile(path);
  if (BeginsAsMcap(bytes)) return ReadMcapCameras(name, bytes, topics);
  if (!topics.empty()) {
    throw Failure(name + ": does not begin as an MCAP file, which alone has topics",
                  "Leave --topic out.");
  }
  return Foreign::Parse(name, std::move(bytes));
}

void Import(const Flags& flags) {
  RobotCalibration robot;
  const google::protobuf::Message* record = nullptr;
  {
    std::vector<Foreign> files;
    Failures failures(flags.paths.size());
    for (const std::string& path : flags.paths) {
      failures.Try([&] { files.push_back(ReadForeign(path, flags.topics)); });
    }
    failures.ThrowIfAny();
    const ImportFormat& format = Format(flags, files);
    format.import(files, flags.lens.model(), &robot);
    if (!flags.fit.model.empty()) Fit(files, format, flags, &robot);
    const bool several = format.several_cameras || robot.camera_size() > 1;
    const Descriptor* type = OutputType(flags, several);
    TellLeftovers(Names(flags.paths), flags.leftovers, [&](const LeftoverVisitor& visit) {
      for (const Foreign& file : files) file.ForEachLeftover(visit);
      record = &ImportedRecord(InputName(flags.paths[0]), type, robot, visit);
    });
  }  // the record may be as large again
  OutputFlags output = flags.output;
  if (flags.output_path == "-" && output.format.empty()) output.format = "text";
  WriteRecord(flags.output_path, *record, output);
}

}  // namespace

void AddImport(Command* program, int* status) {
  Command* command = program->AddCommand("import", "Brings in cameras from other tools");
  const auto flags = std::make_shared<Flags>();
  std::vector<std::string> names = {kAuto};
  for (const ImportFormat& format : ImportFormats()) names.push_back(format.name);
  AddChoice(command, "--from", &flags->source, names,
            "What wrote the file; auto goes by its content, and says so");
  command->AddOption("FILE", flags->paths, "The file to read, as the tool wrote it")->Required();
  command->AddOption("--output", flags->output_path, "The file to write; else standard output")
      ->ValueName("OUT");
  command
      ->AddOption("--as", flags->type,
                  "Record type of the output: RobotCalibration, CameraCalibration or "
                  "CameraIntrinsics; else its name tells it, or the number of cameras")
      ->ValueName("TYPE");
  flags->output.AddTo(command);
  flags->lens.AddTo(command,
                    "What the distortion coefficients mean where the file does not tell; auto goes "
                    "by their number, unless there are 4");
  flags->fit.AddTo(command, "--fit",
                   "Of omni (MEI), ds, eucm, ucm, fov, division, thin prism and tilted cameras, "
                   "which a record cannot hold, make cameras of this lens, fitted over the image");
  command
      ->AddRepeatedOption("--topic", flags->topics,
                          "Of MCAP: a topic of a camera's calibration; else all of them")
      ->ValueName("TOPIC");
  flags->leftovers.AddTo(command, true);
  command->Footer(
      "Reads the camera files of ROS, Kalibr and OpenVINS, OpenCV, EuRoC, mrcal, Basalt, COLMAP, "
      "camodocal, DepthAI, ORB-SLAM and nerfstudio, and the cameras of MCAP recordings; of "
      "OpenCV's "
      "stereo calibration, both files at once. What a record has no field for is counted on "
      "standard "
      "error, and listed with its line by --verbose. A file whose lens a record cannot hold is "
      "refused.\n\n"
      "Examples:\n"
      "  calib import left.yaml --output left.CameraCalibration.binpb\n"
      "  calib import --from kalibr camchain.yaml --output rig.RobotCalibration.binpb\n"
      "  calib import --from kalibr omni.yaml --fit equidistant\n"
      "  calib import --from opencv camera.xml\n"
      "  calib import --from opencv intrinsics.yml extrinsics.yml --as RobotCalibration");
  command->Callback([flags, status] {
    Import(*flags);
    *status = kFine;
  });
}

}  // namespace calib
