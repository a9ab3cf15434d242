// What a file of another tool takes in memory while it is read, as files that mean harm have it,
// and while it becomes a record and its text: at most 40 bytes for each of its own and 20 MB,
// whether it is read or refused.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "calib/console/failure.h"
#include "calib/formats/codec.h"
#include "calib/tools/foreign.h"
#include "calib/tools/foreign_tree.h"
#include "calib/tools/importers.h"
#include "tests/support/peak_memory.h"

namespace calib {
namespace {

constexpr size_t kSize = 2000000;

// `begin`, as many of `piece` as make kSize bytes, and `end`.
std::string Repeat(const std::string& begin, const std::string& piece, const std::string& end) {
  std::string text = begin;
  while (text.size() < kSize) text += piece;
  return text + end;
}

// The same, with a number behind each piece.
std::string Count(const std::string& begin, const std::string& piece, const std::string& end) {
  std::string text = begin;
  for (int i = 0; text.size() < kSize; ++i) text += piece + std::to_string(i) + end;
  return text;
}

struct Case {
  const char* name;
  ForeignTree (*load)(const std::string& file, const std::string& text);
  std::string text;
  std::string refusal;  // a part of it; empty if the file is read
};

class ForeignMemoryTest : public ::testing::TestWithParam<Case> {};

TEST_P(ForeignMemoryTest, IsBoundedByTheFile) {
  const Case& given = GetParam();
  const zarvo::calibration::testing::PeakMemory memory;
  std::string refusal;
  try {
    given.load("file", given.text);
  } catch (const Failure& failure) {
    refusal = failure.what();
  }
  EXPECT_LE(memory.bytes(), 40 * given.text.size() + 20000000);
  EXPECT_EQ(refusal.empty(), given.refusal.empty()) << refusal;
  EXPECT_NE(refusal.find(given.refusal), std::string::npos) << refusal;
}

const char kHeldBack[] = "more than 32768 signs without a value";
const char kAliases[] = "the aliases up to here stand for more than the whole file";

INSTANTIATE_TEST_SUITE_P(
    Files, ForeignMemoryTest,
    ::testing::Values(
        Case{"Numbers", LoadYaml, Repeat("a: [", "1,", "1]\n"), ""},
        Case{"BlockNumbers", LoadYaml, Repeat("a:\n", "- 1\n", ""), ""},
        Case{"Keys", LoadYaml, Count("", "a", ":\n"), ""},
        Case{"Anchors", LoadYaml, Count("a:\n", "- &a", "\n"), ""},
        Case{"Json", LoadYaml, Repeat("{\"a\": [", "{},", "1]}\n"), ""},
        Case{"ListThatMayBeAKey", LoadYaml, Repeat("- [", "1,", "1]\n"), kHeldBack},
        Case{"MapThatMayBeAKey", LoadYaml, Repeat("? {", "a,", "b}\n"), kHeldBack},
        Case{"TextsThatMayBeAKey", LoadYaml, Repeat("- [", "'' ", "]\n"), kHeldBack},
        Case{"Text", LoadYaml, Repeat("a: '", "ab / + = ", "'\n"), ""},
        Case{"TextOfLines", LoadYaml, Repeat("a: |\n", "  ZGRk\n", ""), ""},
        Case{"Commented", LoadYaml, Repeat("# a comment\n{a: [", "1,", "1]}\n"), ""},
        Case{"AliasesOfText", LoadYaml,
             Repeat("a: &a " + std::string(10000, 'x') + "\nb: [", "*a ,", "1]\n"), kAliases},
        Case{"AliasesOfAList", LoadYaml, Repeat("a: &a [x, y, z]\nb: [", "*a ,", "1]\n"), kAliases},
        Case{"Comments", LoadXml, Repeat("<opencv_storage>", "<!---->", "</opencv_storage>"), ""},
        Case{"Elements", LoadXml, Repeat("<opencv_storage>", "<a/>", "</opencv_storage>"), ""},
        Case{"ListedElements", LoadXml,
             Repeat("<opencv_storage><a>", "<_/>", "</a></opencv_storage>"), ""},
        Case{"ListedNumbers", LoadXml,
             Repeat("<opencv_storage><a>", "<_>1</_>", "</a></opencv_storage>"), ""},
        Case{"Pieces", LoadXml, Repeat("<opencv_storage><a>", "1 ", "</a></opencv_storage>"), ""}),
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

// As many points as a file of that size can have, each of which becomes a message and many lines.
TEST(ImportMemoryTest, IsBoundedByTheFileToTheTextOfTheRecord) {
  constexpr int kPoints = 1250000;
  std::string file =
      "K: {rows: 3, cols: 3, dt: d, data: [1, 0, 1, 0, 1, 1, 0, 0, 1]}\n"
      "grid_points: {rows: 1, cols: 1, dt: 3f, data: [1, 1, 1]}\n"
      "image_points:\n  rows: " +
      std::to_string(kPoints) + "\n  cols: 1\n  dt: 2f\n  data: [1,1";
  for (int i = 1; i < kPoints; ++i) file += ",1,1";
  file += "]\n";
  const size_t size = file.size();
  const zarvo::calibration::testing::PeakMemory memory;
  zarvo::calibration::RobotCalibration robot;
  ImportOpenCv({Foreign::Parse("file", std::move(file))}, nullptr, &robot);
  EXPECT_EQ(robot.camera(0).intrinsics().sample_points_size(), kPoints);
  EXPECT_LE(memory.bytes(), 40 * size + 20000000) << "while it is imported";
  Encode(Format::kText, robot, [](const char*, size_t) {});
  EXPECT_LE(memory.bytes(), 40 * size + 20000000) << "while the text is written";
  RecordProperty("bytes_per_byte",
                 std::to_string(static_cast<double>(memory.bytes()) / static_cast<double>(size)));
}

}  // namespace
}  // namespace calib
