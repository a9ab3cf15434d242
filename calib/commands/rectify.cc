// calib rectify FILE --left CAMERA --right CAMERA
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number_rows.h"
#include "calib/formats/record_reader.h"
#include "calib/tools/export_files.h"
#include "calib/tools/exporters.h"
#include "calib/tools/lens_flag.h"
#include "calib/tools/rig_geometry.h"
#include "calib/tools/yaml_values.h"

namespace calib {
namespace {

struct Flags {
  std::string path, left = "0", right = "1", output_path = "-", camera_info_folder;
  geometry::RectifyOptions options;
  InputFlags input;
  LensFlag lens;
  ExtrinsicsFlags extrinsics;
};

struct Pair {
  GivenCamera left, right;
  geometry::Transform right_from_left;
};

Pair PairOf(const Record& record, const Flags& flags) {
  const std::vector<GivenCamera> cameras = CamerasOf(*record.message, record.name);
  Pair pair = {CameraCalled(*record.message, record.name, flags.left),
               CameraCalled(*record.message, record.name, flags.right),
               {}};
  if (pair.left.place == pair.right.place) {
    throw Failure(record.name + ": --left and --right are both " + pair.left.name,
                  "Name two cameras.");
  }
  if (pair.left.extrinsics == nullptr && pair.right.extrinsics == nullptr) {
    throw Failure(
        record.name + ": neither " + pair.left.name + " nor " + pair.right.name + " has extrinsics",
        "Import them along with the cameras, or set them first.");
  }
  const std::vector<geometry::Transform> rig = RigOf(cameras, record.name, flags.extrinsics);
  geometry::Transform left, right;
  for (size_t i = 0; i < cameras.size(); ++i) {
    if (cameras[i].place == pair.left.place) left = rig[i];
    if (cameras[i].place == pair.right.place) right = rig[i];
  }
  pair.right_from_left = geometry::Compose(right, geometry::Invert(left));
  return pair;
}

void CheckResult(const std::string& name, const Pair& pair, const geometry::Rectified& rectified) {
  const std::string both = name + ": " + pair.left.name + " and " + pair.right.name;
  switch (rectified.status) {
    case geometry::Status::kOk:
      break;
    case geometry::Status::kBeyondLens:
      throw Failure(both +
                        ": see the middle of an edge of the image at 90 degrees or more to the "
                        "rectified axis, or not at all: no flat image holds that",
                    "Crop the images ('calib crop'), then rectify.");
    case geometry::Status::kNotACamera:
      throw Failure(both + ": have images of different sizes",
                    "Scale one of them to the size of the other ('calib scale').");
    default:
      throw Failure(both +
                        ": have no baseline that images can be rectified to: the one is in the "
                        "other's place, or straight in front of it",
                    "Check the extrinsics, and --extrinsics.");
  }
  if (rectified.swapped) {
    throw Failure(
        both + ": the latter is " + (rectified.vertical ? "above" : "left of") +
            " the former, so that disparities would be negative",
        "Name them the other way round, or say with --extrinsics which way the extrinsics "
        "map.");
  }
}

std::string Matrix(const std::string& name, const double* numbers, int rows, int columns) {
  std::string text = name + ":\n  rows: " + std::to_string(rows) +
                     "\n  cols: " + std::to_string(columns) + "\n  data: [";
  for (int i = 0; i < rows * columns; ++i) {
    text += (i == 0 ? "" : ", ") + YamlNumber(numbers[i]);
  }
  return text + "]\n";
}

// The camera_info of both, with R and P.
void WriteCameraInfo(const Record& record, const Flags& flags, const Pair& pair,
                     const geometry::Rectified& rectified) {
  const Exporter& exporter = *FindExporter("ros");
  std::vector<CameraInRecord> cameras;
  for (const GivenCamera* side : {&pair.left, &pair.right}) {
    const std::string place = side->place.substr(0, side->place.rfind('.'));
    cameras.push_back({side->camera, place, side->place});
  }
  ExportOptions options;
  options.lens = flags.lens.model();
  ExportReport report;  // what a camera_info has no place for is in the record
  const ExportRig both = PrepareRig(exporter, cameras, options, &report);
  for (const std::string& note : report.notes) Note(record.name + ": " + note);
  std::vector<ExportedFile> files;
  for (const bool left : {true, false}) {
    const double* r = left ? rectified.r1 : rectified.r2;
    const double* p = left ? rectified.p1 : rectified.p2;
    options.rectification.assign(r, r + 9);
    options.projection.assign(p, p + 12);
    ExportRig alone = both;
    alone.cameras = {both.cameras[left ? 0 : 1]};
    alone.options = options;
    for (ExportedFile& file : exporter.write(alone, &report)) files.push_back(std::move(file));
  }
  CheckFileNames(record.name, files);
  WriteToFolder(flags.camera_info_folder, files);
}

void Rectify(const Flags& flags) {
  const Record record = ReadRecord(flags.path, flags.input);
  const Pair pair = PairOf(record, flags);
  RequireSize(pair.left);
  RequireSize(pair.right);
  const geometry::Camera left = GeometryOf(pair.left, flags.lens.model());
  const geometry::Camera right = GeometryOf(pair.right, flags.lens.model());
  const geometry::Rectified rectified =
      geometry::Rectify(left, right, pair.right_from_left, flags.options);
  if (rectified.status == geometry::Status::kNoSolution && flags.options.alpha >= 0 &&
      geometry::Rectify(left, right, pair.right_from_left, {}).status == geometry::Status::kOk) {
    throw Failure(record.name + ": " + pair.left.name + " and " + pair.right.name +
                      ": are turned so far that images with this --alpha would be mirrored",
                  "Try a smaller one, or leave it out.");
  }
  CheckResult(record.name, pair, rectified);
  Note(record.name + ": " + pair.right.name + " is " + ToDigits(rectified.baseline, 6) +
       (rectified.vertical ? " below " : " right of ") + pair.left.name +
       ", in the unit of the extrinsics" + (rectified.vertical ? "; columns meet, not rows" : ""));
  if (!flags.camera_info_folder.empty()) WriteCameraInfo(record, flags, pair, rectified);
  WriteFile(flags.output_path, Matrix("R1", rectified.r1, 3, 3) + Matrix("R2", rectified.r2, 3, 3) +
                                   Matrix("P1", rectified.p1, 3, 4) +
                                   Matrix("P2", rectified.p2, 3, 4) +
                                   Matrix("Q", rectified.q, 4, 4));
}

}  // namespace

void AddRectify(Command* program, int* status) {
  Command* command =
      program->AddCommand("rectify", "Computes what makes the rows of a stereo pair meet");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The record of the cameras")->Required();
  command->AddOption("--left", flags->left, "The left camera (or the upper one), by name or number")
      ->ValueName("CAMERA");
  command->AddOption("--right", flags->right, "The right camera (or the lower one)")
      ->ValueName("CAMERA");
  command
      ->AddOption("--alpha", flags->options.alpha,
                  "From 0, only pixels that both images have, to 1, all pixels; else the focal "
                  "length stays as it is")
      ->Check(NumberFromZeroToOne())
      ->ValueName("A");
  command->AddOption("--output", flags->output_path, "The file to write; else standard output")
      ->ValueName("OUT");
  command
      ->AddOption("--camera-info", flags->camera_info_folder,
                  "The folder to write ROS camera_info of both to, with R and P, named after the "
                  "cameras")
      ->ValueName("DIR");
  flags->input.AddTo(command);
  flags->lens.AddTo(command,
                    "What k and p mean; auto goes by their numbers: 4 k and no p are equidistant, "
                    "else plumb_bob or rational_polynomial");
  flags->extrinsics.AddTo(command);
  command->Footer(
      "Writes R1 and R2, from each camera to the rectified one, P1 and P2, from the first "
      "rectified camera to pixels, and Q, from pixels and disparity to points, as OpenCV's "
      "stereoRectify does (fisheye::stereoRectify if a lens is equidistant, with --alpha as its "
      "balance). P2[0][3] is minus the focal length times the baseline. Pairs that stand one above "
      "the other are recognised, pairs that are swapped refused.\n\n"
      "Examples:\n"
      "  calib rectify rig.RobotCalibration.binpb --left cam0 --right cam1\n"
      "  calib rectify rig.RobotCalibration.binpb --alpha 0 --output rectified.yaml\n"
      "  calib rectify rig.RobotCalibration.binpb --camera-info stereo");
  command->Callback([flags, status] {
    Rectify(*flags);
    *status = kFine;
  });
}

}  // namespace calib
