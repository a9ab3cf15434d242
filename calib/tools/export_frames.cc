// The cameras' frames alone, for ROS: static transforms as tf2_msgs/TFMessage, and URDF. Each
// camera's frame is a child of the frame of reference, and called an optical one, which is what ROS
// (REP 103) calls frames with x to the right, y down and z forward.
#include <algorithm>
#include <set>

#include "calib/console/failure.h"
#include "calib/console/printable.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

namespace geometry = zarvo::calibration_geometry;

namespace {

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() &&
         text.compare(text.size() - end.size(), std::string::npos, end) == 0;
}

std::string FrameOf(const ExportCamera& camera) {
  const bool optical = EndsWith(camera.name, "_optical") || EndsWith(camera.name, "_optical_frame");
  return CameraFileName(camera, optical ? "" : "_optical");
}

RigidTransform ReferenceFromCamera(const ExportRig& rig, const ExportCamera& camera) {
  return rig.conventions->FromRecord(Conventions::Direction::kFromCamera, camera.pose);
}

std::string Reference(const ExportRig& rig) {
  return rig.options.frame.empty() ? "rig" : rig.options.frame;
}

void CheckName(const std::string& frame) {
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./";
  if (frame.find_first_not_of(letters) == std::string::npos && frame[0] != '/') return;
  throw Failure("'" + Printable(frame) + "' is no name of a frame",
                "Letters, digits, '_', '-', '.' and '/' make one, with no '/' in front.");
}

// That there is something to write, and that frames have names, no two of them one.
void CheckFrames(const ExportRig& rig) {
  CheckName(Reference(rig));
  std::set<std::string> names = {Reference(rig)};
  bool any = false;
  for (const ExportCamera& camera : rig.cameras) {
    any = any || camera.has_pose;
    if (names.insert(FrameOf(camera)).second) continue;
    throw Failure(camera.place + " would be a second frame called " + FrameOf(camera),
                  "Give cameras names that differ in letters and digits, or name the frame of "
                  "reference with --frame.");
  }
  if (any) return;
  throw Failure(Below(rig.cameras[0].place, "extrinsics") + " is not set, and " +
                    rig.conventions->files + " holds nothing else",
                "Set it first.");
}

std::vector<ExportedFile> WriteTransforms(const ExportRig& rig, ExportReport*) {
  CheckFrames(rig);
  std::string text = "transforms:\n";
  for (const ExportCamera& camera : rig.cameras) {
    const RigidTransform pose = ReferenceFromCamera(rig, camera);
    const Quaternion q = pose.ToQuaternion();
    const auto number = [](double value) { return NumberList({value}); };
    text += "  - header:\n      frame_id: \"" + Reference(rig) + "\"\n    child_frame_id: \"" +
            FrameOf(camera) + "\"\n    transform:\n      translation: {x: " + number(pose.t[0]) +
            ", y: " + number(pose.t[1]) + ", z: " + number(pose.t[2]) +
            "}\n      rotation: {x: " + number(q.x) + ", y: " + number(q.y) +
            ", z: " + number(q.z) + ", w: " + number(q.w) + "}\n";
  }
  return {{"static_transforms.yaml", text}};
}

// About fixed axes, as URDF has it; of the nearest rotation if that of the record is rounded.
std::vector<double> RollPitchYaw(const RigidTransform& pose) {
  geometry::Transform transform;
  const std::vector<double> rows = pose.Rows();
  std::copy(rows.begin(), rows.end(), transform.m);
  geometry::Orthonormalize(&transform);
  const geometry::RollPitchYaw angles = geometry::RollPitchYawOf(transform);
  return {angles.roll + 0.0, angles.pitch + 0.0, angles.yaw + 0.0};  // none is -0
}

std::vector<ExportedFile> WriteUrdf(const ExportRig& rig, ExportReport*) {
  CheckFrames(rig);
  const std::string reference = Reference(rig);
  std::string text = "<?xml version=\"1.0\"?>\n<robot name=\"" + reference +
                     "\">\n  <link name=\"" + reference + "\"/>\n";
  for (const ExportCamera& camera : rig.cameras) {
    const RigidTransform pose = ReferenceFromCamera(rig, camera);
    const std::string frame = FrameOf(camera);
    const std::string xyz = NumberList({pose.t[0], pose.t[1], pose.t[2]}, " ");
    const std::string rpy = NumberList(RollPitchYaw(pose), " ");
    text.append("  <link name=\"").append(frame).append("\"/>\n");
    text.append("  <joint name=\"").append(frame).append("_joint\" type=\"fixed\">\n");
    text.append("    <parent link=\"").append(reference).append("\"/>\n");
    text.append("    <child link=\"").append(frame).append("\"/>\n");
    text.append("    <origin xyz=\"").append(xyz).append("\" rpy=\"").append(rpy);
    text.append("\"/>\n  </joint>\n");
  }
  return {{"rig.urdf", text + "</robot>\n"}};
}

Exporter FramesExporter() {
  Exporter exporter;
  exporter.keeps = {"name"};
  exporter.poses = Exporter::Poses::kNeeded;
  return exporter;
}

}  // namespace

Exporter StaticTransformsExporter() {
  Exporter exporter = FramesExporter();
  exporter.format = "tf";
  exporter.write = WriteTransforms;
  return exporter;
}

Exporter UrdfExporter() {
  Exporter exporter = FramesExporter();
  exporter.format = "urdf";
  exporter.write = WriteUrdf;
  return exporter;
}

}  // namespace calib
