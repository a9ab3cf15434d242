// Records read from files.
#ifndef CALIB_FORMATS_RECORD_READER_H_
#define CALIB_FORMATS_RECORD_READER_H_

#include <google/protobuf/message.h>

#include <memory>
#include <string>
#include <vector>

#include "calib/formats/record_file.h"

namespace calib {

struct Record {
  std::string name;  // of the file, as messages call it
  const google::protobuf::Descriptor* type;
  std::unique_ptr<google::protobuf::Message> message;
  size_t file_size;
  Format format;
  bool has_comments;  // of the text format, which are not part of the record
};

// Both throw Failure if there is no such record in the file; required fields may be missing.
Record ReadRecord(const std::string& path, const InputFlags& flags);
// The second half of ReadRecord(), for a command to which a malformed record is a finding and no
// trouble.
Record DecodeRecord(const RecordFile& file);

// Reads all files, which must hold records of one type.
std::vector<Record> ReadRecords(const std::vector<std::string>& paths, const InputFlags& flags);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_READER_H_
