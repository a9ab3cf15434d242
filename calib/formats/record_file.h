// The file of a record as it is read from disk: its bytes, and the type and the format that the
// flags or its name tell.
#ifndef CALIB_FORMATS_RECORD_FILE_H_
#define CALIB_FORMATS_RECORD_FILE_H_

#include <google/protobuf/descriptor.h>

#include <string>

#include "calib/formats/names.h"
#include "calib/formats/record_flags.h"

namespace calib {

struct RecordFile {
  std::string name;  // of the file, as messages call it
  const google::protobuf::Descriptor* type;
  Format format;
  std::string bytes;
};

// Throws Failure if the file cannot be read, or if its type or its format is not known; where it is
// the type, the remedy names those that could hold what is in the file.
RecordFile ReadRecordFile(const std::string& path, const InputFlags& flags);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_FILE_H_
