// An open file of the system's, which is closed with the object.
#ifndef CALIB_CONSOLE_OPEN_FILE_H_
#define CALIB_CONSOLE_OPEN_FILE_H_

#include <unistd.h>

namespace calib {

class OpenFile {
 public:
  explicit OpenFile(int fd) : fd_(fd) {}
  ~OpenFile() { Close(); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int fd() const { return fd_; }
  // Standard input and output stay open. Returns what close() does.
  int Close() {
    const int fd = fd_;
    fd_ = -1;
    return fd > STDERR_FILENO ? close(fd) : 0;
  }

 private:
  int fd_;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_OPEN_FILE_H_
