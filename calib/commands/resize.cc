// calib scale, crop, bin and rotate: the same cameras with another image.
#include <cmath>
#include <functional>
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/lens_flag.h"
#include "calib/tools/rig_geometry.h"

namespace calib {
namespace {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using ResizeCamera = std::function<geometry::Resized(const geometry::Camera& camera)>;

struct Flags {
  std::string path, output_path = "-", direction = "to-camera";
  int u = 0, v = 0, width = 0, height = 0, columns = 2, rows = 0, degrees = 0;
  bool decimate = false;
  InputFlags input;
  OutputFlags output;
  CameraFlag camera;
  LensFlag lens;
};

void MovePoints(const double* map, CameraIntrinsics* in) {
  for (auto& sample : *in->mutable_sample_points()) {
    if (!sample.has_img_x() || !sample.has_img_y()) continue;
    const double u = sample.img_x(), v = sample.img_y();
    sample.set_img_x(static_cast<float>(map[0] * u + map[1] * v + map[2]));
    sample.set_img_y(static_cast<float>(map[3] * u + map[4] * v + map[5]));
  }
}

// The camera's frame turns with the image, and so do extrinsics.
void TurnExtrinsics(const geometry::Transform& new_from_old, const GivenCamera& given,
                    const std::string& direction, CameraCalibration* camera) {
  if (camera == nullptr || !camera->has_extrinsics()) return;
  const geometry::Transform transform = TransformOf(given, ExtrinsicsFlags());
  const bool from_camera = direction == "from-camera";
  StoreTransform(from_camera ? geometry::Compose(transform, geometry::Invert(new_from_old))
                             : geometry::Compose(new_from_old, transform),
                 camera->mutable_extrinsics());
  Note(WithColon(given.place) + " the extrinsics were read as " + direction +
       " (--extrinsics), and turned with the camera");
}

void Store(const geometry::Resized& resized, const LensModel& model, CameraIntrinsics* in) {
  const geometry::Camera& camera = resized.camera;
  in->set_fx(camera.fx);
  in->set_fy(camera.fy);
  in->set_skew(camera.skew);
  in->set_cx(camera.cx);
  in->set_cy(camera.cy);
  in->set_width(camera.width);
  in->set_height(camera.height);
  if (model.order == LensModel::Order::kBrown) {
    for (int i = 0; i < in->p_size(); ++i) in->set_p(i, camera.distortion[2 + i]);
    // One of two, whose other was 0, may have become the other.
    if (in->p_size() == 1 && camera.distortion[3] != 0) in->add_p(camera.distortion[3]);
  }
  MovePoints(resized.pixel_map, in);
}

void Resize(const Flags& flags, const ResizeCamera& resize) {
  Record record = ReadRecord(flags.path, flags.input);
  const std::vector<CameraCalibration*> cameras = MutableCameras(record.message.get());
  for (const GivenCamera& given : ChosenCameras(*record.message, record.name, flags.camera)) {
    RequireSize(given);
    const LensModel* model = nullptr;
    const geometry::Resized resized = resize(GeometryOf(given, flags.lens.model(), &model));
    if (resized.status != geometry::Status::kOk) {
      throw Failure(given.place +
                        " has a skew that is not 0: turned by a quarter, its lower axis "
                        "would lean, which fx, fy, skew, cx and cy cannot tell",
                    "Turn it by 180 degrees, or set skew to 0 if it is next to that.");
    }
    // The record is the command's own.
    auto* in = const_cast<CameraIntrinsics*>(given.intrinsics);
    if (flags.u != 0 || flags.v != 0) {
      in->set_offset_x(in->offset_x() + static_cast<float>(flags.u));
      in->set_offset_y(in->offset_y() + static_cast<float>(flags.v));
    } else if (in->has_offset_x() || in->has_offset_y()) {
      Note(WithColon(given.place) +
           " offset_x and offset_y stay as they are, since nothing says in which "
           "pixels they count");
    }
    Store(resized, *model, in);
    for (CameraCalibration* camera : cameras) {
      if (!camera->has_intrinsics() || &camera->intrinsics() != in) continue;
      if (flags.degrees != 0) {
        TurnExtrinsics(resized.new_from_old, given, flags.direction, camera);
      }
      if (camera->has_intrinsics_image()) {
        Note(WithColon(given.place) + " intrinsics_image stays the image that it is");
      }
    }
  }
  OutputFlags output = flags.output;
  if (flags.output_path == "-" && output.format.empty()) output.format = "text";
  WriteRecord(flags.output_path, *record.message, output);
}

std::shared_ptr<Flags> AddFlags(Command* command, const std::string& footer) {
  auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The record of the cameras")->Required();
  command->AddOption("--output", flags->output_path, "The file to write; else standard output")
      ->ValueName("OUT");
  flags->input.AddTo(command);
  flags->output.AddTo(command);
  flags->camera.AddTo(command);
  flags->lens.AddTo(command, "What k and p mean; auto goes by their numbers");
  command->Footer(footer);
  return flags;
}

// The rectangle must lie within the image.
geometry::Resized CropWithin(const geometry::Camera& camera, const Flags& flags) {
  if (flags.width > camera.width - flags.u || flags.height > camera.height - flags.v) {
    throw Failure(flags.path + ": the image of " + std::to_string(camera.width) + " x " +
                      std::to_string(camera.height) + " ends within the rectangle",
                  "Choose one that lies within the image of each camera, or one camera with "
                  "--camera N.");
  }
  return geometry::Crop(camera, flags.u, flags.v, flags.width, flags.height);
}

geometry::Resized BinWhole(const geometry::Camera& camera, const Flags& flags) {
  const int rows = flags.rows == 0 ? flags.columns : flags.rows;
  if (camera.width < flags.columns || camera.height < rows) {
    throw Failure(flags.path + ": the image of " + std::to_string(camera.width) + " x " +
                      std::to_string(camera.height) + " is smaller than one bin",
                  "Choose smaller bins.");
  }
  return geometry::Bin(camera, flags.columns, rows, flags.decimate);
}

}  // namespace

void AddScale(Command* program, int* status) {
  Command* command = program->AddCommand("scale", "Makes cameras those of resized images");
  const auto flags = AddFlags(
      command,
      "fx, skew and cx go with the width, fy and cy with the height, and sample points with "
      "them; k and p stay. The corners of the image stay where they are, which are half a pixel "
      "from "
      "the centres of the outermost pixels: cx + 0.5 is scaled, as OpenCV's resize does it.\n\n"
      "Examples:\n"
      "  calib scale rig.RobotCalibration.binpb 376 240 --output half.RobotCalibration.binpb\n"
      "  calib scale cam.CameraCalibration.binpb 1920 1080 --to text");
  command->AddOption("WIDTH", flags->width, "Width of the resized image")
      ->Check(CountFromOne())
      ->Required();
  command->AddOption("HEIGHT", flags->height, "Its height")->Check(CountFromOne())->Required();
  command->Callback([flags, status] {
    Resize(*flags, [&](const geometry::Camera& camera) {
      return geometry::Scale(camera, flags->width, flags->height);
    });
    *status = kFine;
  });
}

void AddCrop(Command* program, int* status) {
  Command* command = program->AddCommand("crop", "Makes cameras those of cut out images");
  const auto flags = AddFlags(
      command,
      "cx and cy lose what is cut off at the left and at the top, and so do sample points; "
      "offset_x and offset_y gain it.\n\n"
      "Examples:\n"
      "  calib crop cam.CameraCalibration.binpb 56 0 640 480\n"
      "  calib crop rig.RobotCalibration.binpb --camera 0 0 100 752 200");
  command->AddOption("U", flags->u, "Columns that are cut off at the left")
      ->Check(CountFromZero())
      ->Required();
  command->AddOption("V", flags->v, "Rows that are cut off at the top")
      ->Check(CountFromZero())
      ->Required();
  command->AddOption("WIDTH", flags->width, "Width of what is left")
      ->Check(CountFromOne())
      ->Required();
  command->AddOption("HEIGHT", flags->height, "Its height")->Check(CountFromOne())->Required();
  command->Callback([flags, status] {
    Resize(*flags, [&](const geometry::Camera& camera) { return CropWithin(camera, *flags); });
    *status = kFine;
  });
}

void AddBin(Command* program, int* status) {
  Command* command = program->AddCommand("bin", "Makes cameras those of binned images");
  const auto flags = AddFlags(
      command,
      "As scale; columns and rows that fill no bin are cut off. The centre of a bin is in the "
      "middle of its pixels, so that cx + 0.5 is divided; with --decimate it is that of its first "
      "pixel, so that cx is, as ROS's image_geometry has it.\n\n"
      "Examples:\n"
      "  calib bin rig.RobotCalibration.binpb 2 --output binned.RobotCalibration.binpb\n"
      "  calib bin cam.CameraCalibration.binpb 2 1 --decimate");
  command->AddOption("COLUMNS", flags->columns, "Pixels in a row that become one")
      ->Check(CountFromOne())
      ->Required();
  command->AddOption("ROWS", flags->rows, "Rows that become one; else as many")
      ->Check(CountFromOne());
  command->AddFlag("--decimate", flags->decimate, "The bins are their first pixels, not the mean");
  command->Callback([flags, status] {
    Resize(*flags, [&](const geometry::Camera& camera) { return BinWhole(camera, *flags); });
    *status = kFine;
  });
}

void AddRotate(Command* program, int* status) {
  Command* command = program->AddCommand("rotate", "Makes cameras those of turned images");
  const auto flags = AddFlags(
      command,
      "Turns the image clockwise. The camera's frame turns with it, so that x is to the right "
      "and y down again: extrinsics, p, and sample points are turned, too.\n\n"
      "Examples:\n"
      "  calib rotate rig.RobotCalibration.binpb 180 --camera 1\n"
      "  calib rotate cam.CameraCalibration.binpb 90 --extrinsics from-camera");
  command->AddOption("DEGREES", flags->degrees, "90, 180 or 270")
      ->Check([](const std::string& text) {
        const bool quarter = text == "90" || text == "180" || text == "270";
        return quarter ? "" : "is '" + text + "', expected 90, 180 or 270";
      })
      ->Required();
  AddChoice(command, "--extrinsics", &flags->direction, {"to-camera", "from-camera"},
            "How the extrinsics map: to the camera, as calib imports them, or from it");
  command->Callback([flags, status] {
    Resize(*flags, [&](const geometry::Camera& camera) {
      return geometry::Rotate(camera, flags->degrees / 90);
    });
    *status = kFine;
  });
}

}  // namespace calib
