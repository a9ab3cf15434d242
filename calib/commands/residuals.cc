// calib residuals FILE
#include <algorithm>
#include <cmath>
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number.h"
#include "calib/console/number_rows.h"
#include "calib/fields/sample_views.h"
#include "calib/formats/record_reader.h"
#include "calib/tools/camera_geometry.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/lens_flag.h"

namespace calib {
namespace {

using zarvo::calibration::CameraIntrinsics;

struct Flags {
  std::string path;
  int views = 0;
  int worst = 5;
  InputFlags input;
  CameraFlag camera;
  LensFlag lens;
};

// What a point's residual is.
struct Residual {
  int sample, view;
  geometry::Pixel pixel;
  double error;
};

// Throws Failure if a point is not whole, or there are no views of one size.
std::vector<SampleView> ViewsOf(const GivenCamera& given, int count) {
  const int samples = given.intrinsics->sample_points_size();
  if (count > 0 && samples % count != 0) {
    throw Failure(WithColon(given.place) + " has " + std::to_string(samples) +
                      " sample_points, which do not make " + std::to_string(count) +
                      " views of one size",
                  "Leave --views out: views are told by the target's points starting anew.");
  }
  for (int i = 0; i < samples; ++i) {
    if (TargetPointOf(given.intrinsics->sample_points(i))) continue;
    throw Failure(WithColon(given.place) + " sample_points[" + std::to_string(i) +
                      "] lacks one of img_x, img_y, tgt_x and tgt_y, or has one that is not finite",
                  "Correct it in the record.");
  }
  return SampleViewsOf(*given.intrinsics, count);
}

double Rms(const std::vector<Residual>& residuals) {
  double sum = 0;
  for (const Residual& residual : residuals) sum += residual.error * residual.error;
  return residuals.empty() ? 0 : std::sqrt(sum / static_cast<double>(residuals.size()));
}

// The residuals of a view, whose pose is refitted.
std::vector<Residual> ResidualsOf(const geometry::Camera& camera, double z, const SampleView& view,
                                  int number, std::string* line) {
  const geometry::Pose pose = geometry::FitPose(camera, z, view.points);
  *line = "  view " + std::to_string(number) + ": " + std::to_string(view.points.size()) +
          " points from sample_points[" + std::to_string(view.first) + "], ";
  if (pose.status != geometry::Status::kOk) {
    *line += pose.status == geometry::Status::kNoSolution
                 ? "too few, or on a line: left out\n"
                 : "one of which " + std::string(geometry::Explain(pose.status)) + ": left out\n";
    return {};
  }
  *line += "RMS " + ToDigits(pose.rms, 4) + "\n";
  std::vector<Residual> residuals;
  for (size_t i = 0; i < view.points.size(); ++i) {
    const geometry::TargetPoint& point = view.points[i];
    const geometry::Projected seen =
        geometry::Project(camera, geometry::Apply(pose.camera_from_target, {point.x, point.y, z}));
    const double error = std::hypot(seen.pixel.u - point.pixel.u, seen.pixel.v - point.pixel.v);
    residuals.push_back({view.first + static_cast<int>(i), number, point.pixel, error});
  }
  return residuals;
}

// RMS in three by three parts of the image.
std::string Regions(const std::vector<Residual>& residuals, const geometry::Camera& camera) {
  std::vector<std::vector<Residual>> regions(9);
  for (const Residual& residual : residuals) {
    const auto third = [](double at, int size) {
      return static_cast<int>(std::min(2.0, std::max(0.0, std::floor(3 * (at + 0.5) / size))));
    };
    const int region =
        3 * third(residual.pixel.v, camera.height) + third(residual.pixel.u, camera.width);
    regions[static_cast<size_t>(region)].push_back(residual);
  }
  std::string text = "  RMS by region, from the upper left:\n";
  for (size_t i = 0; i < 9; ++i) {
    const std::string cell = regions[i].empty() ? "-" : ToDigits(Rms(regions[i]), 4);
    text += (i % 3 == 0 ? "    " : "  ") + cell +
            std::string(10 - std::min<size_t>(10, cell.size()), ' ');
    if (i % 3 != 2) continue;
    text.erase(text.find_last_not_of(' ') + 1);
    text += "\n";
  }
  return text;
}

std::string Worst(std::vector<Residual> residuals, int count) {
  std::stable_sort(residuals.begin(), residuals.end(),
                   [](const Residual& a, const Residual& b) { return a.error > b.error; });
  residuals.resize(std::min(residuals.size(), static_cast<size_t>(count)));
  std::string text = residuals.empty() ? "" : "  the worst:\n";
  for (const Residual& residual : residuals) {
    text += "    sample_points[" + std::to_string(residual.sample) +
            "]: " + ToDigits(residual.error, 4) + " at " + ToDigits(residual.pixel.u, 4) + " " +
            ToDigits(residual.pixel.v, 4) + ", view " + std::to_string(residual.view) + "\n";
  }
  return text;
}

int ResidualsOf(const GivenCamera& given, const Flags& flags) {
  const CameraIntrinsics& in = *given.intrinsics;
  if (in.sample_points_size() == 0) {
    throw Failure(WithColon(given.place) + " has no sample_points",
                  "They come with an import of a file that holds them.");
  }
  RequireSize(given);
  const geometry::Camera camera = GeometryOf(given, flags.lens.model());
  const std::vector<SampleView> views = ViewsOf(given, flags.views);
  std::string lines;
  std::vector<Residual> all;
  for (size_t i = 0; i < views.size(); ++i) {
    std::string line;
    const std::vector<Residual> residuals =
        ResidualsOf(camera, in.tgt_z(), views[i], static_cast<int>(i), &line);
    all.insert(all.end(), residuals.begin(), residuals.end());
    lines += line;
  }
  if (all.empty()) {
    throw Failure(WithColon(given.place) + " no view of its sample_points can be fitted",
                  "Say how many views there are with --views N, or check --distortion-model.");
  }
  const double rms = Rms(all);
  const bool disagrees = in.has_error_per_point() && ErrorsDisagree(in.error_per_point(), rms);
  Print(given.name + ": " + std::to_string(all.size()) + " points in " +
        std::to_string(views.size()) + (views.size() == 1 ? " view" : " views") + ", RMS " +
        ToDigits(rms, 4) + " pixels" +
        (!in.has_error_per_point()
             ? ""
             : "; error_per_point is " + Shortest(in.error_per_point()) +
                   (disagrees ? ", which differs by more than a third" : "")) +
        "\n" + lines + Regions(all, camera) + Worst(all, flags.worst));
  return disagrees || all.size() < static_cast<size_t>(in.sample_points_size()) ? kFinding : kFine;
}

int Residuals(const Flags& flags) {
  const Record record = ReadRecord(flags.path, flags.input);
  int status = kFine;
  for (const GivenCamera& given : ChosenCameras(*record.message, record.name, flags.camera)) {
    if (ResidualsOf(given, flags) != kFine) status = kFinding;
  }
  return status;
}

}  // namespace

void AddResiduals(Command* program, int* status) {
  Command* command =
      program->AddCommand("residuals", "Tells how well intrinsics fit their sample points");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The record of the cameras")->Required();
  command
      ->AddOption("--views", flags->views,
                  "The sample points are N views of one size; else a view ends where the target's "
                  "points start anew")
      ->Check(CountFromOne())
      ->ValueName("N");
  command->AddOption("--worst", flags->worst, "How many of the worst points to show; else 5")
      ->Check(CountFromZero())
      ->ValueName("N");
  flags->input.AddTo(command);
  flags->camera.AddTo(command);
  flags->lens.AddTo(command,
                    "What k and p mean; auto goes by their numbers: 4 k and no p are equidistant, "
                    "else plumb_bob or rational_polynomial");
  command->Footer(
      "From where each view was taken is found anew, with the intrinsics as they are; what is left "
      "are distances in pixels, whose root mean square is told of all, of each view and of nine "
      "parts of the image.\n\n"
      "Exit status: 0 fine, 1 the stored error_per_point differs by more than a third, or a view "
      "cannot be fitted, 2 trouble.\n\n"
      "Examples:\n"
      "  calib residuals board.CameraCalibration.binpb\n"
      "  calib residuals rig.RobotCalibration.binpb --camera 0 --views 12 --worst 20");
  command->Callback([flags, status] { *status = Residuals(*flags); });
}

}  // namespace calib
