// calib import --from TOOL FILE
#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/formats/names.h"
#include "calib/formats/record_writer.h"
#include "calib/tools/importers.h"
#include "calib/tools/leftovers.h"
#include "calib/tools/lens_flag.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::RobotCalibration;

// Imports from a tool that writes one file.
template <void (*import)(const Foreign&, const LensModel*, RobotCalibration*)>
void ImportOne(const std::vector<Foreign>& files, const LensModel* lens, RobotCalibration* robot) {
  if (files.size() > 1) {
    files[1].Refuse("is a second file, but this tool writes one",
                    "Bring them in one by one, and put them together with 'calib merge'.");
  }
  import(files[0], lens, robot);
}

struct Source {
  const char* name;
  void (*import)(const std::vector<Foreign>& files, const LensModel* lens, RobotCalibration* robot);
  bool several_cameras;  // even if the file at hand has one
};
constexpr Source kSources[] = {{"ros", ImportOne<ImportCameraInfo>, false},
                               {"kalibr", ImportOne<ImportCamchain>, true},
                               {"opencv", ImportOpenCv, false}};

struct Flags {
  std::vector<std::string> paths;
  std::string source, type;
  std::string output_path = "-";
  OutputFlags output;
  LensFlag lens;
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

void Import(const Flags& flags) {
  const Source* source = kSources;
  while (source->name != flags.source) ++source;
  RobotCalibration robot;
  const google::protobuf::Message* record = nullptr;
  {
    std::vector<Foreign> files;
    Failures failures(flags.paths.size());
    for (const std::string& path : flags.paths) {
      failures.Try([&] { files.push_back(Foreign::Parse(InputName(path), ReadFile(path))); });
    }
    failures.ThrowIfAny();
    source->import(files, flags.lens.model(), &robot);
    const bool several = source->several_cameras || robot.camera_size() > 1;
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
  std::vector<std::string> names;
  for (const Source& source : kSources) names.push_back(source.name);
  AddChoice(command, "--from", &flags->source, names, "What wrote the file")->Required();
  command->AddOption("FILE", flags->paths, "The file to read, in YAML or OpenCV's XML")->Required();
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
  flags->leftovers.AddTo(command, true);
  command->Footer(
      "Reads ROS camera_info, Kalibr camchain and OpenCV FileStorage files; of OpenCV's stereo "
      "calibration, both files at once. What a record has no field for is counted on standard "
      "error, and listed with its line by --verbose. A file whose lens a record cannot hold is "
      "refused.\n\n"
      "Examples:\n"
      "  calib import --from ros left.yaml --output left.CameraCalibration.binpb\n"
      "  calib import --from kalibr camchain.yaml --output rig.RobotCalibration.binpb\n"
      "  calib import --from opencv camera.xml\n"
      "  calib import --from opencv intrinsics.yml extrinsics.yml --as RobotCalibration");
  command->Callback([flags, status] {
    Import(*flags);
    *status = kFine;
  });
}

}  // namespace calib
