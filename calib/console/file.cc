#include "calib/console/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "calib/console/failure.h"
#include "calib/console/printable.h"
#include "calib/console/progress.h"
#include "calib/console/temporary_file.h"

namespace calib {
namespace {

constexpr size_t kBlock = size_t{1} << 20;

std::string Reason(int error) { return std::strerror(error); }

// What the user can do about an error of the system.
std::string Remedy(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
      return "Check the spelling; relative paths start at the current folder.";
    case EACCES:
    case EPERM:
    case EROFS:
      return "Choose another folder, or have the permissions changed.";
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return "Make room, or write to another place. The file of before is untouched.";
    case EBADF:
      return "It is closed; run the command with one that is open, or name a file.";
    case EISDIR:
      return "Name a file in it.";
    default:
      return "";
  }
}

[[noreturn]] void Fail(const std::string& name, const std::string& action, int error) {
  throw Failure(name + ": " + action + ": " + Reason(error), Remedy(error));
}

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int fd() const { return fd_; }
  // Standard input and output stay open.
  int Close() {
    const int fd = fd_;
    fd_ = -1;
    return fd > STDERR_FILENO ? close(fd) : 0;
  }

 private:
  int fd_;
};

// Hands bytes to a sink.
using Produce = std::function<void(const Sink& sink)>;

// Thrown through what produces the bytes.
struct WriteError {
  int number;
};

void WriteAll(int fd, const char* bytes, size_t size) {
  for (size_t done = 0; done < size;) {
    const ssize_t written = write(fd, bytes + done, std::min(kBlock, size - done));
    if (written < 0 && errno != EINTR) throw WriteError{errno};
    if (written > 0) done += static_cast<size_t>(written);
  }
}

// Writes all that is produced; returns 0 or the error.
int WriteAll(int fd, const Produce& produce) {
  try {
    produce([fd](const char* bytes, size_t size) { WriteAll(fd, bytes, size); });
    return 0;
  } catch (const WriteError& error) {
    return error.number;
  }
}

// Produces bytes that are there already, and shows how many are written.
Produce Producer(const std::string& name, const std::string& bytes) {
  return [&name, &bytes](const Sink& sink) {
    Progress progress("writing " + name, bytes.size());
    for (size_t done = 0; done < bytes.size(); done += kBlock) {
      sink(bytes.data() + done, std::min(kBlock, bytes.size() - done));
      progress.Update(std::min(done + kBlock, bytes.size()));
    }
  };
}

// Writing to a terminal, a pipe or a device: there is no file of before to keep.
void WriteInPlace(int fd, const Produce& produce, const std::string& name) {
  Descriptor file(fd);
  int error = WriteAll(file.fd(), produce);
  if (file.Close() != 0 && error == 0) error = errno;
  if (error == ENOSPC) throw Failure(name + ": cannot be written: " + Reason(error), "Make room.");
  if (error != 0) Fail(name, "cannot be written", error);
}

mode_t ModeForNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// Where a symbolic link leads, so that renaming replaces the file and not the link; if that file is
// not there yet, where it will be.
std::string Resolved(std::string path) {
  constexpr int kMostLinks = 40;
  for (int links = 0; links < kMostLinks; ++links) {
    char target[PATH_MAX];
    const ssize_t size = readlink(path.c_str(), target, sizeof target);
    if (size < 0 || size == static_cast<ssize_t>(sizeof target)) break;
    const bool absolute = target[0] == '/';
    path.erase(absolute ? 0 : path.find_last_of('/') + 1);  // all of it, if it has no folder
    path.append(target, static_cast<size_t>(size));
  }
  return path;
}

// `name` is what the user calls the file at `path`.
void Replace(const std::string& name, const std::string& path, mode_t mode,
             const Produce& produce) {
  const size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  const TemporaryFile temporary(folder);
  if (temporary.fd() < 0) Fail(name, "cannot be created", errno);
  Descriptor file(temporary.fd());
  int error = 0;
  try {
    error = WriteAll(file.fd(), produce);
  } catch (...) {
    unlink(temporary.path().c_str());
    throw;
  }
  if (error == 0 && (fchmod(file.fd(), mode) != 0 || fsync(file.fd()) != 0)) error = errno;
  if (file.Close() != 0 && error == 0) error = errno;
  if (error == 0 && rename(temporary.path().c_str(), path.c_str()) != 0) error = errno;
  if (error != 0) {
    unlink(temporary.path().c_str());
    Fail(name, "cannot be written", error);
  }
}

}  // namespace

std::string InputName(const std::string& path) {
  return path == "-" ? "standard input" : Printable(path);
}
std::string OutputName(const std::string& path) {
  return path == "-" ? "standard output" : Printable(path);
}

std::string ReadFile(const std::string& path) {
  const std::string name = InputName(path);
  static bool input_was_read = false;
  if (path == "-" && std::exchange(input_was_read, true)) {
    throw Failure(name + ": is named twice", "Name a file for one of them.");
  }
  Descriptor file(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status;
  if (file.fd() < 0 || fstat(file.fd(), &status) != 0) Fail(name, "cannot be opened", errno);
  if (S_ISDIR(status.st_mode)) Fail(name, "cannot be read", EISDIR);
  const size_t expected = S_ISREG(status.st_mode) ? static_cast<size_t>(status.st_size) : 0;
  Progress progress("reading " + name, expected);
  std::string bytes;
  size_t size = 0;
  for (;;) {
    bytes.resize(std::max(size + kBlock, expected + 1));
    const ssize_t count = read(file.fd(), &bytes[size], std::min(kBlock, bytes.size() - size));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(name, "cannot be read", errno);
    if (count == 0) break;
    size += static_cast<size_t>(count);
    if (size > INT_MAX) {
      throw Failure(name + ": is larger than 2 GiB, the most that a record may take",
                    "Check that it is the file you meant.");
    }
    progress.Update(size);
  }
  bytes.resize(size);
  return bytes;
}

void WriteFile(const std::string& path, const Produce& produce) {
  const std::string name = OutputName(path);
  if (path == "-") return WriteInPlace(STDOUT_FILENO, produce, name);
  struct stat status;
  const bool exists = stat(path.c_str(), &status) == 0;
  if (!exists && errno == ELOOP) Fail(name, "cannot be written", ELOOP);
  if (exists && S_ISDIR(status.st_mode)) Fail(name, "cannot be written", EISDIR);
  if (exists && !S_ISREG(status.st_mode)) {
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) Fail(name, "cannot be opened", errno);
    return WriteInPlace(fd, produce, name);
  }
  Replace(name, Resolved(path), exists ? status.st_mode & 07777 : ModeForNewFiles(), produce);
}

void WriteFile(const std::string& path, const std::string& bytes) {
  WriteFile(path, Producer(OutputName(path), bytes));
}

void Print(const std::string& text) { WriteFile("-", text); }

void Note(const std::string& text) {
  std::fprintf(stderr, "calib: %s\n", PrintableLines(text).c_str());
}

}  // namespace calib
