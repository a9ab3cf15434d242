// Records read from files.
#ifndef CALIB_FORMATS_RECORD_READER_H_
#define CALIB_FORMATS_RECORD_READER_H_

#include <google/protobuf/message.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "calib/formats/record_file.h"

namespace calib {

struct Record {
  std::string name;  // as messages call it: the file, or FILE[17] where a file holds many
  const google::protobuf::Descriptor* type;
  std::unique_ptr<google::protobuf::Message> message;
  size_t encoded_size;
  Format format;
  bool has_comments;  // of the text format, which are not part of the record
};

// These throw Failure if there is no such record; required fields may be missing.

// The record of a file that holds one, or of which one is chosen.
Record ReadRecord(const std::string& path, const InputFlags& flags);
// The second half of ReadRecord(), for a command to which a malformed record is a finding and no
// trouble.
Record DecodeRecord(const EncodedRecord& encoded);
// The same into a record, which keeps its memory if it has the type.
void DecodeRecordInto(const EncodedRecord& encoded, Record* record);
// The same into a message, which is made anew if it is not of the type, for those who go through
// many records and need no more of them.
void DecodeMessageInto(const EncodedRecord& encoded,
                       std::unique_ptr<google::protobuf::Message>* message);

// All records of a file, one after the other.
class RecordReader {
 public:
  RecordReader(const std::string& path, const InputFlags& flags) : file_(path, flags) {}

  const RecordFile& file() const { return file_; }
  // Replaces *record by the next one; false at the end.
  bool Next(Record* record);

 private:
  RecordFile file_;
  EncodedRecord encoded_;
};

// A record of each file, which must be of one type.
std::vector<Record> ReadRecords(const std::vector<std::string>& paths, const InputFlags& flags);

// All records of several files, which must be of one type. Each file is opened when its turn comes;
// the failures of all are told before they end the command.
void ForEachRecord(const std::vector<std::string>& paths, const InputFlags& flags,
                   const std::function<void(const Record& record)>& visit);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_READER_H_
