// Whole files, though signals interrupt the system's calls and each moves a few bytes at most.
#include "calib/console/file.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

#include "calib/console/failure.h"

namespace {

// While it is on, every other call is interrupted, and the others move `most` bytes at most.
struct Interruptions {
  bool on = false;
  size_t most = 0;
  int calls = 0, interrupted = 0;

  // The bytes that a call moves; 0 if it is interrupted.
  size_t Allow(size_t size) {
    if (!on) return size;
    if (calls++ % 2 != 0) return std::min(size, most);
    ++interrupted;
    errno = EINTR;
    return 0;
  }
} reading, writing;

}  // namespace

// In place of the system's: the calls of the whole program end up here.
extern "C" ssize_t read(int fd, void* bytes, size_t size) {
  const size_t allowed = reading.Allow(size);
  return allowed == 0 && size > 0 ? -1 : syscall(SYS_read, fd, bytes, allowed);
}
extern "C" ssize_t write(int fd, const void* bytes, size_t size) {
  const size_t allowed = writing.Allow(size);
  return allowed == 0 && size > 0 ? -1 : syscall(SYS_write, fd, bytes, allowed);
}

namespace calib {
namespace {

class FileTest : public ::testing::Test {
 protected:
  void TearDown() override {
    reading = writing = Interruptions();
    std::remove(path_.c_str());
  }

  static void Begin(Interruptions* calls, size_t most) {
    *calls = Interruptions();
    calls->on = true;
    calls->most = most;
  }

  const std::string path_ = ::testing::TempDir() + "calib_file_test." + std::to_string(getpid());
  const std::string bytes_ = "0123456789abcdefghijklmnopqrstuvwxyz";
};

TEST_F(FileTest, InterruptedReadsGoOn) {
  WriteFile(path_, bytes_);
  for (const size_t most : {size_t{1}, size_t{7}, bytes_.size(), size_t{1000}}) {
    Begin(&reading, most);
    EXPECT_EQ(ReadFile(path_), bytes_) << most;
    EXPECT_GT(reading.interrupted, 1) << most;
  }
}

TEST_F(FileTest, InterruptedWritesGoOn) {
  for (const size_t most : {size_t{1}, size_t{7}, bytes_.size(), size_t{1000}}) {
    Begin(&writing, most);
    WriteFile(path_, bytes_);
    EXPECT_GT(writing.interrupted, 0) << most;
    writing.on = false;
    EXPECT_EQ(ReadFile(path_), bytes_) << most;
  }
}

}  // namespace
}  // namespace calib
