// The file of records as it is read from disk: the bytes of each that the user means, and the type
// and the format that the flags or its name tell. A file of a single record is one of [0].
#ifndef CALIB_FORMATS_RECORD_FILE_H_
#define CALIB_FORMATS_RECORD_FILE_H_

#include <google/protobuf/descriptor.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "calib/console/file.h"
#include "calib/console/input_file.h"
#include "calib/formats/names.h"
#include "calib/formats/record_choice.h"
#include "calib/formats/record_flags.h"
#include "calib/formats/record_source.h"

namespace calib {

struct EncodedRecord {
  const std::string* file;  // as messages call it; the RecordFile's
  const google::protobuf::Descriptor* type;
  Format format;
  std::string_view bytes;  // stay until the next record is read, or the file is closed
  int64_t index;           // in the file
  bool one_of_many;

  // As messages call it: the file, or FILE[17] where a file holds many.
  std::string name() const {
    return one_of_many ? *file + "[" + std::to_string(index) + "]" : *file;
  }
};

// Whether the file is one in which there may be any number of records. It is not opened; throws
// Failure if its format is not known.
bool MayHoldMany(const std::string& path, const InputFlags& flags);

class RecordFile {
 public:
  // What the user should know, though reading goes on, goes to `note`. Throws Failure if the file
  // cannot be read, or if its type or its format is not known; where it is the type, the remedy
  // names those that could hold what is in the file.
  using Notes = std::function<void(const std::string& text)>;
  RecordFile(const std::string& path, const InputFlags& flags, Notes note = Note);

  // Of the file, as messages call it.
  const std::string& name() const { return file_.name(); }
  const google::protobuf::Descriptor* type() const { return type_; }
  // Whether there may be any number of records: not if the file holds one, or one is chosen.
  bool many() const { return format_.many && !choice_.single; }

  // What keeps the latest record's bytes beyond the next one; see RecordSource.
  const std::shared_ptr<char>* Holder(std::string_view bytes) const {
    return source_->Holder(bytes);
  }

  // Replaces *record by the next one; false at the end. Throws DamagedLog where a log is torn or
  // damaged, or Failure, if the file cannot be read or the single record that is chosen is not in
  // it; behind that there is no next one.
  bool Next(EncodedRecord* record);

 private:
  RecordFile(const ChosenPath& chosen, const InputFlags& flags, Notes note);
  [[noreturn]] void FailForType();
  int64_t CountRecords();
  bool AtEnd() const;

  const Notes note_;
  FileFormat format_;
  RecordChoice choice_;
  const google::protobuf::Descriptor* type_;
  InputFile file_;
  std::unique_ptr<RecordSource> source_;
  int64_t index_ = 0;  // of the next one
  int64_t count_ = 0;  // of all, if they were counted
  bool done_ = false, any_ = false;
};

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_FILE_H_
