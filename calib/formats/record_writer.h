// Records written to a file, which is there whole or not at all.
#ifndef CALIB_FORMATS_RECORD_WRITER_H_
#define CALIB_FORMATS_RECORD_WRITER_H_

#include <google/protobuf/message.h>

#include <cstdint>
#include <string>

#include "calib/console/output_file.h"
#include "calib/formats/names.h"
#include "calib/formats/record_flags.h"
#include "calib/formats/record_reader.h"

namespace calib {

// A file of records, as many as its format holds.
class RecordFileWriter {
 public:
  // The format comes from --to or from the path. Throws Failure if it is not known, or if the path
  // is named for another type.
  RecordFileWriter(const std::string& path, const google::protobuf::Descriptor* type,
                   const OutputFlags& flags);

  // Throws Failure if required fields are missing (unless --partial is given), or if the format
  // cannot hold the record, or not one more.
  void Write(const google::protobuf::Message& record);
  // The file is there from now on; else the one of before stays.
  void Commit();

 private:
  const std::string name_;
  const FileFormat format_;
  const bool partial_;
  int64_t written_ = 0;
  OutputFile file_;
};

// Writes a single record so.
void WriteRecord(const std::string& path, const google::protobuf::Message& record,
                 const OutputFlags& flags);

// Notes that the comments of a text do not get into the text that is written there.
void NoteLostComments(const Record& read, const std::string& path, const OutputFlags& flags);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_WRITER_H_
