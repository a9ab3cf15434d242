// Text and JSON as calib writes them itself: read back they are the record, and they are written
// without being held.
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "calib/console/build_info.h"
#include "calib/fields/compare.h"
#include "calib/formats/codec.h"
#include "calibration_common/calibration.pb.h"
#include "tests/support/peak_memory.h"
#include "tests/support/random_record.h"

namespace calib {
namespace {

using google::protobuf::Message;
using zarvo::calibration::RobotCalibration;
using zarvo::calibration::testing::FillRandomly;
using zarvo::calibration::testing::RandomOptions;

constexpr Format kFormats[] = {Format::kText, Format::kJson};

void ExpectSame(const Message& record, const Message& read, const char* format) {
  const std::vector<Difference> differences = Compare(record, read, Tolerance());
  EXPECT_TRUE(differences.empty())
      << format << ": " << differences.front().path << ": " << differences.front().before
      << " became " << differences.front().after;
}

void ExpectReadBack(const Message& record, Message* read) {
  ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(Encode(Format::kText, record), read));
  ExpectSame(record, *read, "text");
  if (!kReadsJson) return;  // nor does the run-time
  read->Clear();
  ASSERT_NO_THROW(DecodeInto(Format::kJson, "", Encode(Format::kJson, record), read));
  ExpectSame(record, *read, "JSON");
}

TEST(WritersTest, AreReadBackAsTheRecord) {
  constexpr unsigned kSeed = 20240301;
  std::mt19937 random(kSeed);
  RandomOptions options;
  options.unknown_fields = false;
  options.only_text = true;
  for (int i = 0; i < 50; ++i) {
    SCOPED_TRACE("record " + std::to_string(i) + " of seed " + std::to_string(kSeed));
    RobotCalibration robot, read;
    FillRandomly(&random, options, &robot);
    ExpectReadBack(robot, &read);
  }
}

// The largest float as the run-time writes it is a larger number, which not every run-time reads.
TEST(WritersTest, NoFloatIsWrittenAsALargerOneThanThereIs) {
  constexpr float kLargest = std::numeric_limits<float>::max();
  for (const Format format : kFormats) {
    for (const float value : {kLargest, -kLargest, std::nextafter(kLargest, 0.0F)}) {
      zarvo::calibration::CameraIntrinsics camera;
      camera.add_sample_points()->set_img_y(value);
      const std::string text = Encode(format, camera);
      const size_t number = text.find_first_of("-0123456789");
      ASSERT_NE(number, std::string::npos) << text;
      const double written = std::strtod(&text[number], nullptr);
      EXPECT_EQ(value, static_cast<float>(written)) << text;
      EXPECT_LE(std::abs(written), double{kLargest}) << text;
    }
  }
}

// Every octet, so often that the text is written in pieces.
RobotCalibration WithLongTexts(size_t size) {
  std::string octets;
  for (int octet = 0; octet < 256; ++octet) octets += static_cast<char>(octet);
  RobotCalibration robot;
  robot.add_camera()->set_name("first");
  auto* camera = robot.add_camera();
  std::string* data = camera->mutable_intrinsics_image()->mutable_imgdata();
  while (data->size() < size) *data += octets;
  camera->mutable_intrinsics_image()->set_width(-5);
  camera->mutable_extrinsics()->add_a(0.1);
  camera->mutable_extrinsics()->add_a(-1e300);
  camera->set_name(std::string(size, 'x') + "\"\\\n'");
  camera->set_serial("short");
  return robot;
}

TEST(WritersTest, AreReadBackWithLongTexts) {
  RobotCalibration read;
  const RobotCalibration robot = WithLongTexts(size_t{3} << 19);
  ExpectReadBack(robot, &read);
  std::string printed;
  google::protobuf::TextFormat::Printer printer;
  printer.SetUseShortRepeatedPrimitives(true);
  ASSERT_TRUE(printer.PrintToString(robot, &printed));
  EXPECT_TRUE(Encode(Format::kText, robot) == printed);
}

TEST(WritersTest, HoldNothingOfTheSizeOfTheRecord) {
  constexpr size_t kSize = size_t{16} << 20;
  const RobotCalibration robot = WithLongTexts(kSize);
  for (const Format format : kFormats) {
    const zarvo::calibration::testing::PeakMemory memory;
    size_t written = 0;
    Encode(format, robot, [&](const char*, size_t size) { written += size; });
    EXPECT_GT(written, 2 * kSize) << NameOf(format);
    EXPECT_LT(memory.bytes(), kSize / 16) << NameOf(format);
  }
}

}  // namespace
}  // namespace calib
