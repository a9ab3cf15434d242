// The records of a file as bytes, one after the other: what each way of holding them is read by.
// Memory is taken for one record (and for a file of a single one).
#ifndef CALIB_FORMATS_RECORD_SOURCE_H_
#define CALIB_FORMATS_RECORD_SOURCE_H_

#include <memory>
#include <string>
#include <string_view>

#include "calib/console/failure.h"
#include "calib/console/input_file.h"
#include "calib/formats/names.h"

namespace calib {

// What a log is where no record begins: cut off or damaged. All records ahead of it were read.
class DamagedLog : public Failure {
 public:
  using Failure::Failure;
};

class RecordSource {
 public:
  virtual ~RecordSource() = default;

  // Makes *bytes the next record's, which stay until the next call. False at the end. Throws
  // DamagedLog, behind which nothing can be read, or Failure.
  virtual bool Next(std::string_view* bytes) = 0;
  // What keeps the latest record's bytes where they are for as long as a copy of it is held, which
  // must not be given back while another thread reads; null if nothing can.
  virtual const std::shared_ptr<char>* Holder(std::string_view) const { return nullptr; }
  // Passes over it.
  virtual bool Skip() = 0;
};

// `file` must outlive the source.
std::unique_ptr<RecordSource> NewRecordSource(InputFile* file, FileFormat format);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_SOURCE_H_
