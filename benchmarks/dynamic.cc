// The side of DynamicMessage: what a user has without any classes. Its types are those of this
// library's classes; its records are read from bytes, never filled.
#include <google/protobuf/dynamic_message.h>

#include <string>

#include "benchmarks/operations.h"
#include "benchmarks/payloads.h"
#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

template <class Record>
const ::google::protobuf::Message* Prototype() {
  static ::google::protobuf::DynamicMessageFactory factory;
  return factory.GetPrototype(Record::descriptor());
}

template <class Record>
void AddPayload(const std::string& payload, int batch, void (*fill)(Record*),
                Catalogue* catalogue) {
  const auto bytes = [fill] {
    Record record;
    fill(&record);
    return record.SerializeAsString();
  };
  const auto any = [](const std::string&) { return true; };
  CellAdder<Generic> add("dynamic", payload, Generic(Prototype<Record>), bytes, {"", any}, batch,
                         catalogue);
  AddOperations(&add);
}

}  // namespace

void AddDynamic(Catalogue* catalogue) {
  AddPayload<RobotCalibration>(
      "A", 1, [](RobotCalibration* robot) { FillRobot(false, robot); }, catalogue);
  AddPayload<BaseCalibrationProto>("C", 8, FillBase, catalogue);
  AddPayload<CameraIntrinsics>("D", 32, FillRequiredDoubles, catalogue);
  AddPayload<PTZSystemCalibration>("E", 4, FillPtzSystem, catalogue);
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
