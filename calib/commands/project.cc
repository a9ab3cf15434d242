// calib project FILE [POINTS]
#include <memory>

#include "calib/commands/commands.h"
#include "calib/commands/point_flags.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/rig_geometry.h"

namespace calib {
namespace {

struct Flags {
  PointFlags points;
  ExtrinsicsFlags extrinsics;
  bool world = false;
};

// Half a pixel around the centres of the outermost pixels is within. False if the size is not
// known.
bool IsOutside(const geometry::Pixel& pixel, const geometry::Camera& camera) {
  if (camera.width <= 0 || camera.height <= 0) return false;
  return pixel.u < -0.5 || pixel.v < -0.5 || pixel.u > camera.width - 0.5 ||
         pixel.v > camera.height - 0.5;
}

int Project(const Flags& flags) {
  const Record record = ReadRecord(flags.points.path, flags.points.input);
  const GivenCamera given = OnlyCamera(*record.message, record.name, flags.points.camera);
  const geometry::Camera camera = GeometryOf(given, flags.points.lens.model());
  geometry::Transform to_camera;
  if (flags.world) {
    const std::vector<GivenCamera> cameras = CamerasOf(*record.message, record.name);
    const std::vector<geometry::Transform> rig = RigOf(cameras, record.name, flags.extrinsics);
    for (size_t i = 0; i < cameras.size(); ++i) {
      if (cameras[i].intrinsics == given.intrinsics) to_camera = rig[i];
    }
  }
  size_t outside = 0;
  const int status =
      flags.points.Run({"x", "y", "z"}, [&](const auto& row, std::vector<double>* numbers) {
        const geometry::Point point = geometry::Apply(to_camera, {row[0], row[1], row[2]});
        const geometry::Projected projected = geometry::Project(camera, point);
        *numbers = {projected.pixel.u, projected.pixel.v};
        if (projected.status == geometry::Status::kOk)
          outside += IsOutside(projected.pixel, camera);
        return projected.status;
      });
  if (outside > 0) {
    Note(WithColon(given.place) + " " + std::to_string(outside) +
         (outside == 1 ? " point lands" : " points land") + " outside the image of " +
         std::to_string(camera.width) + " x " + std::to_string(camera.height));
  }
  return status;
}

}  // namespace

void AddProject(Command* program, int* status) {
  Command* command = program->AddCommand("project", "Tells where points land in the image");
  const auto flags = std::make_shared<Flags>();
  flags->points.AddTo(command, "The points, x y z a line, in the camera's frame");
  command->AddFlag("--world", flags->world,
                   "The points are in the frame that the extrinsics relate the camera to");
  flags->extrinsics.AddTo(command);
  command->Footer(
      "Writes u v for each point; the centre of the first pixel is 0 0. The camera looks along z, "
      "with x to the right and y down. A point that does not land in the image plane, since it is "
      "behind the camera or beyond the angle up to which the lens model is one to one, is written "
      "as nan nan, and the reason is told; so is how many land outside the image.\n\n"
      "Exit status: 0 all points, 1 some without a pixel, 2 trouble.\n\n"
      "Examples:\n"
      "  calib project cam.CameraCalibration.binpb points.txt\n"
      "  echo 0.1 0.2 1 | calib project rig.RobotCalibration.binpb --camera 0\n"
      "  calib project rig.RobotCalibration.binpb points.txt --camera 1 --world \\\n"
      "      --extrinsics to-camera");
  command->Callback([flags, status] { *status = Project(*flags); });
}

}  // namespace calib
