// A file that is read in pieces. The path "-" is standard input, which can be read once.
#ifndef CALIB_CONSOLE_INPUT_FILE_H_
#define CALIB_CONSOLE_INPUT_FILE_H_

#include <cstddef>
#include <string>

#include "calib/console/open_file.h"
#include "calib/console/progress.h"

namespace calib {

class InputFile {
 public:
  // Throws Failure with the path and the system's reason, also for a folder.
  explicit InputFile(const std::string& path);

  const std::string& name() const { return name_; }
  // Whether it can be read from any place; a pipe cannot.
  bool regular() const { return regular_; }
  // Its size if it is regular, else 0.
  size_t size() const { return size_; }

  // Reads up to `size` bytes; 0 is the end. Throws Failure.
  size_t Read(char* bytes, size_t size);
  // Goes back to the beginning. REQUIRES: regular().
  void Rewind();

 private:
  std::string name_;
  OpenFile file_;
  bool regular_ = false;
  size_t size_ = 0, done_ = 0;
  Progress progress_;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_INPUT_FILE_H_
