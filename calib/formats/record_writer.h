// A record written to a file, whole or not at all.
#ifndef CALIB_FORMATS_RECORD_WRITER_H_
#define CALIB_FORMATS_RECORD_WRITER_H_

#include <google/protobuf/message.h>

#include <string>

#include "calib/formats/record_flags.h"
#include "calib/formats/record_reader.h"

namespace calib {

// The format comes from --to or from the path. Throws Failure, and leaves the file of before in
// place, if required fields are missing (unless --partial is given), if the format cannot hold the
// record, or if the path is named for another type.
void WriteRecord(const std::string& path, const google::protobuf::Message& record,
                 const OutputFlags& flags);

// Notes that the comments of a text do not get into the text that is written there.
void NoteLostComments(const Record& read, const std::string& path, const OutputFlags& flags);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_WRITER_H_
