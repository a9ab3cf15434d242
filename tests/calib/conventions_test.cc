// The table of conventions, the page that shows it, and the transforms that conversions are made
// of.
#include "calib/tools/conventions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "calib/console/number.h"
#include "calib/tools/foreign.h"
#include "calib/tools/importers.h"

namespace calib {
namespace {

using Axes = Conventions::Axes;
using Direction = Conventions::Direction;
using Rotation = Conventions::Rotation;

// --- The page ------------------------------------------------------------------------------------

std::string Words(Direction direction) {
  switch (direction) {
    case Direction::kToCamera:
      return "to the camera";
    case Direction::kFromCamera:
      return "from the camera";
    case Direction::kBetween:
      return "from the camera before";
  }
  return "";
}

std::string Words(Rotation rotation) {
  switch (rotation) {
    case Rotation::kMatrix:
      return "matrix";
    case Rotation::kVector:
      return "vector";
    case Rotation::kQuaternionWxyz:
      return "quaternion w x y z";
    case Rotation::kQuaternionXyzw:
      return "quaternion x y z w";
    case Rotation::kRollPitchYaw:
      return "roll pitch yaw";
  }
  return "";
}

// Adds what is not there yet.
void List(std::string* list, const std::string& word) {
  if (("; " + *list).rfind("; " + word) + word.size() == list->size()) return;
  *list += (list->empty() ? "" : "; ") + word;
}

std::string Row(const Conventions& of) {
  std::string keys, directions, rotations, unit;
  for (const Conventions::Transform& transform : of.transforms) {
    List(&keys, "`" + transform.key + "`");
    List(&directions, Words(transform.direction));
    List(&rotations, Words(transform.rotation));
    unit = of.metres == 0 ? "open" : of.metres == 1 ? "m" : "cm";
  }
  const std::string cells[] = {"`" + of.format + "`",
                               of.files,
                               Shortest(of.first_pixel),
                               of.axes == Axes::kOpenGl ? "OpenGL" : "OpenCV",
                               keys,
                               directions,
                               rotations,
                               unit};
  std::string row = "|";
  for (const std::string& cell : cells) row += (cell.empty() ? "" : " " + cell) + " |";
  return row;
}

TEST(ConventionsTest, AreOnThePage) {
  std::ifstream page(CONVENTIONS_PAGE);
  std::string rows, expected;
  for (std::string line; std::getline(page, line);) {
    if (line.compare(0, 3, "| `") == 0 && line.find("--from") == std::string::npos) {
      rows += line + "\n";
    }
  }
  for (const Conventions& of : AllConventions()) expected += Row(of) + "\n";
  EXPECT_EQ(rows, expected);
}

TEST(ConventionsTest, AreFoundByFormat) {
  for (const Conventions& of : AllConventions()) EXPECT_EQ(&ConventionsOf(of.format), &of);
  EXPECT_THROW(ConventionsOf("lisp"), std::invalid_argument);
}

// --- Conversion ----------------------------------------------------------------------------------

RigidTransform Some(std::mt19937* random) {
  std::uniform_real_distribution<double> number(-3, 3);
  return RigidTransform::FromRotationVector({number(*random), number(*random), number(*random)},
                                            {number(*random), number(*random), number(*random)});
}

void ExpectNear(const RigidTransform& a, const RigidTransform& b, double tolerance = 1e-14) {
  for (size_t i = 0; i < 9; ++i) EXPECT_NEAR(a.r[i], b.r[i], tolerance) << "r[" << i << "]";
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(a.t[i], b.t[i], 10 * tolerance) << "t[" << i << "]";
}

std::array<double, 3> Map(const RigidTransform& a, const std::array<double, 3>& p) {
  return (a * RigidTransform{RigidTransform().r, p}).t;
}

TEST(ConventionsTest, ConvertThereAndBack) {
  std::mt19937 random(20);
  for (const Conventions& of : AllConventions()) {
    SCOPED_TRACE(of.format);
    EXPECT_EQ(of.PixelToRecord(of.PixelFromRecord(367.25)), 367.25);
    for (const Conventions::Transform& transform : of.transforms) {
      const RigidTransform record = Some(&random);
      const RigidTransform file = of.FromRecord(transform.direction, record);
      ExpectNear(of.ToRecord(transform.direction, file), record);
      const bool same = transform.direction != Direction::kFromCamera && of.axes == Axes::kOpenCv;
      EXPECT_EQ(file.r == record.r && file.t == record.t, same);
    }
  }
}

// A camera that looks along the reference's x from (1, 2, 3), with its top up along z, so that the
// reference's y is on its left.
TEST(ConventionsTest, MapWhatTheyAreNamedFor) {
  const RigidTransform record = RigidTransform::FromRows({0, -1, 0, 2,  //
                                                          0, 0, -1, 3,  //
                                                          1, 0, 0, -1,  //
                                                          0, 0, 0, 1});
  using P = std::array<double, 3>;
  EXPECT_EQ(Map(record, {6, 2, 3}), (P{0, 0, 5})) << "five ahead";
  EXPECT_EQ(Map(record, {6, 3, 4}), (P{-1, -1, 5})) << "up and to the left of it";
  const Conventions& nerfstudio = ConventionsOf("nerfstudio");
  const RigidTransform pose = nerfstudio.FromRecord(Direction::kFromCamera, record);
  EXPECT_EQ(Map(pose, {0, 0, 0}), (P{1, 2, 3})) << "where it stands";
  EXPECT_EQ(Map(pose, {0, 0, -5}), (P{6, 2, 3})) << "it looks along its own -z";
  EXPECT_EQ(Map(pose, {0, 1, 0}), (P{1, 2, 4})) << "its own y is up";
  const RigidTransform basalt = ConventionsOf("basalt").FromRecord(Direction::kFromCamera, record);
  EXPECT_EQ(Map(basalt, {0, 0, 5}), (P{6, 2, 3})) << "it looks along its own z";
}

// --- Transforms ----------------------------------------------------------------------------------

TEST(RigidTransformTest, IsTheSameInEveryForm) {
  std::mt19937 random(21);
  for (int i = 0; i < 100; ++i) {
    SCOPED_TRACE(i);
    const RigidTransform a = Some(&random);
    const Quaternion q = a.ToQuaternion();
    EXPECT_NEAR(std::hypot(std::hypot(q.w, q.x), std::hypot(q.y, q.z)), 1, 1e-15);
    EXPECT_GE(q.w, 0);
    ExpectNear(RigidTransform::FromQuaternion(q, a.t), a);
    ExpectNear(RigidTransform::FromQuaternion({-2 * q.w, -2 * q.x, -2 * q.y, -2 * q.z}, a.t), a);
    ExpectNear(RigidTransform::FromRotationVector(a.ToRotationVector(), a.t), a);
    ExpectNear(RigidTransform::FromRows(a.Rows()), a, 0);
    ExpectNear(a * a.Inverse(), {});
    EXPECT_EQ(WhyNotRigid(a.Rows()), "");
  }
}

TEST(RigidTransformTest, TurnsTheWayThatItsFormSays) {
  const double h = std::sqrt(0.5);
  // By a quarter around each axis: the next axis becomes the one behind it.
  const struct {
    Quaternion q;
    std::array<double, 3> from, to;
  } cases[] = {{{h, h, 0, 0}, {0, 1, 0}, {0, 0, 1}},
               {{h, 0, h, 0}, {0, 0, 1}, {1, 0, 0}},
               {{h, 0, 0, h}, {1, 0, 0}, {0, 1, 0}}};
  for (const auto& given : cases) {
    const RigidTransform a = RigidTransform::FromQuaternion(given.q, {});
    const double quarter = std::acos(-1) / 2 / h;
    const RigidTransform b = RigidTransform::FromRotationVector(
        {given.q.x * quarter, given.q.y * quarter, given.q.z * quarter}, {});
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(Map(a, given.from)[i], given.to[i], 1e-15);
      EXPECT_NEAR(Map(b, given.from)[i], given.to[i], 1e-15);
    }
  }
}

TEST(RigidTransformTest, HoldsNoTurnAndHalfTurns) {
  const RigidTransform none = RigidTransform::FromRotationVector({0, 0, 0}, {1, 2, 3});
  EXPECT_EQ(none.r, RigidTransform().r);
  EXPECT_TRUE(RigidTransform().IsIdentity());
  EXPECT_FALSE(none.IsIdentity());
  for (const Quaternion& q :
       {Quaternion{0, 1, 0, 0}, Quaternion{0, 0, 1, 0}, Quaternion{0, 0, 0, 1}}) {
    const RigidTransform half = RigidTransform::FromQuaternion(q, {});
    const auto v = half.ToRotationVector();
    EXPECT_NEAR(std::hypot(v[0], v[1], v[2]), std::acos(-1), 1e-15);
    ExpectNear(RigidTransform::FromRotationVector(v, {}), half);
  }
}

TEST(RigidTransformTest, InvertsRoundedDigitsAsTheyStand) {
  const RigidTransform rounded =
      RigidTransform::FromRows({0.8, -0.6001, 0, 1, 0.6, 0.8, 0, 2, 0, 0, 0.9999, 3, 0, 0, 0, 1});
  ExpectNear(rounded * rounded.Inverse(), {}, 1e-15);
  ExpectNear(rounded.Inverse().Inverse(), rounded, 1e-15);
}

TEST(RigidTransformTest, TellsWhyAMatrixIsNone) {
  const struct {
    std::vector<double> rows;
    const char* why;  // a part of it
  } cases[] = {
      {{1, 0, 0, 5, 0, 1, 0, 5, 0, 0, 1, 5}, "12 numbers"},
      {{}, "0 numbers"},
      {{1, 0, 0, 5, 0, 1, 0, 5, 0, 0, NAN, 5, 0, 0, 0, 1}, "not finite"},
      {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 5, 5, 1}, "last row"},
      {{1, 0, 0, 5, 0, 1, 0, 5, 0, 0, 1.0002, 5, 0, 0, 0, 1}, "no rotation"},
      {{2, 0, 0, 5, 0, 2, 0, 5, 0, 0, 2, 5, 0, 0, 0, 1}, "no rotation"},
      {{1, 0, 0, 5, 0, 1, 0, 5, 0, 0, -1, 5, 0, 0, 0, 1}, "reflection"},
      {{0, 0, 0, 5, 0, 0, 0, 5, 0, 0, 0, 5, 0, 0, 0, 1}, "no rotation"},
      {{1e200, 0, 0, 5, 0, 1, 0, 5, 0, 0, 1, 5, 0, 0, 0, 1}, "no rotation"},
  };
  for (const auto& given : cases) {
    EXPECT_NE(WhyNotRigid(given.rows).find(given.why), std::string::npos)
        << given.why << ": " << WhyNotRigid(given.rows);
  }
  EXPECT_EQ(WhyNotRigid({1, 0, 0, 5, 0, 1, 0, 5, 0, 0, 1.00001, 5, 0, 0, 0, 1}), "");
}

// --- A chain of cameras --------------------------------------------------------------------------

std::string Chained(const std::string& name, const std::string& transform) {
  return name +
         ": {camera_model: pinhole, intrinsics: [400, 400, 320, 240], resolution: [640, 480]" +
         (transform.empty() ? "" : ", " + transform) + "}\n";
}

// From the first camera, or from the IMU, to each.
TEST(CamchainTest, MakesTheTransformsStartInOneFrame) {
  const std::string quarter = "[[0, -1, 0, 1], [1, 0, 0, 2], [0, 0, 1, 3], [0, 0, 0, 1]]";
  const RigidTransform step =
      RigidTransform::FromRows({0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1});
  for (const bool imu : {false, true}) {
    zarvo::calibration::RobotCalibration robot;
    ImportCamchain(Foreign::Parse("file", Chained("cam0", imu ? "T_cam_imu: " + quarter : "") +
                                              Chained("cam1", "T_cn_cnm1: " + quarter) +
                                              Chained("cam2", "T_cn_cnm1: " + quarter)),
                   nullptr, &robot);
    const std::vector<RigidTransform> expected = {step, step * step, step * step * step};
    for (int i = 0; i < 3; ++i) {
      if (!imu && i == 0) {
        EXPECT_FALSE(robot.camera(0).has_extrinsics());
        continue;
      }
      const auto& a = robot.camera(i).extrinsics().a();
      const size_t steps = static_cast<size_t>(imu ? i : i - 1);
      EXPECT_EQ(std::vector<double>(a.begin(), a.end()), expected[steps].Rows()) << i;
    }
  }
}

}  // namespace
}  // namespace calib
