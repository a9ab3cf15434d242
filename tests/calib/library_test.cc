// The importers and exporters as programs have them, by the shared library alone.
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <set>
#include <sstream>

#include "calib/library/calibration_formats.h"
#include "calib/library/calibration_formats_c.h"
#include "tests/support/allocations.h"

namespace zarvo {
namespace calibration_formats {
namespace {

using calibration::RobotCalibration;

std::string TextOf(const std::string& name) {
  std::ifstream file(std::string(INPUTS) + "/" + name);
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_GT(text.str().size(), 0U) << name;
  return text.str();
}

RobotCalibration Pair() {
  RobotCalibration robot;
  EXPECT_TRUE(
      google::protobuf::TextFormat::ParseFromString(TextOf("pair.RobotCalibration.txtpb"), &robot));
  return robot;
}

TEST(FormatsTest, ReadWhatTheContentTells) {
  const struct {
    const char *file, *format;
    int cameras;
  } cases[] = {{"left.camera_info.yaml", "ros", 1},  {"camchain.yaml", "kalibr", 2},
               {"opencv.yml", "opencv", 1},          {"sensor.yaml", "euroc", 1},
               {"left.cameramodel", "mrcal", 1},     {"basalt.json", "basalt", 2},
               {"cameras.txt", "colmap", 4},         {"camodocal.yaml", "camodocal", 1},
               {"depthai.json", "depthai", 2},       {"orbslam3.yaml", "orbslam3", 2},
               {"transforms.json", "nerfstudio", 1}, {"drive.mcap", "mcap", 2}};
  std::vector<std::string> read;
  for (const auto& given : cases) {
    SCOPED_TRACE(given.file);
    RobotCalibration robot;
    const Outcome outcome = ReadText("", TextOf(given.file), &robot);
    EXPECT_EQ(outcome.status, Status::kOk) << outcome.error;
    EXPECT_EQ(outcome.format, given.format);
    EXPECT_EQ(robot.camera_size(), given.cameras);
    RobotCalibration named;
    EXPECT_EQ(ReadText(given.format, TextOf(given.file), &named).status, Status::kOk);
    EXPECT_EQ(named.SerializeAsString(), robot.SerializeAsString());
    read.push_back(given.format);
  }
  EXPECT_EQ(read, ReadableFormats()) << "each is read here";
}

TEST(FormatsTest, ReadTheTwoFilesOfAPair) {
  RobotCalibration robot;
  const Outcome outcome = Read(
      {{"intrinsics.yml", TextOf("intrinsics.yml")}, {"extrinsics.yml", TextOf("extrinsics.yml")}},
      {}, &robot);
  EXPECT_EQ(outcome.status, Status::kOk) << outcome.error;
  EXPECT_EQ(robot.camera_size(), 2);
}

// What a record's pair is written as is read again as the same lenses.
TEST(FormatsTest, WriteWhatIsReadAgain) {
  const RobotCalibration robot = Pair();
  const std::set<std::string> readable = {"ros",        "kalibr",    "opencv", "opencv-stereo",
                                          "openvins",   "camodocal", "mrcal",  "colmap",
                                          "colmap-rig", "mcap"};
  for (const std::string& format : WritableFormats()) {
    SCOPED_TRACE(format);
    std::vector<File> files;
    const Outcome outcome = Write(robot, format, {}, &files);
    if (format == "basalt") {  // which has no such lens
      EXPECT_EQ(outcome.status, Status::kRefused);
      continue;
    }
    ASSERT_EQ(outcome.status, Status::kOk) << outcome.error;
    EXPECT_EQ(outcome.format, format);
    EXPECT_FALSE(files.empty());
    if (readable.count(format) == 0) continue;
    std::vector<std::vector<File>> pieces;  // that are read at once
    for (const File& file : files) {
      if (file.text.find("body_T_cam") == std::string::npos) pieces.push_back({file});
    }
    if (format == "opencv-stereo") pieces = {files};
    RobotCalibration again;
    for (const std::vector<File>& piece : pieces) {
      RobotCalibration some;
      const Outcome read = Read(piece, {}, &some);
      ASSERT_EQ(read.status, Status::kOk) << read.error;
      again.MergeFrom(some);
    }
    ASSERT_EQ(again.camera_size(), 2);
    for (int i = 0; i < 2; ++i) {
      const auto &was = robot.camera(i).intrinsics(), &is = again.camera(i).intrinsics();
      EXPECT_EQ(is.fx(), was.fx());
      EXPECT_EQ(is.cx(), was.cx());
      EXPECT_EQ(is.k(0), was.k(0));
      EXPECT_EQ(is.p(1), was.p(1));
    }
  }
}

TEST(FormatsTest, WriteCameraInfoOfARectifiedCamera) {
  const RobotCalibration robot = Pair();
  WriteOptions options;
  options.rectification = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  options.projection = {400, 0, 320, -44.5, 0, 400, 240, 0, 0, 0, 1, 0};
  std::string text;
  const Outcome outcome = WriteCameraInfo(robot.camera(1), options, &text);
  EXPECT_EQ(outcome.status, Status::kOk) << outcome.error;
  EXPECT_NE(text.find("data: [400.0, 0.0, 320.0, -44.5,"), std::string::npos) << text;
  EXPECT_NE(text.find("camera_name: right"), std::string::npos);
}

TEST(FormatsTest, RefuseWithThePlaceAndLeaveTheResultAlone) {
  RobotCalibration robot;
  robot.add_camera()->set_name("kept");
  const std::string before = robot.SerializePartialAsString();
  const struct {
    const char *format, *text, *error;
  } reads[] = {
      {"", "a: 1", "the text: is of no tool that is known"},
      {"lisp", "a: 1", "format: 'lisp' is none that is read"},
      {"ros", "a: [1", "the text:"},
      {"kalibr", "cam0: {camera_model: pinhole}", "the text:1:7: cam0: has no"},
      {"ros", "", "the text: "},
  };
  for (const auto& given : reads) {
    const Outcome outcome = ReadText(given.format, given.text, &robot);
    EXPECT_EQ(outcome.status, Status::kRefused);
    EXPECT_EQ(outcome.error.compare(0, std::string(given.error).size(), given.error), 0)
        << outcome.error;
  }
  EXPECT_EQ(Read({}, {}, &robot).error, "no file to read");
  EXPECT_EQ(robot.SerializePartialAsString(), before);

  WriteOptions bent, framed;
  bent.rectification = {1};
  framed.frame = "a\"b";
  const struct {
    const char* format;
    RobotCalibration robot;
    WriteOptions options;
    const char* error;
  } writes[] = {
      {"lisp", Pair(), {}, "format: 'lisp' is none that is written"},
      {"ros", Pair(), {}, "the record: becomes 2 files; Write() gives them all"},
      {"ros", {}, {}, "the record: has 0 cameras, but ROS camera_info are of 1"},
      {"ros", robot, {}, "camera[0].intrinsics.fx is not set"},
      {"kalibr", Pair(), bent, "rectification and projection: have 1 and 0 numbers"},
      {"urdf", Pair(), framed, "'a\"b' is no name of a frame"},
  };
  for (const auto& given : writes) {
    std::string text = "kept";
    const Outcome outcome = WriteText(given.format, given.robot, given.options, &text);
    EXPECT_EQ(outcome.status, Status::kRefused);
    EXPECT_EQ(outcome.error.compare(0, std::string(given.error).size(), given.error), 0)
        << outcome.error;
    EXPECT_EQ(text, "kept");
  }
}

// A lens that a record cannot hold is refused, or told to be lost.
TEST(FormatsTest, LoseALensOnlyIfAsked) {
  RobotCalibration robot;
  ReadOptions options;
  Outcome outcome = Read({{"omni.yaml", TextOf("omni.yaml")}}, options, &robot);
  EXPECT_EQ(outcome.status, Status::kRefused);
  EXPECT_EQ(outcome.error.compare(0, 15, "omni.yaml:6:15:"), 0) << outcome.error;
  EXPECT_EQ(robot.camera_size(), 0);
  options.lossy = true;
  outcome = Read({{"omni.yaml", TextOf("omni.yaml")}}, options, &robot);
  EXPECT_EQ(outcome.status, Status::kOk) << outcome.error;
  EXPECT_EQ(robot.camera_size(), 1);
  bool told = false;
  for (const Note& note : outcome.notes) told = told || note.kind == Note::Kind::kLost;
  EXPECT_TRUE(told);
}

// Whichever allocation fails, nothing is thrown.
TEST(FormatsTest, SayThatThereIsNoMemory) {
  using calibration::testing::FailingAllocation;
  const RobotCalibration robot = Pair();
  const std::string chain = TextOf("camchain.yaml");
  const auto read_and_write = [&] {
    RobotCalibration some;
    std::string text;
    const Status read = ReadKalibr(chain, &some).status;
    return read == Status::kOk ? WriteText("kalibr", robot, {}, &text).status : read;
  };
  const long before = calibration::testing::Allocations();
  ASSERT_EQ(read_and_write(), Status::kOk);
  const long allocations = calibration::testing::Allocations() - before;
  for (long n = 1; n <= allocations; n += 1 + allocations / 100) {
    const FailingAllocation failing(n, FailingAllocation::kForGood);
    ASSERT_EQ(read_and_write(), Status::kNoMemory) << "allocation " << n;
  }
}

// --- The functions for C -------------------------------------------------------------------------

struct Free {
  void operator()(const calibration_formats_result* result) const {
    calibration_formats_free(result);
  }
};
using CResult = std::unique_ptr<const calibration_formats_result, Free>;

CResult CRead(const std::string& name, const calibration_formats_read_options* options) {
  const std::string text = TextOf(name);
  const calibration_formats_file file = {name.c_str(), text.data(), text.size()};
  return CResult(calibration_formats_read(&file, 1, options));
}

void ExpectNotes(const calibration_formats_result& result, const std::vector<Note>& notes) {
  ASSERT_EQ(result.note_count, notes.size());
  for (size_t i = 0; i < notes.size(); ++i) {
    EXPECT_EQ(result.notes[i].kind, static_cast<int>(notes[i].kind));
    EXPECT_EQ(result.notes[i].text, notes[i].text);
  }
}

TEST(CFormatsTest, NameTheSameFormats) {
  std::vector<std::string> readable, writable;
  while (const char* name = calibration_formats_readable(readable.size())) readable.push_back(name);
  while (const char* name = calibration_formats_writable(writable.size())) writable.push_back(name);
  EXPECT_EQ(readable, ReadableFormats());
  EXPECT_EQ(writable, WritableFormats());
}

TEST(CFormatsTest, ReadTheSame) {
  for (const bool lossy : {false, true}) {
    for (const char* name : {"left.camera_info.yaml", "camchain.yaml", "omni.yaml", "drive.mcap"}) {
      SCOPED_TRACE(name);
      RobotCalibration robot;
      ReadOptions options;
      options.lossy = lossy;
      const Outcome outcome = Read({{name, TextOf(name)}}, options, &robot);
      const calibration_formats_read_options c_options = {nullptr, nullptr, lossy ? 1 : 0};
      const CResult result = CRead(name, &c_options);
      EXPECT_EQ(result->status, static_cast<int>(outcome.status));
      EXPECT_EQ(result->error, outcome.error);
      EXPECT_EQ(result->format, outcome.format);
      ExpectNotes(*result, outcome.notes);
      ASSERT_EQ(result->file_count, outcome.status == Status::kOk ? 1U : 0U);
      if (result->file_count == 0) continue;
      EXPECT_EQ(std::string(result->files[0].bytes, result->files[0].size),
                robot.SerializeAsString());
    }
  }
  const calibration_formats_read_options wrong = {"lisp", nullptr, 0}, lens = {"ros", "omni", 0};
  EXPECT_STREQ(CRead("camchain.yaml", &wrong)->error,
               "format: 'lisp' is none that is read; ReadableFormats() lists those");
  EXPECT_EQ(std::string(CRead("left.camera_info.yaml", &lens)->error).substr(0, 17),
            "lens: is 'omni', ");
  const CResult none(calibration_formats_read(nullptr, 0, nullptr));
  EXPECT_STREQ(none->error, "no file to read");
}

TEST(CFormatsTest, WriteTheSame) {
  const RobotCalibration robot = Pair();
  const std::string record = robot.SerializeAsString();
  for (const std::string& format : WritableFormats()) {
    SCOPED_TRACE(format);
    std::vector<File> files;
    const Outcome outcome = Write(robot, format, {}, &files);
    const CResult result(
        calibration_formats_write(format.c_str(), record.data(), record.size(), nullptr));
    EXPECT_EQ(result->status, static_cast<int>(outcome.status));
    EXPECT_EQ(result->error, outcome.error);
    ExpectNotes(*result, outcome.notes);
    ASSERT_EQ(result->file_count, files.size());
    for (size_t i = 0; i < files.size(); ++i) {
      EXPECT_EQ(result->files[i].name, files[i].name);
      EXPECT_EQ(std::string(result->files[i].bytes, result->files[i].size), files[i].text);
    }
  }
}

TEST(CFormatsTest, WriteWithAllOptions) {
  RobotCalibration robot;
  *robot.add_camera() = Pair().camera(0);
  robot.mutable_camera(0)->clear_name();
  robot.mutable_camera(0)->mutable_intrinsics()->clear_width();
  robot.mutable_camera(0)->mutable_intrinsics()->clear_height();
  const std::string record = robot.SerializeAsString();
  WriteOptions options;
  options.lens = "plumb_bob";
  options.width = 752;
  options.height = 480;
  options.name = "front";
  options.rectification = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  options.projection = {400, 0, 320, -44.5, 0, 400, 240, 0, 0, 0, 1, 0};
  calibration_formats_write_options c_options = {};
  c_options.lens = "plumb_bob";
  c_options.width = 752;
  c_options.height = 480;
  c_options.name = "front";
  c_options.rectification = options.rectification.data();
  c_options.projection = options.projection.data();
  std::string text;
  ASSERT_EQ(WriteText("ros", robot, options, &text).status, Status::kOk);
  const CResult result(
      calibration_formats_write_text("ros", record.data(), record.size(), &c_options));
  ASSERT_EQ(result->file_count, 1U) << result->error;
  EXPECT_STREQ(result->files[0].name, "");
  EXPECT_EQ(std::string(result->files[0].bytes, result->files[0].size), text);
}

TEST(CFormatsTest, RefuseWhatIsNoRecord) {
  RobotCalibration incomplete;
  incomplete.add_camera()->mutable_intrinsics()->set_fx(1);
  const std::string records[] = {"\x0a\x05", incomplete.SerializePartialAsString()};
  const char* errors[] = {"the record: holds no RobotCalibration",
                          "the record: misses camera[0].intrinsics.fy"};
  for (size_t i = 0; i < 2; ++i) {
    const CResult result(
        calibration_formats_write("ros", records[i].data(), records[i].size(), nullptr));
    EXPECT_EQ(result->status, static_cast<int>(Status::kRefused));
    EXPECT_EQ(std::string(result->error).compare(0, std::string(errors[i]).size(), errors[i]), 0)
        << result->error;
    EXPECT_EQ(result->file_count, 0U);
  }
}

TEST(CFormatsTest, SayThatThereIsNoMemory) {
  using calibration::testing::FailingAllocation;
  const std::string chain = TextOf("camchain.yaml");
  const calibration_formats_file file = {"camchain.yaml", chain.data(), chain.size()};
  const auto read_and_write = [&] {
    const CResult read(calibration_formats_read(&file, 1, nullptr));
    if (read->status != 0) return read->status;
    const calibration_formats_file& record = read->files[0];
    const CResult written(calibration_formats_write("kalibr", record.bytes, record.size, nullptr));
    return written->status;
  };
  const long before = calibration::testing::Allocations();
  ASSERT_EQ(read_and_write(), 0);
  const long allocations = calibration::testing::Allocations() - before;
  for (long n = 1; n <= allocations; n += 1 + allocations / 100) {
    const FailingAllocation failing(n, FailingAllocation::kForGood);
    ASSERT_EQ(read_and_write(), static_cast<int>(Status::kNoMemory)) << "allocation " << n;
  }
}

}  // namespace
}  // namespace calibration_formats
}  // namespace zarvo
