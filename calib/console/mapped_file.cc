#include "calib/console/mapped_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>

#include "calib/console/failure.h"
#include "calib/console/open_file.h"
#include "calib/console/printable.h"
#include "calib/console/system_error.h"

namespace calib {

MappedFile::MappedFile(const std::string& path) {
  const std::string name = Printable(path);
  const OpenFile file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status;
  if (file.fd() < 0 || fstat(file.fd(), &status) != 0)
    FailForSystem(name, "cannot be opened", errno);
  if (S_ISDIR(status.st_mode)) FailForSystem(name, "cannot be read", EISDIR);
  if (!S_ISREG(status.st_mode)) {
    throw Failure(name + ": is no file that can be read from any place, but a pipe or a device",
                  "Write what comes from it to a file first.");
  }
  const size_t size = static_cast<size_t>(status.st_size);
  if (size == 0) return;
  void* const data = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.fd(), 0);
  if (data == MAP_FAILED) FailForSystem(name, "cannot be read", errno);
  bytes_ = {static_cast<const char*>(data), size};
}

MappedFile::~MappedFile() {
  if (bytes_.data != nullptr) munmap(const_cast<char*>(bytes_.data), bytes_.size);
}

}  // namespace calib
