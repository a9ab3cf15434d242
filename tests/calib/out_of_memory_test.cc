// A command that gets no memory says so, and leaves nothing behind.
#include "calib/console/out_of_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

#include "calib/console/failure.h"
#include "calib/console/temporary_file.h"

namespace calib {
namespace {

// What operator new does when it fails; a sanitizer's own ends the process instead.
void FailToAllocate() {
  const std::new_handler handler = std::get_new_handler();
  if (handler != nullptr) handler();
}

TEST(OutOfMemoryTest, EndsWithTrouble) {
  EXPECT_EXIT(
      {
        EndWhenOutOfMemory();
        FailToAllocate();
      },
      ::testing::ExitedWithCode(kTrouble), "^calib: out of memory\n");
}

TEST(OutOfMemoryTest, RemovesTheTemporaryFile) {
  std::string folder = ::testing::TempDir() + "calib-XXXXXX";
  ASSERT_NE(mkdtemp(folder.data()), nullptr) << folder;
  EXPECT_EXIT(
      {
        EndWhenOutOfMemory();
        const TemporaryFile file(folder + "/");
        std::fprintf(stderr, "%s\n", file.fd() < 0 ? "no file" : "a file");
        FailToAllocate();
      },
      ::testing::ExitedWithCode(kTrouble), "^a file\ncalib: out of memory\n");
  EXPECT_TRUE(std::filesystem::is_empty(folder));
  std::filesystem::remove_all(folder);
}

TEST(OutOfMemoryTest, RemovesNoFileThatIsNoLongerTemporary) {
  const std::string path = [] {
    const TemporaryFile file("");
    close(file.fd());
    return file.path();
  }();
  TemporaryFile::RemoveIfThere();
  EXPECT_EQ(access(path.c_str(), F_OK), 0);
  unlink(path.c_str());
}

}  // namespace
}  // namespace calib
