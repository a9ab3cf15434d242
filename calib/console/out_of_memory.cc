#include "calib/console/out_of_memory.h"

#include <unistd.h>

#include <new>

#include "calib/console/failure.h"
#include "calib/console/temporary_file.h"

namespace calib {
namespace {

[[noreturn]] void End() {
  constexpr char kMessage[] = "calib: out of memory\n  The record is too large for this machine.\n";
  TemporaryFile::RemoveIfThere();
  const ssize_t ignored = write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
  static_cast<void>(ignored);
  _exit(kTrouble);
}

}  // namespace

void EndWhenOutOfMemory() { std::set_new_handler(End); }

}  // namespace calib
