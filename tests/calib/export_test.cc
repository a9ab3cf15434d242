// Cameras for other tools: the model that coefficients are written as, what is refused, and values
// that every reader of YAML takes for what they are.
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <limits>
#include <string>
#include <vector>

#include "calib/console/failure.h"
#include "calib/tools/exporters.h"
#include "calib/tools/foreign.h"
#include "calib/tools/importers.h"
#include "calib/tools/yaml_values.h"

namespace calib {
namespace {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

CameraCalibration Camera(const std::string& rest) {
  CameraCalibration camera;
  EXPECT_TRUE(google::protobuf::TextFormat::MergeFromString(
      "intrinsics { fx: 400 fy: 401 skew: 0 cx: 320 cy: 240 width: 640 height: 480 }" + rest,
      &camera));
  return camera;
}

CameraCalibration WithCoefficients(int k, int p) {
  CameraCalibration camera = Camera("");
  for (int i = 0; i < k; ++i) camera.mutable_intrinsics()->add_k(0.1 * (i + 1));
  for (int i = 0; i < p; ++i) camera.mutable_intrinsics()->add_p(0.01 * (i + 1));
  return camera;
}

// The file, or what it was refused with.
std::string Export(const CameraCalibration& camera, const std::string& option) {
  try {
    const std::string place = "file: intrinsics";
    const LensModel& model = CameraInfoModel(camera.intrinsics(), place,
                                             option.empty() ? nullptr : FindLensModel(option));
    return CameraInfo(camera, "file:", place, model, [](const Leftover&) {});
  } catch (const Failure& failure) {
    return std::string("refused: ") + failure.what() + " " + failure.remedy();
  }
}

struct ModelCase {
  int k, p;
  const char* option;  // "" for auto
  const char* model;   // "" if it is refused
};

TEST(ExportTest, WritesTheModelThatTheNumbersTell) {
  const ModelCase cases[] = {
      {0, 0, "", "plumb_bob"},
      {1, 0, "", "plumb_bob"},
      {2, 2, "", "plumb_bob"},
      {3, 0, "", "plumb_bob"},
      {3, 2, "", "plumb_bob"},
      {4, 0, "", "equidistant"},
      {4, 1, "", "rational_polynomial"},
      {4, 2, "", "rational_polynomial"},
      {5, 0, "", "rational_polynomial"},
      {6, 2, "", "rational_polynomial"},
      {7, 0, "", ""},
      {2, 3, "", ""},
      {2, 2, "plumb_bob", "plumb_bob"},
      {2, 2, "radtan", "plumb_bob"},
      {2, 2, "rational_polynomial", "rational_polynomial"},
      {2, 2, "equidistant", ""},
      {4, 0, "fisheye", "equidistant"},
      {4, 0, "rational_polynomial", ""},
      {4, 0, "plumb_bob", ""},
      {4, 2, "plumb_bob", ""},
      {4, 2, "equidistant", ""},
      {2, 0, "equidistant", "equidistant"},
      {0, 0, "equidistant", "equidistant"},
  };
  for (const ModelCase& given : cases) {
    SCOPED_TRACE(std::to_string(given.k) + " k, " + std::to_string(given.p) + " p, " +
                 given.option);
    const std::string file = Export(WithCoefficients(given.k, given.p), given.option);
    if (*given.model == '\0') {
      EXPECT_EQ(file.compare(0, 30, "refused: file: intrinsics: has"), 0) << file;
    } else {
      EXPECT_NE(file.find("distortion_model: " + std::string(given.model) + "\n"),
                std::string::npos)
          << file;
    }
  }
}

// What was written is brought in again as it was, but for coefficients that the file has as 0.
TEST(ExportTest, IsImportedAsTheSameLens) {
  for (const auto& [k, p] : std::vector<std::pair<int, int>>{{3, 2}, {6, 2}, {4, 0}}) {
    const CameraCalibration camera = WithCoefficients(k, p);
    RobotCalibration robot;
    ImportCameraInfo(Foreign::Parse("file", Export(camera, "")), nullptr, &robot);
    EXPECT_EQ(robot.camera(0).SerializeAsString(), camera.SerializeAsString()) << k << " k";
  }
}

struct WrongCase {
  const char* where;
  double value;
  void (*set)(CameraIntrinsics* intrinsics, double value);
};

TEST(ExportTest, RefusesWhatNoCameraHas) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  using I = CameraIntrinsics;
  const WrongCase cases[] = {
      {"fx is nan", nan, [](I* in, double value) { in->set_fx(value); }},
      {"fx is inf", inf, [](I* in, double value) { in->set_fx(value); }},
      {"fx is -400", -400, [](I* in, double value) { in->set_fx(value); }},
      {"fx is 0", 0, [](I* in, double value) { in->set_fx(value); }},
      {"fy is -inf", -inf, [](I* in, double value) { in->set_fy(value); }},
      {"fy is -1", -1, [](I* in, double value) { in->set_fy(value); }},
      {"skew is nan", nan, [](I* in, double value) { in->set_skew(value); }},
      {"cx is inf", inf, [](I* in, double value) { in->set_cx(value); }},
      {"cy is -inf", -inf, [](I* in, double value) { in->set_cy(value); }},
      {"k[1] is nan", nan, [](I* in, double value) { in->set_k(1, value); }},
      {"p[0] is inf", inf, [](I* in, double value) { in->set_p(0, value); }},
      {"width is -640", 0, [](I* in, double) { in->set_width(-640); }},
      {"width is 0", 0, [](I* in, double) { in->set_width(0); }},
      {"height is -1", 0, [](I* in, double) { in->set_height(-1); }},
  };
  for (const WrongCase& given : cases) {
    CameraCalibration camera = WithCoefficients(2, 2);
    given.set(camera.mutable_intrinsics(), given.value);
    const std::string file = Export(camera, "");
    const std::string expected = "refused: file: intrinsics." + std::string(given.where) + ",";
    EXPECT_EQ(file.compare(0, expected.size(), expected), 0) << given.where << ": " << file;
  }
  // A principal point may lie outside the image.
  EXPECT_EQ(Export(Camera("intrinsics { cx: -5 cy: 1e6 skew: -1 }"), "").find("refused"),
            std::string::npos);
}

// --- Values --------------------------------------------------------------------------------------

YAML::Node ReadBack(const std::string& text) {
  YAML::Emitter out;
  out << YAML::BeginMap << YAML::Key << "name" << YAML::Value;
  EmitText(&out, text);
  out << YAML::Key << "next" << YAML::Value << 1 << YAML::EndMap;
  const YAML::Node map = YAML::Load(out.c_str());
  EXPECT_EQ(map.size(), 2u) << out.c_str();
  return map["name"];
}

TEST(YamlValuesTest, TextStaysText) {
  // A quoted scalar has the tag "!", a plain one, which readers look into, has "?".
  for (const char* text : {"123",   "-5",    "+7",
                           "0x1F",  "0o17",  "0640",
                           "1e3",   ".5",    "1_000",
                           "12:30", "yes",   "Yes",
                           "YES",   "no",    "on",
                           "Off",   "true",  "FALSE",
                           "y",     "N",     "null",
                           "Null",  "~",     ".inf",
                           "-.INF", ".nan",  "2024-01-01",
                           "=",     "<<",    "",
                           "-",     "1.2.3", "2024-01-01T12:00:00Z",
                           "0b11",  "~x"}) {
    const YAML::Node node = ReadBack(text);
    EXPECT_EQ(node.Tag(), "!") << text;
    EXPECT_EQ(node.Scalar(), text);
  }
  for (const char* text : {"cam0", "narrow_stereo/left", "yesterday", "nothing", "front camera"}) {
    const YAML::Node node = ReadBack(text);
    EXPECT_EQ(node.Tag(), "?") << text;
    EXPECT_EQ(node.Scalar(), text);
  }
  for (const char* text : {"a: b",   "a #b", "# a",    "a\nb", "\ta", " a", "a ",   "'a'",
                           "\"a\"",  "%a",   "@a",     "`a",   "!a",  "&a", "*a",   "[a",
                           "{a",     "|",    "> a",    "? a",  "- a", ",a", "a\\b", "\u00e9t\u00e9",
                           "a\033b", "a:",   "a\r\nb", "---"}) {
    EXPECT_EQ(ReadBack(text).Scalar(), text);
  }
}

TEST(YamlValuesTest, EscapesWhatEndsALineForSome) {
  for (const char* text : {"a\u0085b", "a\u2028b", "a\u2029b"}) {
    YAML::Emitter out;
    EmitText(&out, text);
    for (const char* c = out.c_str(); *c != '\0'; ++c) EXPECT_GT(*c, 0) << out.c_str();
    EXPECT_EQ(ReadBack(text).Scalar(), text);
  }
}

TEST(YamlValuesTest, WholeDoublesKeepTheirPoint) {
  const struct {
    double value;
    const char* text;
  } cases[] = {{0, "0.0"},
               {-0.0, "-0.0"},
               {640, "640.0"},
               {1e5, "100000.0"},
               {1e20, "1.0e+20"},
               {2e-5, "2.0e-05"},
               {0.1, "0.1"},
               {-3, "-3.0"},
               {1.5e300, "1.5e+300"},
               {1234567, "1234567.0"}};
  for (const auto& given : cases) EXPECT_EQ(YamlNumber(given.value), given.text);
}

}  // namespace
}  // namespace calib
