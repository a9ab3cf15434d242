#include "calib/console/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/system_error.h"

namespace calib {
namespace {

int Open(const std::string& path) {
  static bool input_was_read = false;
  if (path != "-") return open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (std::exchange(input_was_read, true)) {
    throw Failure(InputName(path) + ": is named twice", "Name a file for one of them.");
  }
  return STDIN_FILENO;
}

size_t SizeOf(int fd, const std::string& name, bool* regular) {
  struct stat status;
  if (fd < 0 || fstat(fd, &status) != 0) FailForSystem(name, "cannot be opened", errno);
  if (S_ISDIR(status.st_mode)) FailForSystem(name, "cannot be read", EISDIR);
  *regular = S_ISREG(status.st_mode);
  return *regular ? static_cast<size_t>(status.st_size) : 0;
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : name_(InputName(path)),
      file_(Open(path)),
      size_(SizeOf(file_.fd(), name_, &regular_)),
      progress_("reading " + name_, size_) {}

size_t InputFile::Read(char* bytes, size_t size) {
  for (;;) {
    const ssize_t count = read(file_.fd(), bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) FailForSystem(name_, "cannot be read", errno);
    done_ += static_cast<size_t>(count);
    progress_.Update(done_);
    Progress::AddToMany(static_cast<size_t>(count));
    return static_cast<size_t>(count);
  }
}

void InputFile::Rewind() {
  if (lseek(file_.fd(), 0, SEEK_SET) != 0) FailForSystem(name_, "cannot be read", errno);
  done_ = 0;
}

}  // namespace calib
