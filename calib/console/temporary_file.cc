#include "calib/console/temporary_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace calib {
namespace {

// The file's path, where a signal's handler finds it: a handler may not allocate, nor look into a
// string.
char removed_path[PATH_MAX];

// By the time it returns, the signal has its default action again and is still to be delivered.
void RemoveAndRaise(int number) {
  unlink(removed_path);
  raise(number);
}

}  // namespace

constexpr int TemporaryFile::kSignals[];

TemporaryFile::TemporaryFile(const std::string& folder) : path_(folder + ".calib-XXXXXX") {
  sigset_t handled, mask_before;
  sigemptyset(&handled);
  for (const int number : kSignals) sigaddset(&handled, number);
  sigprocmask(SIG_BLOCK, &handled, &mask_before);

  fd_ = mkstemp(path_.data());
  const int error = errno;
  std::strncpy(removed_path, path_.c_str(), sizeof removed_path - 1);
  struct sigaction remove = {};
  remove.sa_handler = RemoveAndRaise;
  remove.sa_flags = static_cast<int>(SA_RESETHAND);
  struct sigaction* before = before_;
  for (const int number : kSignals) {
    sigaction(number, nullptr, before);
    // What ignores a signal, such as nohup, wants the command to go on.
    if (fd_ >= 0 && before->sa_handler != SIG_IGN) sigaction(number, &remove, nullptr);
    ++before;
  }

  sigprocmask(SIG_SETMASK, &mask_before, nullptr);
  errno = error;
}

TemporaryFile::~TemporaryFile() {
  const struct sigaction* before = before_;
  for (const int number : kSignals) sigaction(number, before++, nullptr);
  removed_path[0] = '\0';
}

void TemporaryFile::RemoveIfThere() {
  if (removed_path[0] != '\0') unlink(removed_path);
}

}  // namespace calib
