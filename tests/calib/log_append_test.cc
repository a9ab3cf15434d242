// Appending to a log while the command is killed, or the disk is full, behind every byte: the
// records ahead stay whole, and the next append cuts off what is left behind.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "calib/console/failure.h"
#include "calib/formats/binary_codec.h"
#include "calib/formats/log_appender.h"
#include "calibration_common/calibration.pb.h"

namespace {

enum class Fault { kNone, kSlow, kKilled, kFull };
Fault fault = Fault::kNone;
size_t room = 0;  // bytes that can be written until then

}  // namespace

// In place of the system's, which writes three bytes at most at a time.
extern "C" ssize_t pwrite(int fd, const void* bytes, size_t size, off_t offset) {
  if (fault == Fault::kSlow) usleep(2000);
  if (fault == Fault::kNone || fault == Fault::kSlow)
    return syscall(SYS_pwrite64, fd, bytes, size, offset);
  if (room == 0 && fault == Fault::kKilled) _exit(9);
  if (room == 0) {
    errno = ENOSPC;
    return -1;
  }
  const size_t written = std::min({size, room, size_t{3}});
  room -= written;
  return syscall(SYS_pwrite64, fd, bytes, written, offset);
}

namespace calib {
namespace {

using zarvo::calibration::FocusCheckProto;

std::string Encoded(const std::string& name) {
  FocusCheckProto check;
  check.set_name(name);
  check.add_bins(0.5f);
  return EncodeBinary(check);
}

class LogAppendTest : public ::testing::Test {
 protected:
  LogAppendTest() : path_(::testing::TempDir() + "log_append_test." + std::to_string(getpid())) {}
  ~LogAppendTest() override { std::remove(path_.c_str()); }

  void Append(const std::string& record) {
    LogAppender appender(path_, FocusCheckProto::descriptor(), false);
    appender.Append("record", record);
    appender.Commit();
  }
  void Write(const std::string& bytes) {
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << bytes;
  }
  std::string Read() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  // What the call says on standard error.
  template <class Call>
  static std::string Told(Call call) {
    ::testing::internal::CaptureStderr();
    call();
    return ::testing::internal::GetCapturedStderr();
  }

  const std::string path_;
  const std::string first_ = Encoded("first"), second_ = Encoded("the second");
  const std::string whole_ = FrameRecord(first_) + FrameRecord(first_);
};

TEST_F(LogAppendTest, WhoIsKilledBehindAnyByteLeavesTheRecordsAheadWhole) {
  const std::string added = FrameRecord(second_);
  for (const std::string& before : {std::string(), whole_}) {
    for (size_t bytes = 0; bytes <= added.size(); ++bytes) {
      SCOPED_TRACE("killed behind " + std::to_string(bytes));
      before.empty() ? void(std::remove(path_.c_str())) : Write(before);
      const pid_t child = fork();
      if (child == 0) {
        fault = Fault::kKilled;
        room = bytes;
        Append(second_);
        _exit(0);
      }
      int status = 0;
      ASSERT_EQ(waitpid(child, &status, 0), child);
      ASSERT_EQ(WEXITSTATUS(status), bytes < added.size() ? 9 : 0);
      ASSERT_EQ(Read(), before + added.substr(0, bytes));
      const bool torn = bytes > 0 && bytes < added.size();
      EXPECT_EQ(Told([&] { Append(first_); }).empty(), !torn);
      EXPECT_EQ(Read(), before + (bytes < added.size() ? "" : added) + FrameRecord(first_));
    }
  }
}

TEST_F(LogAppendTest, ADiskThatIsFullBehindAnyByteLeavesTheLogAsItWas) {
  const std::string added = FrameRecord(second_) + FrameRecord(second_);
  for (size_t bytes = 0; bytes < added.size(); ++bytes) {
    SCOPED_TRACE("full behind " + std::to_string(bytes));
    Write(whole_);
    fault = Fault::kFull;
    room = bytes;
    EXPECT_THROW(
        {
          LogAppender appender(path_, FocusCheckProto::descriptor(), false);
          appender.Append("record", second_);
          appender.Append("record", second_);
        },
        Failure);
    fault = Fault::kNone;
    EXPECT_EQ(Read(), whole_);
  }
}

TEST_F(LogAppendTest, WhatIsNotCommittedIsTakenBack) {
  Write(whole_);
  {
    LogAppender appender(path_, FocusCheckProto::descriptor(), false);
    appender.Append("record", second_);
    EXPECT_EQ(appender.records(), 3);
    EXPECT_EQ(Read(), whole_ + FrameRecord(second_));
  }
  EXPECT_EQ(Read(), whole_);
}

// Writers at once: each record is there, whole.
TEST_F(LogAppendTest, WritersWaitForEachOther) {
  constexpr int kWriters = 4, kRecords = 5;
  for (int writer = 0; writer < kWriters; ++writer) {
    if (fork() != 0) continue;
    fault = Fault::kSlow;  // so that others come while one is at work
    try {
      for (int i = 0; i < kRecords; ++i) Append(second_);
    } catch (const Failure&) {
      _exit(1);
    }
    _exit(0);
  }
  int status = 0;
  for (int writer = 0; writer < kWriters; ++writer) {
    ASSERT_GT(wait(&status), 0);
    EXPECT_EQ(status, 0);
  }
  std::string expected;
  for (int i = 0; i < kWriters * kRecords; ++i) expected += FrameRecord(second_);
  EXPECT_EQ(Read(), expected);
}

}  // namespace
}  // namespace calib
