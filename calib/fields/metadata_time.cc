#include "calib/fields/metadata_time.h"

#include "calib/fields/walk.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Message;
using zarvo::calibration::CalibrationMetadataProto;

std::optional<int64_t> MetadataTime(const Message& record) {
  std::optional<int64_t> time;
  ForEachMessage(record, [&](const Message& message, const std::string&) {
    if (time || message.GetDescriptor() != CalibrationMetadataProto::descriptor()) return;
    const auto& metadata = static_cast<const CalibrationMetadataProto&>(message);
    if (metadata.has_time()) time = metadata.time();
  });
  return time;
}

}  // namespace calib
