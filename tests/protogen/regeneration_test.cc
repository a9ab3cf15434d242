// The committed classes and descriptor set are what the generator makes of the committed schema.
#include <gtest/gtest.h>

#include <string>

#include "tests/protogen/scratch.h"

namespace protogen {
namespace testing {
namespace {

constexpr int kShownLines = 40;

// The lines of a unified diff, as far as a reader wants them in a test's output.
std::string DiffHead(const std::string& committed, const std::string& regenerated) {
  const std::string diff = RunCommand("diff -u --label committed --label regenerated " +
                                      Quoted(committed) + " " + Quoted(regenerated))
                               .output;
  size_t end = 0;
  for (int line = 0; line < kShownLines && end != std::string::npos; ++line) {
    end = diff.find('\n', end + (line > 0));
  }
  return end == std::string::npos ? diff : diff.substr(0, end) + "\n(and more)";
}

TEST(RegenerationTest, CommittedFilesAreUpToDate) {
  const std::string root = PROTOGEN_SOURCE_DIR;
  ScratchFolder scratch;
  scratch.Write("calibration_common/placeholder", "");
  const CommandResult generator =
      RunCommand(Quoted(PROTOGEN_COMMAND) + " --schema-root=" + Quoted(root) +
                 " --schema=calibration_common/calibration.proto --out=" + Quoted(scratch.path()));
  ASSERT_EQ(generator.exit_code, 0) << generator.output;
  for (const std::string name : {"calibration.pb.h", "calibration.pb.cc", "calibration.desc"}) {
    const std::string committed = root + "/calibration_common/" + name;
    const std::string regenerated = scratch.path() + "/calibration_common/" + name;
    // Not EXPECT_EQ, which would print both files.
    EXPECT_TRUE(ReadFile(committed) == ReadFile(regenerated))
        << "calibration_common/" << name
        << " is not what the generator makes of calibration_common/calibration.proto.\n"
        << "Refresh it with: cmake --build BUILD_FOLDER --target generate\n"
        << "docs/extending.md tells what else a new field or message needs.\n"
        << DiffHead(committed, regenerated);
  }
}

}  // namespace
}  // namespace testing
}  // namespace protogen
