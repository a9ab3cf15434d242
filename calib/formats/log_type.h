// The record type of a log that is written to, and what may go into it.
#ifndef CALIB_FORMATS_LOG_TYPE_H_
#define CALIB_FORMATS_LOG_TYPE_H_

#include <string>

#include "calib/formats/record_reader.h"

namespace calib {

// The type that --type or the log's name tells; null if neither does. Throws Failure if the name is
// that of a file of another format.
const google::protobuf::Descriptor* LogType(const std::string& log, const InputFlags& flags);

// Throws Failure unless the record is of the log's type.
void CheckLogType(const std::string& log, const google::protobuf::Descriptor* type,
                  const Record& record);

}  // namespace calib

#endif  // CALIB_FORMATS_LOG_TYPE_H_
