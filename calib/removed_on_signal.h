// Takes a file away if a signal ends the command before it is complete.
#ifndef CALIB_REMOVED_ON_SIGNAL_H_
#define CALIB_REMOVED_ON_SIGNAL_H_

#include <signal.h>

#include <string>

namespace calib {

// For as long as this object lives, Ctrl-C and its kind remove the file before they end the
// command. One at a time.
class RemovedOnSignal {
 public:
  explicit RemovedOnSignal(const std::string& path);
  ~RemovedOnSignal();
  RemovedOnSignal(const RemovedOnSignal&) = delete;
  RemovedOnSignal& operator=(const RemovedOnSignal&) = delete;

 private:
  static constexpr int kSignals[] = {SIGHUP, SIGINT, SIGTERM, SIGXFSZ};

  struct sigaction before_[sizeof kSignals / sizeof *kSignals];
};

}  // namespace calib

#endif  // CALIB_REMOVED_ON_SIGNAL_H_
