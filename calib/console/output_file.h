// A file that is written in pieces, and is there whole or not at all. The path "-" is standard
// output.
//
// A regular file is written under a temporary name in the same folder and then renamed, so that
// nobody ever sees half of it and a failure, or Ctrl-C, leaves the file of before in place and no
// other behind. A terminal, a pipe or a device is written to as the pieces come. One file at a
// time.
#ifndef CALIB_CONSOLE_OUTPUT_FILE_H_
#define CALIB_CONSOLE_OUTPUT_FILE_H_

#include <sys/types.h>

#include <memory>
#include <string>

#include "calib/console/open_file.h"
#include "calib/console/temporary_file.h"

namespace calib {

class OutputFile {
 public:
  // All calls throw Failure with the path and the system's reason.
  explicit OutputFile(const std::string& path);
  ~OutputFile();

  void Write(const char* bytes, size_t size);
  void Write(const std::string& bytes) { Write(bytes.data(), bytes.size()); }
  // Without it, the file of before stays.
  void Commit();

 private:
  void Flush(const char* bytes, size_t size);
  void FlushPending();
  [[noreturn]] void Fail(int error);

  std::string name_, target_, pending_;
  mode_t mode_ = 0;
  std::unique_ptr<TemporaryFile> temporary_;  // none if it is written in place
  std::unique_ptr<OpenFile> file_;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_OUTPUT_FILE_H_
