// calib import --from TOOL FILE
#include "calib/import.h"

#include "calib/arguments.h"
#include "calib/commands.h"
#include "calib/failure.h"
#include "calib/file.h"
#include "calib/record.h"
#include "calib/value.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

struct Source {
  const char* name;
  Importer import;
  bool several_cameras;
};
constexpr Source kSources[] = {{"ros", ImportCameraInfo, false},
                               {"kalibr", ImportCamchain, true},
                               {"opencv", ImportOpenCv, false}};

struct Flags {
  std::string source, path, type;
  std::string output_path = "-";
  OutputFlags output;
};

// OpenCV begins its files with a directive that is no YAML; as a comment it keeps the lines' count.
std::string Readable(const std::string& name, std::string text) {
  if (text.compare(0, 6, "%YAML:") == 0) text[0] = '#';
  if (text.compare(0, 5, "<?xml") == 0 || text.compare(0, 16, "<opencv_storage>") == 0) {
    throw Failure(name + ":1:1: is XML, expected YAML",
                  "Store it once more with OpenCV, under a name that ends in .yaml.");
  }
  return text;
}

const Descriptor* OutputType(const Flags& flags, bool several_cameras) {
  if (!flags.type.empty()) return RecordType(flags.type);
  if (const Descriptor* named = FactsFromName(flags.output_path).type) return named;
  return several_cameras ? RobotCalibration::descriptor() : CameraCalibration::descriptor();
}

const CameraCalibration& OnlyCamera(const std::string& name, const RobotCalibration& robot) {
  if (robot.camera_size() != 1) {
    throw Failure(name + ": has " + std::to_string(robot.camera_size()) +
                      " cameras, more than the record type can hold",
                  "Write a RobotCalibration.");
  }
  return robot.camera(0);
}

void ReportAllButIntrinsics(const std::string& name, const CameraCalibration& camera) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  camera.GetReflection()->ListFields(camera, &fields);
  for (const auto* field : fields) {
    if (field->number() == CameraCalibration::kIntrinsicsFieldNumber) continue;
    Note(name + ": " + field->name() + ": " + ShortValue(camera, field, -1) +
         " not kept: CameraIntrinsics has no field for it");
  }
}

const google::protobuf::Message& Choose(const std::string& name, const Descriptor* type,
                                        const RobotCalibration& robot) {
  if (type == RobotCalibration::descriptor()) return robot;
  if (type == CameraCalibration::descriptor()) return OnlyCamera(name, robot);
  if (type == CameraIntrinsics::descriptor()) {
    ReportAllButIntrinsics(name, OnlyCamera(name, robot));
    return robot.camera(0).intrinsics();
  }
  throw Failure("cameras cannot be written as a " + type->name(),
                "Choose RobotCalibration, CameraCalibration or CameraIntrinsics.");
}

void Import(const Flags& flags) {
  const std::string name = InputName(flags.path);
  const Source* source = kSources;
  while (source->name != flags.source) ++source;
  const Foreign file = Foreign::Parse(name, Readable(name, ReadFile(flags.path)));
  RobotCalibration robot;
  source->import(file, &robot);
  file.Report();
  OutputFlags output = flags.output;
  if (flags.output_path == "-" && output.format.empty()) output.format = "text";
  WriteRecord(flags.output_path, Choose(name, OutputType(flags, source->several_cameras), robot),
              output);
}

}  // namespace

void AddImport(CLI::App* program, int* status) {
  CLI::App* command = program->add_subcommand("import", "Brings in cameras from other tools");
  const auto flags = std::make_shared<Flags>();
  std::vector<std::string> names;
  for (const Source& source : kSources) names.push_back(source.name);
  AddChoice(command, "--from", &flags->source, names, "What wrote the file")->required();
  command->add_option("FILE", flags->path, "The file to read, in YAML")->required();
  command->add_option("--output", flags->output_path, "The file to write; else standard output")
      ->type_name("OUT");
  command
      ->add_option("--as", flags->type,
                   "Record type of the output: RobotCalibration, CameraCalibration or "
                   "CameraIntrinsics; else its name tells it, or the number of cameras")
      ->type_name("TYPE");
  flags->output.AddTo(command);
  command->footer(
      "Reads ROS camera_info, Kalibr camchain and OpenCV FileStorage files. What a record has no "
      "field for is named on standard error, each with its line: nothing is left out silently.\n\n"
      "Examples:\n"
      "  calib import --from ros left.yaml --output left.CameraCalibration.binpb\n"
      "  calib import --from kalibr camchain.yaml --output rig.RobotCalibration.binpb\n"
      "  calib import --from opencv camera.yml");
  command->callback([flags, status] {
    Import(*flags);
    *status = kFine;
  });
}

}  // namespace calib
