// How far a long read or write has come, on one line of standard error that is wiped at the end.
// Silent unless standard error is a terminal and there is much to do.
#ifndef CALIB_CONSOLE_PROGRESS_H_
#define CALIB_CONSOLE_PROGRESS_H_

#include <cstddef>
#include <string>

namespace calib {

class Progress {
 public:
  // `total` is the number of bytes to come, 0 if it is not known.
  Progress(const std::string& action, size_t total);
  // Of many files that are read: while it lasts, those of single files are silent.
  struct OfMany {};
  Progress(OfMany, const std::string& action, size_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Whether any can be seen.
  static bool OnTerminal();
  // Of the many files, so much more was read.
  static void AddToMany(size_t bytes);

  void Update(size_t done);

 private:
  static Progress* of_many_;

  std::string action_;
  size_t total_, done_ = 0;
  bool shown_;
  int percent_ = -1;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_PROGRESS_H_
