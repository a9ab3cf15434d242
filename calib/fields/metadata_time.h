// When a record was made, as the record tells.
#ifndef CALIB_FIELDS_METADATA_TIME_H_
#define CALIB_FIELDS_METADATA_TIME_H_

#include <google/protobuf/message.h>

#include <cstdint>
#include <optional>

namespace calib {

// The first metadata.time in the record. The format records neither its epoch nor its unit.
std::optional<int64_t> MetadataTime(const google::protobuf::Message& record);

}  // namespace calib

#endif  // CALIB_FIELDS_METADATA_TIME_H_
