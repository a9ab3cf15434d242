// MCAP: the cameras of a recording, by the messages that foreign_mcap.h lists. Those of Foxglove
// and of ROS have the same keys, which are read as those of a camera_info are.
#include "calib/console/failure.h"
#include "calib/tools/import_common.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::RobotCalibration;

namespace {

// What a topic such as "/left/camera_info" is named after: "left".
std::string CameraName(const std::string& topic) {
  const size_t begin = topic.find_first_not_of('/');
  const size_t end = topic.rfind('/');
  if (begin == std::string::npos || end == std::string::npos || end <= begin) return topic;
  return topic.substr(begin, end - begin);
}

bool HasCamera(const RobotCalibration& robot, const std::string& name) {
  for (const CameraCalibration& camera : robot.camera()) {
    if (camera.name() == name) return true;
  }
  return false;
}

struct Transform {
  Foreign value;
  std::string parent, child;
};

std::vector<Transform> Transforms(const Foreign& file) {
  std::vector<Transform> transforms;
  file.ForEachEntry([&](const std::string&, const Foreign& topic) {
    if (!topic.IsList()) return;
    for (const Foreign& value : topic.Elements()) {
      transforms.push_back(
          {value, value.At({"parent_frame_id"}).Peek(), value.At({"child_frame_id"}).Peek()});
    }
  });
  return transforms;
}

RigidTransform Pose(const Foreign& value) {
  const std::vector<double> t = NumbersOf(value.At({"translation"}), {"x", "y", "z"});
  const std::vector<double> q = NumbersOf(value.At({"rotation"}), {"w", "x", "y", "z"});
  value.At({"parent_frame_id"}).Text();
  value.At({"child_frame_id"}).Text();
  return FromQuaternion(value, {q[0], q[1], q[2], q[3]}, {t[0], t[1], t[2]});
}

// The extrinsics of a camera by the transform of its frame. All cameras count from one frame, which
// the first one that has any tells.
void StoreExtrinsics(const Foreign& message, const std::vector<Transform>& transforms,
                     std::string* reference, CameraCalibration* camera) {
  const Foreign frame = message.At({"frame_id"});
  for (const Transform& transform : transforms) {
    if (transform.child != frame.Peek() || transform.child.empty()) continue;
    if (camera->has_extrinsics()) {
      transform.value.NotKept("there is another transform of this frame");
    } else if (!reference->empty() && transform.parent != *reference) {
      transform.value.NotKept("it counts from " + transform.parent +
                              ", but that of another camera from " + *reference);
    } else {
      *reference = transform.parent;
      frame.Text();
      StorePose("mcap", transform.value, Pose(transform.value), transform.parent,
                camera->mutable_extrinsics());
    }
  }
  if (frame.Peek() == camera->name()) frame.Text();
}

}  // namespace

bool IsMcap(const Foreign& file) { return file.IsFromMcap(); }

void ImportMcap(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  if (!file.IsFromMcap()) {
    file.Refuse("does not begin as an MCAP file", "Leave --from out to have its content tell.");
  }
  const std::vector<Transform> transforms = Transforms(file);
  std::string reference;
  file.ForEachEntry([&](const std::string& topic, const Foreign& message) {
    if (!message.IsMap()) return;
    ImportCameraInfo(message, lens, robot);
    CameraCalibration* camera = robot->mutable_camera(robot->camera_size() - 1);
    const std::string name = CameraName(topic);
    camera->set_name(HasCamera(*robot, name) ? topic : name);
    StoreExtrinsics(message, transforms, &reference, camera);
  });
}

}  // namespace calib
