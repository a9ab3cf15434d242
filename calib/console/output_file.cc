#include "calib/console/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/progress.h"
#include "calib/console/system_error.h"

namespace calib {
namespace {

constexpr size_t kBlock = size_t{1} << 20;
constexpr size_t kSmall = size_t{1} << 16;  // what is below is gathered

// Writes all bytes; returns 0 or the error.
int WriteAll(int fd, const char* bytes, size_t size, const std::string& name) {
  Progress progress("writing " + name, size);
  for (size_t done = 0; done < size;) {
    const ssize_t written = write(fd, bytes + done, std::min(kBlock, size - done));
    if (written < 0 && errno != EINTR) return errno;
    if (written > 0) done += static_cast<size_t>(written);
    progress.Update(done);
  }
  return 0;
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

std::string FolderOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : name_(OutputName(path)) {
  if (path == "-") {
    file_ = std::make_unique<OpenFile>(STDOUT_FILENO);
    return;
  }
  struct stat status;
  const bool exists = stat(path.c_str(), &status) == 0;
  if (!exists && errno == ELOOP) FailForSystem(name_, "cannot be written", ELOOP);
  if (exists && S_ISDIR(status.st_mode)) FailForSystem(name_, "cannot be written", EISDIR);
  if (exists && !S_ISREG(status.st_mode)) {
    file_ = std::make_unique<OpenFile>(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (file_->fd() < 0) FailForSystem(name_, "cannot be opened", errno);
    return;
  }
  target_ = Resolved(path);
  mode_ = exists ? status.st_mode & 07777 : ModeForNewFiles();
  auto temporary = std::make_unique<TemporaryFile>(FolderOf(target_));
  if (temporary->fd() < 0) FailForSystem(name_, "cannot be created", errno);
  file_ = std::make_unique<OpenFile>(temporary->fd());
  temporary_ = std::move(temporary);
}

OutputFile::~OutputFile() {
  if (temporary_ != nullptr) unlink(temporary_->path().c_str());
}

void OutputFile::Write(const char* bytes, size_t size) {
  if (size < kSmall) {
    pending_.append(bytes, size);
    if (pending_.size() >= kSmall) FlushPending();
    return;
  }
  FlushPending();
  Flush(bytes, size);
}

void OutputFile::Commit() {
  FlushPending();
  const bool replaces = temporary_ != nullptr;
  int error = 0;
  if (replaces && (fchmod(file_->fd(), mode_) != 0 || fsync(file_->fd()) != 0)) error = errno;
  if (file_->Close() != 0 && error == 0) error = errno;
  if (replaces && error == 0 && rename(temporary_->path().c_str(), target_.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) Fail(error);
  temporary_.reset();
}

void OutputFile::FlushPending() {
  const std::string pending = std::exchange(pending_, "");
  Flush(pending.data(), pending.size());
}

void OutputFile::Flush(const char* bytes, size_t size) {
  const int error = WriteAll(file_->fd(), bytes, size, name_);
  if (error != 0) Fail(error);
}

void OutputFile::Fail(int error) {
  // There is no file of before to keep.
  if (temporary_ == nullptr && error == ENOSPC) {
    throw Failure(name_ + ": cannot be written: " + std::strerror(error), "Make room.");
  }
  FailForSystem(name_, "cannot be written", error);
}

}  // namespace calib
