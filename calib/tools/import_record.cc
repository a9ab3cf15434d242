// What an importer read, as a record of the type that the user wants: all cameras, the only one, or
// the intrinsics of the only one.
#include "calib/console/failure.h"
#include "calib/fields/value.h"
#include "calib/tools/importers.h"

namespace calib {

using google::protobuf::Descriptor;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

const CameraCalibration& OnlyCamera(const std::string& name, const RobotCalibration& robot) {
  if (robot.camera_size() != 1) {
    throw Failure(name + ": has " + std::to_string(robot.camera_size()) +
                      " cameras, more than the record type can hold",
                  "Write a RobotCalibration.");
  }
  return robot.camera(0);
}

void VisitAllButIntrinsics(const std::string& name, const CameraCalibration& camera,
                           const LeftoverVisitor& visit) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  camera.GetReflection()->ListFields(camera, &fields);
  for (const auto* field : fields) {
    if (field->number() == CameraCalibration::kIntrinsicsFieldNumber) continue;
    visit({name + ": " + field->name() + ": ",
           ShortValue(camera, field, -1) + " not kept: CameraIntrinsics has no field for it"});
  }
}

}  // namespace

const google::protobuf::Message& ImportedRecord(const std::string& name, const Descriptor* type,
                                                const RobotCalibration& robot,
                                                const LeftoverVisitor& visit) {
  if (type == RobotCalibration::descriptor()) return robot;
  if (type == CameraCalibration::descriptor()) return OnlyCamera(name, robot);
  if (type == CameraIntrinsics::descriptor()) {
    VisitAllButIntrinsics(name, OnlyCamera(name, robot), visit);
    return robot.camera(0).intrinsics();
  }
  throw Failure(name + ": has cameras, which cannot be written as a " + type->name(),
                "Choose RobotCalibration, CameraCalibration or CameraIntrinsics.");
}

}  // namespace calib
