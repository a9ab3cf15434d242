// The command calibration_protogen: its exit codes, what it says and what it writes.
#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/protogen/scratch.h"

namespace protogen {
namespace testing {
namespace {

const char kUsage[] =
    "usage: calibration_protogen --schema-root=DIR --schema=PATH_BELOW_ROOT --out=DIR\n";

const char kSchema[] =
    "syntax = \"proto2\";\n"
    "package zarvo.calibration.scratch;\n"
    "message A {\n"
    "  optional float x = 1;\n"
    "}\n";

const char kRefusedSchema[] =
    "syntax = \"proto2\";\n"
    "package zarvo.calibration.scratch;\n"
    "message A {\n"
    "  repeated int32 x = 1;\n"
    "  optional uint32 y = 2048;\n"
    "}\n";

CommandResult RunGenerator(const std::string& arguments) {
  return RunCommand(Quoted(PROTOGEN_COMMAND) + " " + arguments);
}

class CommandTest : public ::testing::Test {
 protected:
  CommandTest() {
    scratch_.Write("in/dir/a.proto", kSchema);
    scratch_.Write("out/dir/placeholder", "");
  }

  std::string In() const { return scratch_.path() + "/in"; }
  std::string Out() const { return scratch_.path() + "/out"; }
  std::string Arguments(const std::string& schema, const std::string& out) const {
    return "--schema-root=" + Quoted(In()) + " --schema=" + schema + " --out=" + Quoted(out);
  }
  bool Written(const std::string& file) const {
    return std::filesystem::exists(Out() + "/dir/" + file);
  }

  ScratchFolder scratch_;
};

TEST_F(CommandTest, WritesAllFilesAndSaysNothing) {
  const CommandResult result = RunGenerator(Arguments("dir/a.proto", Out()));
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.output, "");
  const std::string header = ReadFile(Out() + "/dir/a.pb.h");
  const std::string source = ReadFile(Out() + "/dir/a.pb.cc");
  EXPECT_NE(header.find("class ZARVO_CALIBRATION_EXPORT A\n"), std::string::npos) << header;
  EXPECT_NE(source.find("#include \"dir/a.pb.h\""), std::string::npos) << source;
  google::protobuf::FileDescriptorSet set;
  ASSERT_TRUE(set.ParseFromString(ReadFile(Out() + "/dir/a.desc")));
  ASSERT_EQ(set.file_size(), 1);
  EXPECT_EQ(set.file(0).name(), "dir/a.proto");
  EXPECT_EQ(set.file(0).message_type(0).name(), "A");
}

TEST_F(CommandTest, OptionsComeInAnyOrder) {
  const CommandResult result = RunGenerator("--out=" + Quoted(Out()) + " --schema=dir/a.proto " +
                                            "--schema-root=" + Quoted(In()));
  EXPECT_EQ(result.exit_code, 0) << result.output;
  EXPECT_TRUE(Written("a.pb.cc"));
}

TEST_F(CommandTest, WrongCommandLine) {
  const std::string root = "--schema-root=" + Quoted(In());
  const std::string schema = "--schema=dir/a.proto";
  const std::string out = "--out=" + Quoted(Out());
  const std::string usage = kUsage;
  const std::string all = root + " " + schema + " " + out;
  const struct {
    std::string arguments, output;
  } cases[] = {
      {"", kUsage},
      {schema + " " + out, kUsage},
      {root + " " + out, kUsage},
      {root + " " + schema, kUsage},
      {"--schema-root= " + schema + " " + out, kUsage},
      {root + " --schema= " + out, kUsage},
      {root + " " + schema + " --out=", kUsage},
      {all + " --verbose", "calibration_protogen: unknown argument --verbose\n" + usage},
      {all + " dir/b.proto", "calibration_protogen: unknown argument dir/b.proto\n" + usage},
      {root + " " + schema + " --out " + Quoted(Out()),
       "calibration_protogen: unknown argument --out\n" + usage},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    const CommandResult result = RunGenerator(c.arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_EQ(result.output, c.output);
    EXPECT_FALSE(Written("a.pb.h"));
    EXPECT_FALSE(Written("a.pb.cc"));
    EXPECT_FALSE(Written("a.desc"));
  }
}

TEST_F(CommandTest, RefusedSchema) {
  scratch_.Write("in/dir/a.proto", kRefusedSchema);
  const CommandResult result = RunGenerator(Arguments("dir/a.proto", Out()));
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.output,
            "dir/a.proto:4: A.x: repeated int32 is not served; only double, float and messages "
            "repeat\n"
            "dir/a.proto:5: A.y: field number 2048 is above 2047, the last whose tag takes two "
            "bytes\n"
            "dir/a.proto:5: A.y: type uint32 is not served; double, float, int32, int64, bool, "
            "string, bytes and messages are\n");
  EXPECT_FALSE(Written("a.pb.h"));
  EXPECT_FALSE(Written("a.pb.cc"));
}

TEST_F(CommandTest, SchemaThatIsNone) {
  scratch_.Write("in/dir/broken.proto", std::string(kSchema) + "message {\n");
  const struct {
    const char* schema;
    const char* place;  // the reason behind it is the run-time's
  } cases[] = {{"dir/nowhere.proto", "dir/nowhere.proto:0: "},
               {"dir/broken.proto", "dir/broken.proto:6: "}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.schema);
    const CommandResult result = RunGenerator(Arguments(c.schema, Out()));
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_TRUE(StartsWith(result.output, c.place)) << result.output;
    EXPECT_GT(result.output.size(), std::string(c.place).size() + 1);
  }
}

TEST_F(CommandTest, FolderThatIsNotThere) {
  const std::string out = Out() + "/nowhere";
  const CommandResult result = RunGenerator(Arguments("dir/a.proto", out));
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.output, "calibration_protogen: cannot write " + out +
                               "/dir/a.pb.h: No such file or directory\n");
}

// A full disk is noticed when the file is closed, not when it is opened.
TEST_F(CommandTest, FullDisk) {
  ASSERT_TRUE(std::filesystem::exists("/dev/full"));
  for (const std::string file : {"a.pb.h", "a.pb.cc", "a.desc"}) {
    const std::string path = Out() + "/dir/" + file;
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/full", path);
    const CommandResult result = RunGenerator(Arguments("dir/a.proto", Out()));
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.output,
              "calibration_protogen: cannot write " + path + ": No space left on device\n");
    std::filesystem::remove(path);
  }
}

}  // namespace
}  // namespace testing
}  // namespace protogen
