// Lenses in the files of other tools: whatever words a file has for its lens, k and p are of that
// lens, or the file is refused, or what was lost is told. No four coefficients of a fisheye are
// ever k1 k2 p1 p2.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "calib/console/failure.h"
#include "calib/tools/foreign.h"
#include "calib/tools/importers.h"
#include "calib/tools/lens_models.h"

namespace calib {
namespace {

using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

// --- The table -----------------------------------------------------------------------------------

TEST(LensModelsTest, AreFoundByEachNameAndAlias) {
  for (const LensModel& model : LensModels()) {
    EXPECT_EQ(FindLensModel(model.name), &model) << model.name;
    for (const std::string& alias : model.aliases) EXPECT_EQ(FindLensModel(alias), &model) << alias;
  }
}

TEST(LensModelsTest, AreFoundHoweverTheNameIsSpelled) {
  for (const char* name :
       {"fisheye", "Fisheye", "FISHEYE", "equidistant", "equi", "kannala_brandt", "Kannala-Brandt",
        "KannalaBrandt8", "KANNALA_BRANDT", "kb4", "fisheye_model", "opencv fisheye"}) {
    ASSERT_NE(FindLensModel(name), nullptr) << name;
    EXPECT_EQ(FindLensModel(name)->name, "equidistant") << name;
  }
  EXPECT_EQ(FindLensModel("MEI"), FindLensModel("omni"));
  EXPECT_EQ(FindLensModel("radial-tangential"), FindLensModel("plumb_bob"));
  for (const char* name : {"", "fish", "fisheye62", "plumb", "auto"}) {
    EXPECT_EQ(FindLensModel(name), nullptr) << name;
  }
}

TEST(LensModelsTest, SayWhatARecordHolds) {
  const struct {
    const char* name;
    int k, p;
  } cases[] = {{"plumb_bob", 3, 2}, {"rational_polynomial", 6, 2}, {"equidistant", 4, 0}};
  std::vector<std::string> names;
  for (const auto& given : cases) {
    names.emplace_back(given.name);
    EXPECT_EQ(FindLensModel(given.name)->k(), given.k) << given.name;
    EXPECT_EQ(FindLensModel(given.name)->p(), given.p) << given.name;
  }
  EXPECT_EQ(CameraInfoModels(), names);
}

// The page has a row for each, which begins with its name and shows its aliases.
TEST(LensModelsTest, AreInTheGuide) {
  std::ifstream page(LENS_PAGE);
  std::map<std::string, std::string> rows;
  for (std::string line; std::getline(page, line);) {
    if (line.compare(0, 3, "| `") == 0) rows[line.substr(3, line.find('`', 3) - 3)] += line;
  }
  for (const LensModel& model : LensModels()) {
    const std::string& row = rows[model.name];
    for (const std::string& alias : model.aliases) {
      EXPECT_NE(row.find("`" + alias + "`"), std::string::npos)
          << alias << " is not in the row of " << model.name << " in " << LENS_PAGE;
    }
    for (const std::string& parameter : model.parameters) {
      EXPECT_NE(row.find(parameter, row.rfind('|', row.size() - 2)), std::string::npos)
          << parameter << " is not in the last column of " << model.name << " in " << LENS_PAGE;
    }
  }
}

// --- The importers -------------------------------------------------------------------------------

// A part of a file of each tool: what it says of the lens beside the coefficients, and these.
std::string RosFile(const std::string& words, const std::string& list) {
  return "image_width: 640\nimage_height: 480\n"
         "camera_matrix: {rows: 3, cols: 3, data: [400, 0, 320, 0, 400, 240, 0, 0, 1]}\n" +
         words + list;
}
std::string RosList(int count, const std::string& numbers) {
  return "distortion_coefficients: {rows: 1, cols: " + std::to_string(count) + ", data: [" +
         numbers + "]}\n";
}
std::string Ros(const std::string& words, int count, const std::string& numbers) {
  return RosFile(words, RosList(count, numbers));
}
std::string Message(const std::string& words) {
  return "width: 640\nheight: 480\nK: [400, 0, 320, 0, 400, 240, 0, 0, 1]\n" + words;
}
std::string OpenCv(const std::string& words, int count, const std::string& numbers) {
  return "camera_matrix: {rows: 3, cols: 3, dt: d, data: [400, 0, 320, 0, 400, 240, 0, 0, 1]}\n"
         "distortion_coefficients: {rows: " +
         std::to_string(count) + ", cols: 1, dt: d, data: [" + numbers + "]}\n" + words;
}
std::string Stereo(const std::string& words, const std::string& list) {
  const std::string m = ": {rows: 3, cols: 3, dt: d, data: [400, 0, 320, 0, 400, 240, 0, 0, 1]}\n";
  return "M1" + m + "M2" + m + "D1: " + list + "D2: " + list + words;
}
std::string Kalibr(const std::string& model, const std::string& intrinsics,
                   const std::string& distortion) {
  return "cam0:\n  camera_model: " + model + "\n  intrinsics: [" + intrinsics +
         "]\n  resolution: [640, 480]\n" + distortion;
}

const char kPinhole[] = "400, 400, 320, 240";
const char kFour[] = "1, 2, 3, 4", kFive[] = "1, 2, 3, 4, 5", kEight[] = "1, 2, 3, 4, 5, 6, 7, 8";
const char kFourList[] = "{rows: 4, cols: 1, dt: d, data: [1, 2, 3, 4]}\n";

using Numbers = std::vector<double>;
const Numbers kFisheyeK = {1, 2, 3, 4}, kBrownK = {1, 2}, kBrownP = {3, 4};
const Numbers kBobK = {1, 2, 5}, kRationalK = {1, 2, 5, 6, 7, 8}, kNone = {};

struct Case {
  std::string name;
  void (*import)(const Foreign& file, const LensModel* lens, RobotCalibration* robot);
  std::string file;
  std::string option;  // empty if none
  Numbers k, p;
  std::string lost;     // a part of what is lost; empty if nothing may be
  std::string refusal;  // a part of it; empty if the file is not refused
};

// Cases that are taken whole, that are taken with a loss, and that are refused.
Case Whole(const std::string& name, decltype(Case::import) import, const std::string& file,
           const Numbers& k, const Numbers& p, const std::string& option = "") {
  return {name, import, file, option, k, p, "", ""};
}
Case Lossy(const std::string& name, decltype(Case::import) import, const std::string& file,
           const std::string& lost, const Numbers& k = {}, const Numbers& p = {},
           const std::string& option = "") {
  return {name, import, file, option, k, p, lost, ""};
}
Case Refused(const std::string& name, decltype(Case::import) import, const std::string& file,
             const std::string& refusal, const std::string& option = "") {
  return {name, import, file, option, {}, {}, "", refusal};
}

void OneOpenCv(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  ImportOpenCv({file}, lens, robot);
}

void PrintTo(const Case& given, std::ostream* out) { *out << given.file; }

class LensImportTest : public ::testing::TestWithParam<Case> {};

TEST_P(LensImportTest, KeepsOrTells) {
  const Case& given = GetParam();
  RobotCalibration robot;
  std::string refusal, lost;
  const Foreign file = Foreign::Parse("file", given.file);
  try {
    given.import(file, given.option.empty() ? nullptr : FindLensModel(given.option), &robot);
  } catch (const Failure& failure) {
    refusal = std::string(failure.what()) + " " + failure.remedy();
  }
  if (!given.refusal.empty()) {
    EXPECT_NE(refusal.find(given.refusal), std::string::npos) << "refused with: " << refusal;
    EXPECT_EQ(refusal.compare(0, 5, "file:"), 0) << "without a place: " << refusal;
    return;
  }
  ASSERT_EQ(refusal, "");
  file.ForEachLeftover([&](const Leftover& leftover) {
    if (leftover.kind == Leftover::Kind::kLens) lost += leftover.place + leftover.what + "\n";
  });
  if (given.lost.empty()) {
    EXPECT_EQ(lost, "");
  } else {
    EXPECT_NE(lost.find(given.lost), std::string::npos) << "lost: " << lost;
    EXPECT_EQ(lost.compare(0, 5, "file:"), 0) << "without a place: " << lost;
  }
  ASSERT_GT(robot.camera_size(), 0);
  for (const auto& camera : robot.camera()) {
    const CameraIntrinsics& in = camera.intrinsics();
    EXPECT_EQ(Numbers(in.k().begin(), in.k().end()), given.k);
    EXPECT_EQ(Numbers(in.p().begin(), in.p().end()), given.p);
    EXPECT_EQ(in.fx(), 400);
  }
}

std::vector<Case> FisheyeCases() {
  std::vector<Case> cases;
  int number = 0;
  // Every word for it in every place for a word.
  for (const char* word : {"fisheye", "equidistant", "equi", "kannala_brandt", "KANNALA_BRANDT",
                           "kb4", "KannalaBrandt8", "opencv_fisheye"}) {
    for (const char* key : {"distortion_model", "camera_model", "lens_model", "model_type", "lens",
                            "distortionModel", "projection_model"}) {
      const std::string words = std::string(key) + ": " + word + "\n";
      const std::string at = "Word" + std::to_string(++number);
      cases.push_back(Whole(at + "Ros", ImportCameraInfo, Ros(words, 4, kFour), kFisheyeK, kNone));
      cases.push_back(Whole(at + "Message", ImportCameraInfo, Message(words + "D: [1, 2, 3, 4]\n"),
                            kFisheyeK, kNone));
      cases.push_back(Whole(at + "OpenCv", OneOpenCv, OpenCv(words, 4, kFour), kFisheyeK, kNone));
      cases.push_back(Whole(at + "Stereo", OneOpenCv, Stereo(words, kFourList), kFisheyeK, kNone));
    }
    cases.push_back(Whole("Camchain" + std::to_string(++number), ImportCamchain,
                          Kalibr("pinhole", kPinhole,
                                 "  distortion_coeffs: [1, 2, 3, 4]\n  distortion_model: " +
                                     std::string(word) + "\n"),
                          kFisheyeK, kNone));
    cases.push_back(Whole("CamchainCamera" + std::to_string(number), ImportCamchain,
                          Kalibr(word, kPinhole, "  distortion_coeffs: [1, 2, 3, 4]\n"), kFisheyeK,
                          kNone));
  }
  for (const char* yes : {"fisheye_model: 1\n", "fisheye_model: 16\n", "fisheye: true\n",
                          "is_fisheye: yes\n", "model: Entaniya Fisheye 280\n"}) {
    const std::string at = "Yes" + std::to_string(++number);
    cases.push_back(Whole(at + "OpenCv", OneOpenCv, OpenCv(yes, 4, kFour), kFisheyeK, kNone));
    cases.push_back(Whole(at + "Ros", ImportCameraInfo, Ros(yes, 4, kFour), kFisheyeK, kNone));
    cases.push_back(Lossy(at + "Five", OneOpenCv, OpenCv(yes, 5, kFive), "has 5 coefficients"));
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Fisheye, LensImportTest, ::testing::ValuesIn(FisheyeCases()),
                         [](const auto& info) { return info.param.name; });

const char kNothingSays[] = "nothing says of which lens";
const char kOption[] = "--distortion-model";

INSTANTIATE_TEST_SUITE_P(
    Order, LensImportTest,
    ::testing::Values(
        // Nothing names the lens: the count does, unless there are four.
        Refused("RosFour", ImportCameraInfo, Ros("", 4, kFour), kNothingSays),
        Refused("RosFourOption", ImportCameraInfo, Ros("", 4, kFour), kOption),
        Refused("RosFourZero", ImportCameraInfo, Ros("", 4, "0, 0, 0, 0"), kNothingSays),
        Refused("RosFourPinhole", ImportCameraInfo, Ros("camera_model: pinhole\n", 4, kFour),
                kNothingSays),
        Refused("RosFourNamedFisheye", ImportCameraInfo,
                Ros("camera_name: fisheye_left\n", 4, kFour), kNothingSays),
        Refused("MessageFour", ImportCameraInfo, Message("d: [1, 2, 3, 4]\n"), kNothingSays),
        Refused("MessageFourEmptyModel", ImportCameraInfo,
                Message("distortion_model: ''\nd: [1, 2, 3, 4]\n"), kNothingSays),
        Refused("OpenCvFour", OneOpenCv, OpenCv("", 4, kFour), kNothingSays),
        Refused("StereoFour", OneOpenCv, Stereo("", kFourList), kNothingSays),
        Refused("KalibrFour", ImportCamchain,
                Kalibr("pinhole", kPinhole, "  distortion_coeffs: [1, 2, 3, 4]\n"), kNothingSays),
        Whole("RosFourChosen", ImportCameraInfo, Ros("", 4, kFour), kBrownK, kBrownP, "plumb_bob"),
        Whole("RosFourChosenFisheye", ImportCameraInfo, Ros("", 4, kFour), kFisheyeK, kNone,
              "equidistant"),
        Whole("StereoFourChosen", OneOpenCv, Stereo("", kFourList), kBrownK, kBrownP, "plumb_bob"),
        Whole("OpenCvFourNoFisheye", OneOpenCv, OpenCv("fisheye_model: 0\n", 4, kFour), kBrownK,
              kBrownP),
        Whole("OpenCvFourFalse", OneOpenCv, OpenCv("fisheye_model: false\n", 4, kFour), kBrownK,
              kBrownP),
        Whole("RosFive", ImportCameraInfo, Ros("", 5, kFive), kBobK, kBrownP),
        Whole("OpenCvEight", OneOpenCv, OpenCv("", 8, kEight), kRationalK, kBrownP),
        Whole("MessageNone", ImportCameraInfo, Message("d: []\n"), kNone, kNone),
        Refused("RosSix", ImportCameraInfo, Ros("", 6, "1, 2, 3, 4, 5, 6"), "has 6 coefficients"),
        // The file names it, and lists fewer or more than the model has; the rest is 0.
        Whole("PlumbBobNone", ImportCameraInfo, Message("distortion_model: plumb_bob\nd: []\n"),
              kNone, kNone),
        Whole("PlumbBobEightZero", ImportCameraInfo,
              Ros("distortion_model: plumb_bob\n", 8, "1, 2, 3, 4, 5, 0, 0, 0"), kBobK, kBrownP),
        Whole("RationalNone", ImportCameraInfo,
              Message("distortion_model: rational_polynomial\nd: []\n"), kNone, kNone),
        Whole("RationalFive", ImportCameraInfo,
              Ros("distortion_model: rational_polynomial\n", 5, kFive), kBobK, kBrownP),
        Refused("RationalFour", ImportCameraInfo,
                Ros("distortion_model: rational_polynomial\n", 4, kFour),
                "expected 5 or 8 or 12 or 14"),
        // The file names it.
        Whole("PlumbBobFour", ImportCameraInfo, Ros("distortion_model: plumb_bob\n", 4, kFour),
              kBrownK, kBrownP),
        Whole("PlumbBobAsCameraModel", ImportCameraInfo, Ros("camera_model: plumb_bob\n", 5, kFive),
              kBobK, kBrownP),
        Whole("PlumbBobOfAMaker", ImportCameraInfo,
              Ros("distortion_model: plumb_bob\ncamera_model: acA1300-200uc\n", 4, kFour), kBrownK,
              kBrownP),
        Whole("Radtan", ImportCamchain,
              Kalibr("pinhole", kPinhole,
                     "  distortion_coeffs: [1, 2, 3, 4]\n  distortion_model: radtan\n"),
              kBrownK, kBrownP),
        Whole("Rational", ImportCameraInfo,
              Ros("distortion_model: Rational-Polynomial\n", 8, kEight), kRationalK, kBrownP),
        Refused("PlumbBobEight", ImportCameraInfo, Ros("distortion_model: plumb_bob\n", 8, kEight),
                "expected 4 or 5 of plumb_bob"),
        // The file contradicts itself, or the user.
        Refused("Contradiction", ImportCameraInfo,
                Ros("camera_model: fisheye\ndistortion_model: plumb_bob\n", 4, kFour),
                "is 'plumb_bob', but camera_model is 'fisheye'"),
        Refused("ContradictionOfFive", ImportCameraInfo,
                Ros("camera_model: fisheye\ndistortion_model: plumb_bob\n", 5, kFive), kOption),
        Refused("ContradictionOfASwitch", OneOpenCv,
                OpenCv("fisheye_model: 0\ncamera_model: fisheye\n", 4, kFour), kOption),
        Whole("ContradictionSettled", ImportCameraInfo,
              Ros("camera_model: fisheye\ndistortion_model: plumb_bob\n", 4, kFour), kFisheyeK,
              kNone, "equidistant"),
        Refused("OptionContradictsWord", ImportCameraInfo, Ros("camera_model: fisheye\n", 4, kFour),
                "--distortion-model says plumb_bob", "plumb_bob"),
        Refused("OptionContradictsSwitch", OneOpenCv, OpenCv("fisheye_model: 0\n", 4, kFour),
                "--distortion-model says equidistant", "equidistant"),
        Whole("OptionAgrees", ImportCameraInfo, Ros("camera_model: fisheye\n", 4, kFour), kFisheyeK,
              kNone, "equidistant"),
        Refused("NoSwitch", OneOpenCv, OpenCv("fisheye_model: perhaps\n", 4, kFour), "'perhaps'"),
        Refused("HintContradictsWord", OneOpenCv,
                OpenCv("distortion_model: plumb_bob\nlens: 8 mm fisheye\n", 4, kFour), kOption),
        Whole("OptionSettlesHint", OneOpenCv, OpenCv("lens: 8 mm fisheye\n", 5, kFive), kBobK,
              kBrownP, "plumb_bob"),
        Whole("Unknown", ImportCameraInfo, Ros("distortion_model: division\n", 5, kFive), kBobK,
              kBrownP, "plumb_bob")),
    [](const auto& info) { return info.param.name; });

std::string Tilted(const std::string& rest) { return std::string(kEight) + ", " + rest; }

INSTANTIATE_TEST_SUITE_P(
    Losses, LensImportTest,
    ::testing::Values(
        Lossy("Omni", ImportCamchain,
              Kalibr("omni", "1.5, 400, 400, 320, 240",
                     "  distortion_coeffs: [1, 2, 3, 4]\n  distortion_model: radtan\n"),
              "cam0.intrinsics: xi is 1.5", kBrownK, kBrownP),
        Lossy("Eucm", ImportCamchain,
              Kalibr("eucm", "0.6, 1.1, 400, 400, 320, 240", "  distortion_model: none\n"),
              "alpha is 0.6 and beta is 1.1"),
        Lossy("Ds", ImportCamchain,
              Kalibr("ds", "-0.2, 0.5, 400, 400, 320, 240", "  distortion_model: none\n"),
              "xi is -0.2 and alpha is 0.5"),
        Whole("OmniOfNoXi", ImportCamchain,
              Kalibr("omni", "0, 400, 400, 320, 240",
                     "  distortion_coeffs: [1, 2, 3, 4]\n  distortion_model: radtan\n"),
              kBrownK, kBrownP),
        Lossy("Fov", ImportCamchain,
              Kalibr("pinhole", kPinhole, "  distortion_coeffs: [0.9]\n  distortion_model: fov\n"),
              "cam0.distortion_coeffs: has coefficients of the lens model fov"),
        Lossy("FovWithoutList", ImportCamchain,
              Kalibr("pinhole", kPinhole, "  distortion_model: fov\n"), "has no coefficients"),
        Lossy("EquiWithoutList", ImportCamchain,
              Kalibr("pinhole", kPinhole, "  distortion_model: equidistant\n"),
              "has no coefficients"),
        Lossy("FisheyeWithoutList", ImportCameraInfo, RosFile("camera_model: fisheye\n", ""),
              "has no coefficients"),
        Lossy("EquidistantOfNone", ImportCameraInfo,
              Message("distortion_model: equidistant\nd: []\n"), "has 0 coefficients, expected 4"),
        Lossy("EquidistantOfFive", ImportCameraInfo,
              Ros("distortion_model: equidistant\n", 5, "1, 2, 3, 4, 0"),
              "has 5 coefficients, expected 4 of equidistant"),
        Lossy("EquidistantOfTwo", ImportCamchain,
              Kalibr("pinhole", kPinhole,
                     "  distortion_coeffs: [1, 2]\n  distortion_model: equidistant\n"),
              "has 2 coefficients"),
        Lossy("Mei", ImportCameraInfo, Ros("distortion_model: Mei\n", 4, kFour),
              "is 'Mei', whose xi no field of a record holds", kBrownK, kBrownP),
        Lossy("MeiAsCameraModel", ImportCameraInfo,
              Ros("camera_model: Mei\ndistortion_model: plumb_bob\n", 4, kFour), "whose xi",
              kBrownK, kBrownP),
        Lossy("DoubleSphere", ImportCameraInfo, Ros("distortion_model: double_sphere\n", 5, kFive),
              "whose xi and alpha", kBobK, kBrownP),
        Lossy("XiOfItsOwn", OneOpenCv, OpenCv("xi: 1.2\n", 4, kFour), "xi: is '1.2'", kBrownK,
              kBrownP),
        Whole("XiOfZero", ImportCameraInfo, Ros("xi: 0.0\n", 5, kFive), kBobK, kBrownP),
        Lossy("AlphaAndBeta", ImportCameraInfo, Ros("alpha: 0.5\nbeta: 1\n", 5, kFive),
              "alpha: is '0.5'", kBobK, kBrownP),
        Lossy("BrownConrady", ImportCameraInfo, Ros("distortion_model: brown_conrady\n", 5, kFive),
              "is of the lens model brown_conrady"),
        Whole("BrownConradyOfAgreement", ImportCameraInfo,
              Ros("distortion_model: brown_conrady\n", 5, "1, 2, 0, 0, 0"), Numbers({1, 2, 0}),
              Numbers({0, 0})),
        Whole("BrownConradyChosen", ImportCameraInfo,
              Ros("distortion_model: brown_conrady\n", 5, kFive), kBobK, kBrownP, "plumb_bob"),
        Lossy("InverseBrownConrady", ImportCameraInfo,
              Ros("distortion_model: Inverse Brown Conrady\n", 5, kFive), "inverse_brown_conrady"),
        Whole("InverseBrownConradyOfZero", ImportCameraInfo,
              Ros("distortion_model: Inverse Brown Conrady\n", 5, "0, 0, 0, 0, 0"), kNone, kNone),
        Lossy("UnknownModel", ImportCameraInfo, Ros("distortion_model: fisheye62\n", 8, kEight),
              "is 'fisheye62', no lens model"),
        Lossy("UnknownModelWithoutList", ImportCameraInfo,
              RosFile("distortion_model: division\n", ""), "is 'division'"),
        Lossy("UnknownCameraModel", ImportCameraInfo, Ros("camera_model: scaramuzza\n", 5, kFive),
              "is 'scaramuzza'"),
        Lossy("ThinPrism", OneOpenCv, OpenCv("", 12, Tilted("0, 0, 0, 1e-9")),
              "a thin prism or tilt in [8] to [11]", kRationalK, kBrownP),
        Lossy("Tilt", ImportCameraInfo,
              Ros("distortion_model: rational_polynomial\n", 14, Tilted("0, 0, 0, 0, 0, 0.1")),
              "a thin prism or tilt in [8] to [13]", kRationalK, kBrownP),
        Whole("NoTilt", OneOpenCv, OpenCv("", 14, Tilted("0, 0, 0, 0, 0, -0.0")), kRationalK,
              kBrownP),
        // A list that is there, but where it is not looked for.
        Lossy("ListOfAMessageInAFile", ImportCameraInfo, RosFile("", "D: [1, 2, 3, 4, 5]\n"),
              "D: is a list of 5, which belongs to the lens"),
        Lossy("ListOfAnotherName", OneOpenCv,
              OpenCv("dist_coeffs: {rows: 1, cols: 4, dt: d, data: [1, 0, 0, 0]}\n", 5, kFive),
              "dist_coeffs: is a map", kBobK, kBrownP),
        Whole("ListOfAnotherNameOfZero", OneOpenCv,
              OpenCv("dist_coeffs: {rows: 1, cols: 4, dt: d, data: [0, 0, 0, 0]}\n", 5, kFive),
              kBobK, kBrownP),
        Lossy("Scalar", OneOpenCv, OpenCv("k3: 0.1\n", 5, kFive), "k3: is '0.1'", kBobK, kBrownP),
        Lossy("StereoXi", OneOpenCv,
              Stereo("fisheye_model: 0\nxi_1: 1.1\nP1: {rows: 1, cols: 1, dt: d, data: [1]}\n",
                     kFourList),
              "xi_1: is '1.1'", kBrownK, kBrownP)),
    [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace calib
