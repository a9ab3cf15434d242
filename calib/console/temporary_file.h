// A file that is still to become another one: a signal that ends the command takes it away first.
#ifndef CALIB_CONSOLE_TEMPORARY_FILE_H_
#define CALIB_CONSOLE_TEMPORARY_FILE_H_

#include <signal.h>

#include <string>

namespace calib {

// There may be one at a time. For as long as the object lives, Ctrl-C and its kind remove the file
// before they end the command; otherwise it stays for the owner to rename or to remove, and to
// close.
class TemporaryFile {
 public:
  // `folder` ends in a slash or is empty. If the file cannot be created, fd() is -1 and errno says
  // why.
  explicit TemporaryFile(const std::string& folder);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // Removes the file that there is, if any; allocates nothing.
  static void RemoveIfThere();

  int fd() const { return fd_; }
  const std::string& path() const { return path_; }

 private:
  static constexpr int kSignals[] = {SIGHUP, SIGINT, SIGTERM, SIGXFSZ};

  std::string path_;
  int fd_;
  struct sigaction before_[sizeof kSignals / sizeof *kSignals];
};

}  // namespace calib

#endif  // CALIB_CONSOLE_TEMPORARY_FILE_H_
