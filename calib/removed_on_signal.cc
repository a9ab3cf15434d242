#include "calib/removed_on_signal.h"

#include <unistd.h>

#include <climits>
#include <cstring>

namespace calib {
namespace {

// Where a signal's handler finds it: it may not allocate, nor look into a string.
char removed_path[PATH_MAX];

// By the time it returns, the signal has its default action again and is still to be delivered.
void RemoveAndRaise(int number) {
  unlink(removed_path);
  raise(number);
}

}  // namespace

constexpr int RemovedOnSignal::kSignals[];

RemovedOnSignal::RemovedOnSignal(const std::string& path) {
  std::strncpy(removed_path, path.c_str(), sizeof removed_path - 1);
  struct sigaction remove = {};
  remove.sa_handler = RemoveAndRaise;
  remove.sa_flags = static_cast<int>(SA_RESETHAND);
  struct sigaction* before = before_;
  for (const int number : kSignals) {
    sigaction(number, nullptr, before);
    // What ignores a signal, such as nohup, wants the command to go on.
    if (before->sa_handler != SIG_IGN) sigaction(number, &remove, nullptr);
    ++before;
  }
}

RemovedOnSignal::~RemovedOnSignal() {
  const struct sigaction* before = before_;
  for (const int number : kSignals) sigaction(number, before++, nullptr);
}

}  // namespace calib
