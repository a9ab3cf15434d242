// calib undistort-image FILE IN.png
#include <cstring>
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"
#include "calib/images/png_file.h"
#include "calib/images/remap.h"
#include "calib/tools/camera_geometry.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/lens_flag.h"

namespace calib {
namespace {

using zarvo::calibration::CameraIntrinsics;

struct Flags {
  std::string path, image, output, map, record;
  InputFlags input;
  CameraFlag camera;
  LensFlag lens;
};

// For each pixel of the image without distortion, where the image has it.
std::vector<geometry::Pixel> SourcesOf(const geometry::Camera& camera) {
  geometry::Camera pinhole = camera;
  pinhole.lens = geometry::Lens::kPinhole;
  std::vector<geometry::Pixel> sources;
  const auto width = static_cast<size_t>(camera.width);
  std::vector<geometry::Pixel> row(width);
  std::vector<geometry::Direction> directions(width);
  std::vector<geometry::Point> points(width);
  std::vector<geometry::Projected> seen(width);
  for (int v = 0; v < camera.height; ++v) {
    for (size_t u = 0; u < width; ++u) row[u] = {static_cast<double>(u), static_cast<double>(v)};
    geometry::Unproject(pinhole, row.data(), width, directions.data());
    for (size_t u = 0; u < width; ++u) points[u] = directions[u].ray;
    geometry::Project(camera, points.data(), width, seen.data());
    for (const geometry::Projected& projected : seen) sources.push_back(projected.pixel);
  }
  return sources;
}

// The format of numpy's files, version 1.0: a header in Python's words, filled up to 64 bytes, and
// the numbers as they are in memory.
std::string Npy(const geometry::Camera& camera, const std::vector<geometry::Pixel>& sources) {
  std::string header = "{'descr': '<f8', 'fortran_order': False, 'shape': (" +
                       std::to_string(camera.height) + ", " + std::to_string(camera.width) +
                       ", 2), }";
  constexpr size_t kPrefix = 10, kStep = 64;
  header.resize((kPrefix + header.size() + kStep) / kStep * kStep - kPrefix - 1, ' ');
  header += '\n';
  std::string file("\x93NUMPY\x01\x00", 8);
  file += static_cast<char>(header.size() & 255);
  file += static_cast<char>(header.size() >> 8);
  file += header;
  const size_t begin = file.size();
  file.resize(begin + sources.size() * sizeof(geometry::Pixel));
  std::memcpy(&file[begin], sources.data(), sources.size() * sizeof(geometry::Pixel));
  return file;
}

void UndistortImage(const Flags& flags) {
  Record record = ReadRecord(flags.path, flags.input);
  const GivenCamera given = OnlyCamera(*record.message, record.name, flags.camera);
  RequireSize(given);
  const geometry::Camera camera = GeometryOf(given, flags.lens.model());
  if (int64_t{1} * camera.width * camera.height > int64_t{1} << 28) {
    throw Failure(WithColon(given.place) + " has an image of more than 268435456 pixels",
                  "Check width and height in the record.");
  }
  const std::string name = InputName(flags.image);
  const Raster image = DecodePng(ReadFile(flags.image), name);
  if (image.width != camera.width || image.height != camera.height) {
    throw Failure(name + ": is of " + std::to_string(image.width) + " x " +
                      std::to_string(image.height) + " pixels, the camera of " +
                      std::to_string(camera.width) + " x " + std::to_string(camera.height),
                  "Name the image's own camera, or make it one of that size with 'calib scale' or "
                  "'calib crop'.");
  }
  const std::vector<geometry::Pixel> sources = SourcesOf(camera);
  WriteFile(flags.output, EncodePng(Remap(image, camera.width, sources), OutputName(flags.output)));
  if (!flags.map.empty()) WriteFile(flags.map, Npy(camera, sources));
  if (flags.record.empty()) return;
  // The record is the command's own.
  auto* in = const_cast<CameraIntrinsics*>(given.intrinsics);
  in->clear_k();
  in->clear_p();
  in->clear_sample_points();
  WriteRecord(flags.record, *record.message, OutputFlags());
}

}  // namespace

void AddUndistortImage(Command* program, int* status) {
  Command* command =
      program->AddCommand("undistort-image", "Makes an image that has no distortion");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The record of the camera")->Required();
  command->AddOption("IMAGE", flags->image, "The image, a PNG file")->Required();
  command->AddOption("--output", flags->output, "The PNG file to write")
      ->ValueName("OUT.png")
      ->Required();
  command
      ->AddOption(
          "--map", flags->map,
          "Write where each pixel comes from, too: u and v as a numpy file of height x width "
          "x 2 doubles")
      ->ValueName("MAP.npy");
  command
      ->AddOption(
          "--record", flags->record,
          "Write the record of the new image, too: k, p and sample_points are gone, all else "
          "is as it was")
      ->ValueName("RECORD");
  flags->input.AddTo(command);
  flags->camera.AddTo(command);
  flags->lens.AddTo(command,
                    "What k and p mean; auto goes by their numbers: 4 k and no p are equidistant, "
                    "else plumb_bob or rational_polynomial");
  command->Footer(
      "The image of a camera with the same fx, fy, skew, cx and cy without distortion: each pixel "
      "is read between the four around where the image has it, and is 0 where the image has none. "
      "The map is that of OpenCV's initUndistortRectifyMap, and cv2.remap takes it as float32.\n\n"
      "Examples:\n"
      "  calib undistort-image cam.CameraCalibration.binpb shot.png --output straight.png\n"
      "  calib undistort-image rig.RobotCalibration.binpb shot.png --camera 0 \\\n"
      "      --output straight.png --map map.npy");
  command->Callback([flags, status] {
    UndistortImage(*flags);
    *status = kFine;
  });
}

}  // namespace calib
