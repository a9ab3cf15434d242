#include "fuzz/calib_computations.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "calib/console/failure.h"
#include "calib/fields/sample_views.h"
#include "calib/tools/camera_geometry.h"
#include "calib/tools/exporters.h"
#include "calib/tools/rig_geometry.h"
#include "fuzz/fuzzer.h"

namespace calib {

namespace {

using geometry::Status;
using google::protobuf::Message;
using zarvo::calibration::testing::Require;

constexpr int kMostSamplePoints = 60;  // fits of more take too long

// Whether the call is not refused.
template <typename Call>
bool Try(const std::string& place, Call call) {
  try {
    call();
    return true;
  } catch (const Failure& failure) {
    const std::string what = failure.what();
    Require(what.compare(0, place.size(), place) == 0 && what.size() > place.size(),
            "a refusal says where and why, unlike: " + what);
    return false;
  }
}

template <size_t size>
bool AreFinite(const double (&numbers)[size]) {
  return std::all_of(numbers, numbers + size, [](double number) { return std::isfinite(number); });
}

// project, unproject, undistort
void ThereAndBack(const geometry::Camera& camera) {
  for (const geometry::Pixel& pixel :
       {geometry::Pixel{0, 0}, {camera.cx, camera.cy}, {1.0 * camera.width, 7}}) {
    const geometry::Direction direction = geometry::Unproject(camera, pixel);
    const bool there = direction.status == Status::kOk;
    Require(there == std::isfinite(direction.ray.z), "a direction is finite, or is none");
    const geometry::Projected again = geometry::Project(camera, direction.ray);
    Require((again.status == Status::kOk) == !std::isnan(again.pixel.u), "a pixel is, or is none");
  }
}

// scale, crop, bin, rotate
void Resize(const geometry::Camera& camera) {
  std::vector<geometry::Resized> all = {geometry::Scale(camera, 2, 2),
                                        geometry::Crop(camera, 3, -4, 5, 6),
                                        geometry::Bin(camera, 2, 3, false)};
  for (const int quarters : {1, 2, -1}) all.push_back(geometry::Rotate(camera, quarters));
  for (const geometry::Resized& resized : all) {
    if (resized.status != Status::kOk) continue;
    Require(resized.camera.width > 0 && resized.camera.height > 0, "a resized image has a size");
    Require(AreFinite(resized.new_from_old.m), "a camera's frame is turned by numbers");
  }
}

// diff --pixels
void Compare(const geometry::Camera& before, const geometry::Camera& after) {
  geometry::DifferenceOptions coarse;
  coarse.columns = 4;
  const geometry::Difference difference = geometry::Compare(before, after, coarse);
  if (difference.status != Status::kOk) return;
  Require(difference.compared > 0, "a difference is of pixels");
  Require(!std::isnan(difference.mean) && !std::isnan(difference.largest), "it is a number");
}

// rectify
void Rectify(const geometry::Camera& first, const geometry::Camera& second,
             const geometry::Transform& second_from_first) {
  for (const double alpha : {-1.0, 0.5}) {
    geometry::RectifyOptions options;
    options.alpha = alpha;
    const geometry::Rectified pair = geometry::Rectify(first, second, second_from_first, options);
    if (pair.status != Status::kOk) continue;
    Require(pair.p1[0] > 0 && std::isfinite(pair.p1[0]), "a focal length is above 0");
    Require(AreFinite(pair.r1) && AreFinite(pair.r2), "rotations are numbers");
  }
}

// residuals
void FitPoses(const GivenCamera& given, const geometry::Camera& camera) {
  const auto& points = given.intrinsics->sample_points();
  if (points.empty() || points.size() > kMostSamplePoints) return;
  if (!std::all_of(points.begin(), points.end(), TargetPointOf)) return;
  for (const SampleView& view : SampleViewsOf(*given.intrinsics, 0)) {
    const geometry::Pose pose = geometry::FitPose(camera, given.intrinsics->tgt_z(), view.points);
    Require(pose.status != Status::kOk || std::isfinite(pose.rms), "a fit has an error");
  }
}

}  // namespace

void ComputeWithCameras(const Message& record, const std::string& file) {
  geometry::Camera before;
  bool has_before = false;
  for (const GivenCamera& given : CamerasOf(record, file)) {
    geometry::Transform transform;
    if (given.extrinsics != nullptr)
      Try(file, [&] { transform = TransformOf(given, ExtrinsicsFlags()); });
    geometry::Camera camera;
    const LensModel* model = nullptr;
    if (!Try(file, [&] { camera = GeometryOf(given, nullptr, &model); })) continue;
    ThereAndBack(camera);
    Resize(camera);
    FitPoses(given, camera);
    if (has_before) Rectify(before, camera, transform);
    Compare(has_before ? before : camera, camera);
    before = camera;
    has_before = true;
  }
}

void ExportToAll(const Message& record, const std::string& file) {
  std::vector<CameraInRecord> cameras;
  for (const GivenCamera& given : CamerasOf(record, file)) {
    if (given.camera == nullptr) return;
    cameras.push_back({given.camera, given.name, given.place});
  }
  for (const Exporter& exporter : Exporters()) {
    Try("", [&] {
      CheckCameraCount(exporter, file, cameras.size());
      ExportOptions options;
      options.folder = true;
      ExportReport report;
      ExportRig rig = PrepareRig(exporter, cameras, options, &report);
      rig.record = &record;
      const std::vector<ExportedFile> files = exporter.write(rig, &report);
      Require(!files.empty(), "cameras make files");
      for (const ExportedFile& written : files) Require(!written.name.empty(), "a file has a name");
      TellTransforms(rig, files, &report);
    });
  }
}

}  // namespace calib
