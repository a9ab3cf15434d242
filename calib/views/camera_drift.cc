#include "calib/views/camera_drift.h"

#include <algorithm>
#include <cmath>

#include "calib/fields/walk.h"
#include "calib/geometry/pose_difference.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

namespace geometry = zarvo::calibration_geometry;
using google::protobuf::Message;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

constexpr double kMostDefect = 1e-3;  // of a rotation whose digits were rounded

void AddIntrinsics(const CameraIntrinsics& intrinsics, CameraSample* sample) {
  sample->intrinsics = {{"fx", intrinsics.fx()},
                        {"fy", intrinsics.fy()},
                        {"skew", intrinsics.skew()},
                        {"cx", intrinsics.cx()},
                        {"cy", intrinsics.cy()}};
  const auto add = [&](const char* name, const auto& values) {
    for (int i = 0; i < values.size(); ++i) {
      sample->intrinsics.emplace_back(std::string(name) + "[" + std::to_string(i) + "]",
                                      values.Get(i));
    }
  };
  add("k", intrinsics.k());
  add("p", intrinsics.p());
}

void AddTransform(const CameraCalibration& camera, CameraSample* sample) {
  if (camera.extrinsics().a_size() == 0) return;
  geometry::Transform transform;
  sample->odd_transform = camera.extrinsics().a_size() != 16;
  if (sample->odd_transform) return;
  std::copy(camera.extrinsics().a().begin(), camera.extrinsics().a().end(), transform.m);
  sample->odd_transform =
      geometry::RotationDefect(transform) > kMostDefect || !geometry::Orthonormalize(&transform);
  if (!sample->odd_transform) sample->transform = transform;
}

void AddLens(const CameraIntrinsics& intrinsics, const LensReader& reader, CameraSample* sample) {
  if (intrinsics.width() < 2 || intrinsics.height() < 2) {
    sample->no_lens = "the image's width and height are not set";
    return;
  }
  const LensReading reading = reader(intrinsics);
  sample->no_lens = reading.reason;
  if (!reading.model.empty()) sample->lens = reading.camera;
}

double DegreesBetween(const geometry::Transform& a, const geometry::Transform& b) {
  return geometry::AngleBetween(a, b) / geometry::kDegree;
}

using Change = double (*)(const geometry::Transform& a, const geometry::Transform& b);

std::optional<double> ChangeOf(Change change, const CameraSample* before, const CameraSample& now) {
  if (before == nullptr || !before->transform || !now.transform) return std::nullopt;
  if (std::equal(now.transform->m, now.transform->m + 16, before->transform->m)) return 0;
  return change(*before->transform, *now.transform);
}

// The largest displacement in the image, but for the rotation between the two; none for images of
// different sizes.
std::optional<double> Displacement(const CameraSample* before, const CameraSample& now) {
  if (before == nullptr || !before->lens || !now.lens) return std::nullopt;
  if (before->intrinsics == now.intrinsics && before->lens->width == now.lens->width &&
      before->lens->height == now.lens->height) {
    return 0;
  }
  const geometry::Difference difference =
      geometry::Compare(*before->lens, *now.lens, geometry::DifferenceOptions());
  if (difference.status != geometry::Status::kOk) return std::nullopt;
  return difference.largest;
}

// The change of the intrinsic of that name, if both have it.
std::optional<double> ChangeOf(const std::pair<std::string, double>& value,
                               const CameraSample* before) {
  if (before == nullptr) return std::nullopt;
  for (const auto& [name, earlier] : before->intrinsics) {
    if (name == value.first) return value.second - earlier;
  }
  return std::nullopt;
}

void AddRows(const CameraSample& now, const CameraSample* first, const CameraSample* before,
             std::vector<DriftRow>* rows) {
  for (const auto& value : now.intrinsics) {
    rows->push_back({now.camera, now.record, value.first, now.order, value.second,
                     ChangeOf(value, first), ChangeOf(value, before)});
  }
  const auto add = [&](const char* quantity, std::optional<double> since_first,
                       std::optional<double> since_before) {
    rows->push_back(
        {now.camera, now.record, quantity, now.order, std::nullopt, since_first, since_before});
  };
  if (now.lens) {
    const std::optional<double> since_first = Displacement(first, now);
    add("pixels", since_first, before == first ? since_first : Displacement(before, now));
  }
  if (!now.transform) return;
  add("rotation", ChangeOf(DegreesBetween, first, now), ChangeOf(DegreesBetween, before, now));
  add("position", ChangeOf(geometry::DistanceBetween, first, now),
      ChangeOf(geometry::DistanceBetween, before, now));
}

}  // namespace

std::vector<CameraSample> CameraSamplesOf(const Message& record, const std::string& name,
                                          const LensReader& reader) {
  std::vector<CameraSample> samples;
  ForEachMessage(record, [&](const Message& message, const std::string& path) {
    if (message.GetDescriptor() != CameraCalibration::descriptor()) return;
    const auto& camera = static_cast<const CameraCalibration&>(message);
    CameraSample sample;
    sample.camera = !camera.serial().empty() ? camera.serial()
                    : !camera.name().empty() ? camera.name()
                                             : path;
    sample.record = name;
    if (camera.has_intrinsics()) AddIntrinsics(camera.intrinsics(), &sample);
    if (camera.has_intrinsics() && reader) AddLens(camera.intrinsics(), reader, &sample);
    AddTransform(camera, &sample);
    samples.push_back(std::move(sample));
  });
  return samples;
}

std::vector<DriftRow> DriftOf(const std::vector<CameraSample>& samples) {
  std::vector<std::string> cameras;
  for (const CameraSample& sample : samples) {
    if (std::find(cameras.begin(), cameras.end(), sample.camera) == cameras.end()) {
      cameras.push_back(sample.camera);
    }
  }
  std::vector<DriftRow> rows;
  for (const std::string& camera : cameras) {
    const CameraSample *first = nullptr, *before = nullptr;
    for (const CameraSample& sample : samples) {
      if (sample.camera != camera) continue;
      AddRows(sample, first, before, &rows);
      if (first == nullptr) first = &sample;
      before = &sample;
    }
  }
  return rows;
}

}  // namespace calib
