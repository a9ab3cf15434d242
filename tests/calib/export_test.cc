// Cameras for other tools: the model that coefficients are written as, what is refused, what comes
// back when it is imported, and values that every reader of YAML takes for what they are.
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <limits>
#include <string>
#include <vector>

#include "calib/console/failure.h"
#include "calib/console/number.h"
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

struct Exported {
  std::vector<ExportedFile> files;
  ExportReport report;
};

Exported ExportAll(const std::vector<CameraCalibration>& cameras, const std::string& format,
                   const ExportOptions& options) {
  const Exporter& exporter = *FindExporter(format);
  std::vector<CameraInRecord> in_record;
  for (const CameraCalibration& camera : cameras) {
    const std::string place = "file: camera[" + std::to_string(in_record.size()) + "]";
    in_record.push_back({&camera, place, place + ".intrinsics"});
  }
  Exported exported;
  const ExportRig rig = PrepareRig(exporter, in_record, options, &exported.report);
  exported.files = exporter.write(rig, &exported.report);
  return exported;
}

// The file, or what it was refused with.
std::string Export(const CameraCalibration& camera, const std::string& option,
                   const std::string& format = "ros") {
  try {
    ExportOptions options;
    options.lens = option.empty() ? nullptr : FindLensModel(option);
    return ExportAll({camera}, format, options).files[0].text;
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
      EXPECT_EQ(file.compare(0, 40, "refused: file: camera[0].intrinsics: has"), 0) << file;
    } else {
      EXPECT_NE(file.find("distortion_model: " + std::string(given.model) + "\n"),
                std::string::npos)
          << file;
    }
  }
}

// What was written is brought in again as it was, but for coefficients that the file has as 0.
TEST(ExportTest, IsImportedAsTheSameLens) {
  const struct {
    const char* format;
    void (*import)(const Foreign& file, const LensModel* lens, RobotCalibration* robot);
    std::vector<std::pair<int, int>> counts;
  } cases[] = {
      {"ros", ImportCameraInfo, {{3, 2}, {6, 2}, {4, 0}}},
      {"kalibr", ImportCamchain, {{2, 2}, {4, 0}}},
      {"opencv",
       [](const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
         ImportOpenCv({file}, lens, robot);
       },
       {{3, 2}, {6, 2}, {4, 0}}},
      {"openvins", ImportCamchain, {{2, 2}, {4, 0}}},
      {"camodocal",
       [](const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
         ImportCamodocal({file}, lens, robot);
       },
       {{2, 2}, {4, 0}}},
      {"basalt", ImportBasalt, {{0, 0}, {4, 0}}},
      {"mrcal", ImportMrcal, {{0, 0}, {2, 2}, {3, 2}, {6, 2}}},
      {"colmap", ImportColmap, {{0, 0}, {2, 2}, {6, 2}, {4, 0}}},
      {"mcap", ImportMcap, {{3, 2}, {6, 2}, {4, 0}}},
      {"orbslam3", ImportOrbSlam, {{0, 0}, {2, 2}, {3, 2}, {4, 0}}},
      {"nerfstudio", ImportNerfstudio, {{3, 2}, {4, 0}}},
  };
  for (const auto& given : cases) {
    for (const auto& [k, p] : given.counts) {
      const CameraCalibration camera = WithCoefficients(k, p);
      RobotCalibration robot;
      given.import(Foreign::Parse("file", Export(camera, "", given.format)), nullptr, &robot);
      EXPECT_EQ(robot.camera(0).intrinsics().SerializeAsString(),
                camera.intrinsics().SerializeAsString())
          << given.format << ": " << k << " k";
    }
  }
}

// All that OpenCV's file has a place for.
TEST(ExportTest, KeepsSamplesAndErrorForOpenCv) {
  const CameraCalibration camera = Camera(
      "intrinsics { skew: 0.25 k: [-0.1, 0.01, 0] p: [1e-3, -2e-3] error_per_point: 0.31 tgt_z: "
      "1.5 "
      "sample_points { img_x: 1.1 img_y: 2.2 tgt_x: 0 tgt_y: 0.05 } "
      "sample_points { img_x: 3 img_y: 4 tgt_x: 0.05 tgt_y: 0 } }");
  RobotCalibration robot;
  ImportOpenCv({Foreign::Parse("file", Export(camera, "", "opencv"))}, nullptr, &robot);
  EXPECT_EQ(robot.camera(0).SerializeAsString(), camera.SerializeAsString());
}

struct FormCase {
  const char* format;
  std::vector<double> k, p;
  const char* form;  // nullptr if the format cannot hold the lens at all
  int lost = 0;      // coefficients
};

TEST(ExportTest, WritesTheFormThatHoldsTheLens) {
  const FormCase cases[] = {
      {"kalibr", {}, {}, "radtan"},
      {"kalibr", {1, 2}, {3, 4}, "radtan"},
      {"kalibr", {1, 2, 0}, {3, 4}, "radtan"},
      {"kalibr", {1, 2, 5}, {3, 4}, "radtan", 1},
      {"kalibr", {1, 2, 5, 6, 0, 8}, {3, 4}, "radtan", 3},
      {"kalibr", {1, 2, 3, 4}, {}, "equidistant"},
      {"opencv", {1, 2, 0}, {3, 4}, ""},
      {"opencv", {1, 2, 3, 4}, {}, "fisheye_model"},
      {"orbslam3", {}, {}, "PinHole"},
      {"orbslam3", {1, 2, 5}, {3, 4}, "PinHole"},
      {"orbslam3", {1, 2, 5, 6}, {3, 4}, "PinHole", 1},
      {"basalt", {}, {}, "pinhole"},
      {"basalt", {0, 0}, {0, 0}, "pinhole"},
      {"basalt", {1, 0}, {0, 0}, "pinhole", 1},
      {"basalt", {1, 2, 3, 4}, {}, "kb4"},
      {"mrcal", {}, {}, "LENSMODEL_PINHOLE"},
      {"mrcal", {1, 2}, {3, 4}, "LENSMODEL_OPENCV4"},
      {"mrcal", {1, 2, 0}, {3, 4}, "LENSMODEL_OPENCV5"},
      {"mrcal", {1, 2, 5, 6}, {3, 4}, "LENSMODEL_OPENCV8"},
      {"mrcal", {1, 2, 3, 4}, {}, nullptr},
      {"colmap", {1}, {}, "OPENCV"},
      {"colmap", {1, 2, 0}, {3, 4}, "OPENCV"},
      {"colmap", {1, 2, 5}, {3, 4}, "FULL_OPENCV"},
      {"nerfstudio", {1, 2, 5}, {3, 4}, "OPENCV"},
      {"nerfstudio", {1, 2, 5, 6}, {3, 4}, "OPENCV", 1},
      {"camodocal", {1, 2, 3, 4}, {}, "KANNALA_BRANDT"},
  };
  for (const FormCase& given : cases) {
    CameraCalibration camera = Camera("");
    for (const double k : given.k) camera.mutable_intrinsics()->add_k(k);
    for (const double p : given.p) camera.mutable_intrinsics()->add_p(p);
    SCOPED_TRACE(given.format + (" " + CoefficientCounts(camera.intrinsics())));
    const Exporter& exporter = *FindExporter(given.format);
    if (given.form == nullptr) {
      EXPECT_EQ(Export(camera, "", given.format).compare(0, 8, "refused:"), 0);
      continue;
    }
    const std::string file = "file:", format = given.format;
    const LensForm& form = FormOf(camera.intrinsics(), file, nullptr, exporter.lenses, format);
    EXPECT_EQ(form.word, given.form);
    int lost = 0;
    VisitLostCoefficients(
        form, camera.intrinsics(), "file:", given.format,
        [&](const Leftover& leftover) { lost += leftover.kind == Leftover::Kind::kLens ? 1 : 0; });
    EXPECT_EQ(lost, given.lost);
  }
  EXPECT_NE(Export(WithCoefficients(2, 2), "rational_polynomial", "colmap").find(" FULL_OPENCV "),
            std::string::npos);
  EXPECT_EQ(
      Export(WithCoefficients(2, 2), "rational_polynomial", "kalibr").compare(0, 8, "refused:"), 0);
}

// A skew moves points, too.
TEST(ExportTest, LosesASkewWithTheLens) {
  for (const Exporter& exporter : Exporters()) {
    if (exporter.least > 1 || exporter.lenses.empty()) continue;
    const Exported exported = ExportAll({Camera("intrinsics { skew: 0.5 }")}, exporter.format, {});
    bool lost = false;
    for (const Leftover& leftover : exported.report.leftovers)
      lost = lost || leftover.kind == Leftover::Kind::kLens;
    EXPECT_EQ(lost, exporter.keeps.count("skew") == 0) << exporter.format;
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
    const std::string expected =
        "refused: file: camera[0].intrinsics." + std::string(given.where) + ",";
    EXPECT_EQ(file.compare(0, expected.size(), expected), 0) << given.where << ": " << file;
  }
  // A principal point may lie outside the image.
  EXPECT_EQ(Export(Camera("intrinsics { cx: -5 cy: 1e6 skew: -1 }"), "").find("refused"),
            std::string::npos);
}

// --- What the user says, and what the record has -------------------------------------------------

TEST(ExportTest, TakesWhatTheRecordLacksOfTheUser) {
  CameraCalibration camera = Camera("");
  camera.mutable_intrinsics()->clear_width();
  EXPECT_NE(Export(camera, "")
                .find("width is not set, and ROS camera_info needs it Say it with "
                      "--width."),
            std::string::npos);
  ExportOptions options;
  options.width = 800;
  options.name = "front left";
  const Exported exported = ExportAll({camera}, "ros", options);
  EXPECT_EQ(exported.files[0].text.compare(0, 17, "image_width: 800\n"), 0);
  EXPECT_NE(exported.files[0].text.find("camera_name: front left\n"), std::string::npos);
  EXPECT_EQ(exported.files[0].name, "front_left.yaml");
  EXPECT_THROW(ExportAll({Camera("")}, "ros", options), Failure) << "it is set to 640";
  options.width = 640;
  EXPECT_NO_THROW(ExportAll({Camera("")}, "ros", options));
  EXPECT_THROW(ExportAll({Camera("name: 'left'")}, "ros", options), Failure) << "it has a name";
}

TEST(ExportTest, NamesFilesSafely) {
  const struct {
    const char *name, *file;
  } cases[] = {{"cam0", "cam0.yaml"},    {"narrow_stereo/left", "narrow_stereo_left.yaml"},
               {"../up", "_._up.yaml"},  {"-rf", "_rf.yaml"},
               {"a b\nc", "a_b_c.yaml"}, {"\303\251", "__.yaml"}};
  for (const auto& given : cases) {
    CameraCalibration camera = Camera("");
    camera.set_name(given.name);
    EXPECT_EQ(ExportAll({camera}, "ros", {}).files[0].name, given.file);
  }
}

// --- Extrinsics ----------------------------------------------------------------------------------

std::string Extrinsics(const RigidTransform& transform) {
  std::string text = "extrinsics { a: [";
  for (const double number : transform.Rows()) {
    text += (text.back() == '[' ? "" : ", ") + Shortest(number);
  }
  return text + "] }";
}

TEST(ExportTest, WantsRigidTransforms) {
  const CameraCalibration scaled = Camera(Extrinsics({{2, 0, 0, 0, 2, 0, 0, 0, 2}, {1, 2, 3}}));
  for (const char* format :
       {"kalibr", "openvins", "orbslam3", "basalt", "mrcal", "nerfstudio", "colmap-rig", "mcap"}) {
    EXPECT_NE(Export(scaled, "", format).find("refused: file: camera[0].extrinsics.a has no rota"),
              std::string::npos)
        << format;
  }
  for (const char* format : {"ros", "opencv", "colmap", "camodocal"}) {
    EXPECT_EQ(Export(scaled, "", format).find("refused"), std::string::npos) << format;
  }
}

// Of all but the first, which may be the frame of reference.
TEST(ExportTest, WantsTheTransformsOfARig) {
  const CameraCalibration placed = Camera(Extrinsics({})), unplaced = Camera("");
  EXPECT_NO_THROW(ExportAll({unplaced, placed}, "kalibr", {}));
  EXPECT_NO_THROW(ExportAll({unplaced}, "kalibr", {}));
  EXPECT_THROW(ExportAll({placed, unplaced}, "kalibr", {}), Failure);
  EXPECT_NO_THROW(ExportAll({placed, unplaced}, "colmap", {}));
}

struct PoseCase {
  const char* format;
  void (*import)(const Foreign& file, const LensModel* lens, RobotCalibration* robot);
  double tolerance;
  size_t cameras;
  bool from_first;  // the file counts from the first camera, whatever that counts from
};

// Bit for bit where the conventions agree, to the last bits where they do not.
TEST(ExportTest, ImportsTheSameTransforms) {
  const std::vector<RigidTransform> poses = {
      RigidTransform::FromRotationVector({0.1, -0.2, 1.5}, {0.02, -0.06, 0.01}),
      RigidTransform::FromRotationVector({0.3, 0.1, 1.4}, {-0.1, 0.05, 0.02}),
      RigidTransform::FromRotationVector({2.3, 0.1, 1.4}, {0.1, 0.15, -0.02})};
  const PoseCase cases[] = {{"kalibr", ImportCamchain, 0, 3, false},
                            {"openvins", ImportCamchain, 1e-15, 3, false},
                            {"basalt", ImportBasalt, 1e-15, 3, false},
                            {"mrcal", ImportMrcal, 1e-15, 1, false},
                            {"colmap-rig", ImportColmap, 1e-15, 3, true},
                            {"orbslam3", ImportOrbSlam, 1e-15, 1, false},
                            {"orbslam3", ImportOrbSlam, 1e-15, 2, false},
                            {"nerfstudio", ImportNerfstudio, 1e-15, 1, false},
                            {"nerfstudio", ImportNerfstudio, 1e-15, 3, false}};
  for (const PoseCase& given : cases) {
    SCOPED_TRACE(given.format);
    std::vector<CameraCalibration> cameras;
    for (size_t i = 0; i < given.cameras; ++i) cameras.push_back(Camera(Extrinsics(poses[i])));
    RobotCalibration robot;
    given.import(Foreign::Parse("file", ExportAll(cameras, given.format, {}).files[0].text),
                 nullptr, &robot);
    ASSERT_EQ(robot.camera_size(), static_cast<int>(given.cameras));
    for (size_t i = given.from_first ? 1 : 0; i < given.cameras; ++i) {
      const RigidTransform pose = given.from_first ? poses[i] * poses[0].Inverse() : poses[i];
      const auto& is = robot.camera(static_cast<int>(i)).extrinsics();
      ASSERT_EQ(is.a_size(), 16);
      for (int j = 0; j < 16; ++j) {
        EXPECT_NEAR(is.a(j), pose.Rows()[static_cast<size_t>(j)], given.tolerance) << i << ' ' << j;
      }
    }
  }
}

// Of a chain that begins at its first camera, the third is computed.
TEST(ExportTest, ImportsTheSameChain) {
  const RigidTransform a =
      RigidTransform::FromRotationVector({0.1, -0.2, 1.5}, {0.02, -0.06, 0.01});
  const RigidTransform b = RigidTransform::FromRotationVector({0.3, 0.1, 1.4}, {-0.1, 0.05, 0.02});
  const std::vector<CameraCalibration> cameras = {Camera(""), Camera(Extrinsics(a)),
                                                  Camera(Extrinsics(b))};
  const std::string chain = ExportAll(cameras, "kalibr", {}).files[0].text;
  EXPECT_EQ(chain.find("T_cam_imu"), std::string::npos);
  RobotCalibration robot;
  ImportCamchain(Foreign::Parse("file", chain), nullptr, &robot);
  EXPECT_FALSE(robot.camera(0).has_extrinsics());
  EXPECT_EQ(robot.camera(1).extrinsics().SerializeAsString(),
            cameras[1].extrinsics().SerializeAsString());
  for (int j = 0; j < 16; ++j) {
    EXPECT_NEAR(robot.camera(2).extrinsics().a(j), cameras[2].extrinsics().a(j), 1e-15) << j;
  }
  ExportOptions folder;
  folder.folder = true;
  const Exported vins = ExportAll({cameras[1], cameras[2]}, "camodocal", folder);
  RobotCalibration of_vins;
  ImportCamodocal({Foreign::Parse("a", vins.files[0].text), Foreign::Parse("b", vins.files[1].text),
                   Foreign::Parse("e", vins.files[2].text)},
                  nullptr, &of_vins);
  ASSERT_EQ(of_vins.camera_size(), 2);
  for (int j = 0; j < 32; ++j) {
    EXPECT_NEAR(of_vins.camera(j / 16).extrinsics().a(j % 16),
                cameras[static_cast<size_t>(1 + j / 16)].extrinsics().a(j % 16), 1e-15)
        << j;
  }
  const Exported pair = ExportAll({cameras[0], cameras[1]}, "opencv-stereo", {});
  RobotCalibration stereo;
  ImportOpenCv({Foreign::Parse("i", pair.files[0].text), Foreign::Parse("e", pair.files[1].text)},
               nullptr, &stereo);
  EXPECT_EQ(stereo.camera(1).extrinsics().SerializeAsString(),
            cameras[1].extrinsics().SerializeAsString());
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
