// A record written to a file, whole or not at all.
#ifndef CALIB_FORMATS_RECORD_WRITER_H_
#define CALIB_FORMATS_RECORD_WRITER_H_

#include <google/protobuf/message.h>

#include <string>

#include "calib/formats/record_flags.h"

namespace calib {

// The format comes from --to or from the path. Throws Failure, and leaves the file of before in
// place, if required fields are missing (unless --partial is given), if the format cannot hold the
// record, or if the path is named for another type.
void WriteRecord(const std::string& path, const google::protobuf::Message& record,
                 const OutputFlags& flags);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_WRITER_H_
