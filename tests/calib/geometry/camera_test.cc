// Projection, its inverse and rigid transforms: against the numbers of reference.txt, and against
// themselves on random cameras.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/pose_difference.h"
#include "tests/calib/geometry/reference.h"

namespace zarvo {
namespace calibration_geometry {
namespace {

double Angle(const Point& a, const Point& b) {
  const Point cross = {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
  return std::atan2(std::hypot(cross.x, cross.y, cross.z), a.x * b.x + a.y * b.y + a.z * b.z);
}

TEST(CameraTest, AgreesWithTheReference) {
  Camera camera;
  int compared = 0;
  ForEachReference([&](const Reference& line) {
    SCOPED_TRACE(line.text);
    const std::vector<double>& n = line.numbers;
    if (line.kind == "camera") {
      camera = line.camera;
    } else if (line.kind == "point") {
      const Projected projected = Project(camera, {n[0], n[1], n[2]});
      EXPECT_EQ(Status::kOk, projected.status) << Explain(projected.status);
      EXPECT_NEAR(n[3], projected.pixel.u, 1e-9);
      EXPECT_NEAR(n[4], projected.pixel.v, 1e-9);
      ++compared;
    } else if (line.kind == "pixel") {
      const Direction direction = Unproject(camera, {n[0], n[1]});
      EXPECT_EQ(Status::kOk, direction.status) << Explain(direction.status);
      EXPECT_NEAR(n[2], direction.ray.x / direction.ray.z, 1e-9);
      EXPECT_NEAR(n[3], direction.ray.y / direction.ray.z, 1e-9);
      ++compared;
    } else if (line.kind == "rotation") {
      const Transform transform = FromRotationVector({n[0], n[1], n[2]}, {0, 0, 0});
      for (int i = 0; i < 9; ++i) EXPECT_NEAR(n[3 + i], transform.m[i / 3 * 4 + i % 3], 1e-12);
      ++compared;
    }
  });
  EXPECT_GT(compared, 200);
}

// A camera of the lens with numbers as real ones have them, or a little wilder.
Camera RandomCamera(Lens lens, std::mt19937* random) {
  const auto between = [&](double low, double high) {
    return low + (high - low) * static_cast<double>((*random)()) / 4294967296.0;
  };
  Camera camera;
  camera.lens = lens;
  camera.fx = between(200, 900);
  camera.fy = camera.fx * between(0.95, 1.05);
  camera.skew = between(-3, 3);
  camera.cx = between(500, 700);
  camera.cy = between(400, 560);
  const double brown[] = {0.4,  0.2,  0.005, 0.005, 0.1,  0.1,  0.05,
                          0.02, 0.01, 0.01,  0.01,  0.01, 0.05, 0.05};
  const double fisheye[] = {0.1, 0.05, 0.02, 0.005};
  if (lens == Lens::kBrown) {
    for (int i = 0; i < 14; ++i) camera.distortion[i] = between(-brown[i], brown[i]);
  } else if (lens == Lens::kFisheye) {
    for (int i = 0; i < 4; ++i) camera.distortion[i] = between(-fisheye[i], fisheye[i]);
  } else if (lens == Lens::kOmni) {
    for (int i = 0; i < 4; ++i) camera.distortion[i] = between(-brown[i], brown[i]);
    camera.shape[0] = between(0.5, 2.2);
  } else if (lens == Lens::kDoubleSphere) {
    camera.shape[0] = between(-0.4, 0.6);
    camera.shape[1] = between(0.2, 0.9);
  } else if (lens == Lens::kExtendedUnified) {
    camera.shape[0] = between(0.2, 0.9);
    camera.shape[1] = between(0.6, 2);
  } else if (lens == Lens::kFieldOfView) {
    camera.distortion[0] = between(0.3, 1.4);
  } else if (lens == Lens::kThinPrismFisheye) {
    for (int i : {0, 1, 2, 3, 4, 5, 8, 9, 10, 11}) {
      camera.distortion[i] = 0.2 * between(-brown[i], brown[i]);
    }
  } else if (lens == Lens::kDivision) {
    camera.distortion[0] = between(-0.6, 0.3);
  }
  return camera;
}

constexpr Lens kLenses[] = {
    Lens::kPinhole,      Lens::kBrown,           Lens::kFisheye,     Lens::kOmni,
    Lens::kDoubleSphere, Lens::kExtendedUnified, Lens::kFieldOfView, Lens::kThinPrismFisheye,
    Lens::kDivision};

// Directions all round the camera: what is projected comes back, and what is not says why. Pixels
// all over the image: what is a direction lands there again.
TEST(CameraTest, ProjectsAndComesBack) {
  for (const Lens lens : kLenses) {
    for (unsigned seed = 0; seed < 20; ++seed) {
      std::mt19937 random(seed);
      const Camera camera = RandomCamera(lens, &random);
      SCOPED_TRACE("lens " + std::to_string(static_cast<int>(lens)) + ", seed " +
                   std::to_string(seed));
      int there = 0;
      for (int i = 0; i < 400; ++i) {
        // A spiral from the axis outwards.
        const double angle = (i + 0.5) / 400 * (lens == Lens::kBrown ? 1.4 : 3.1), turn = i * 2.4;
        const Point ray = {std::sin(angle) * std::cos(turn), std::sin(angle) * std::sin(turn),
                           std::cos(angle)};
        const Projected projected = Project(camera, ray);
        ASSERT_EQ(projected.status != Status::kOk, std::isnan(projected.pixel.u));
        if (projected.status != Status::kOk) continue;
        ++there;
        const Direction back = Unproject(camera, projected.pixel);
        // Where a lens is about to fold, a pixel is many directions.
        const Projected nearby = Project(
            camera,
            Apply(FromRotationVector({-1e-4 * std::sin(turn), 1e-4 * std::cos(turn), 0}, {}), ray));
        if (nearby.status != Status::kOk || std::hypot(nearby.pixel.u - projected.pixel.u,
                                                       nearby.pixel.v - projected.pixel.v) < 1e-3) {
          continue;
        }
        ASSERT_EQ(Status::kOk, back.status) << i << ": " << Explain(back.status);
        ASSERT_LT(Angle(ray, back.ray), 1e-9) << i;
      }
      EXPECT_GT(there, 20);
      for (int i = 0; i < 100; ++i) {
        const int column = i % 10, row = i / 10;
        const Pixel pixel = {column * 140.0, row * 110.0};
        const Direction direction = Unproject(camera, pixel);
        ASSERT_EQ(direction.status != Status::kOk, std::isnan(direction.ray.x));
        if (direction.status != Status::kOk) continue;
        const Projected again = Project(camera, direction.ray);
        ASSERT_EQ(Status::kOk, again.status) << i;
        ASSERT_NEAR(pixel.u, again.pixel.u, 1e-8);
        ASSERT_NEAR(pixel.v, again.pixel.v, 1e-8);
      }
    }
  }
}

TEST(CameraTest, SeesWhatIsBehindIfTheLensDoes) {
  Camera camera;
  camera.lens = Lens::kFisheye;
  camera.fx = camera.fy = 300;
  const double angle = 95 * kDegree;
  const Projected projected = Project(camera, {std::sin(angle), 0, std::cos(angle)});
  EXPECT_EQ(Status::kOk, projected.status);
  EXPECT_NEAR(300 * angle, projected.pixel.u, 1e-9);
  EXPECT_NEAR(angle, Angle({0, 0, 1}, Unproject(camera, projected.pixel).ray), 1e-12);
  camera.lens = Lens::kPinhole;
  EXPECT_EQ(Status::kBehind, Project(camera, {std::sin(angle), 0, std::cos(angle)}).status);
}

// Beyond its last extremum the polynomial comes back into the image; no ray does.
TEST(CameraTest, DoesNotFold) {
  Camera camera;
  camera.lens = Lens::kBrown;
  camera.fx = camera.fy = 500;
  camera.distortion[0] = -0.3;  // extremum where 1 - 0.9 r^2 = 0
  const double limit = std::sqrt(1 / 0.9);
  EXPECT_NEAR(std::atan(limit), LargestAngle(camera), 1e-12);
  EXPECT_EQ(Status::kOk, Project(camera, {limit - 1e-6, 0, 1}).status);
  EXPECT_EQ(Status::kBeyondLens, Project(camera, {limit + 1e-6, 0, 1}).status);
  EXPECT_EQ(Status::kBeyondLens, Project(camera, {0, 1.8, 1}).status);
  const double edge = 500 * limit * (1 - 0.3 * limit * limit);
  EXPECT_EQ(Status::kOk, Unproject(camera, {edge - 1e-6, 0}).status);
  EXPECT_EQ(Status::kBeyondLens, Unproject(camera, {edge + 1e-6, 0}).status);
}

// What is seen just within the largest angle is projected, and what is just beyond is not.
TEST(CameraTest, SeesUpToTheLargestAngle) {
  for (const Lens lens : kLenses) {
    for (unsigned seed = 0; seed < 20; ++seed) {
      SCOPED_TRACE("lens " + std::to_string(static_cast<int>(lens)) + ", seed " +
                   std::to_string(seed));
      std::mt19937 random(seed);
      Camera camera = RandomCamera(lens, &random);
      // Which bend the angle of a direction with where it leads.
      const bool bends_planes =
          lens == Lens::kBrown || lens == Lens::kOmni || lens == Lens::kThinPrismFisheye;
      for (const int tangential : {2, 3, 8, 9, 10, 11, 12, 13}) {
        if (bends_planes) camera.distortion[tangential] = 0;
      }
      const double largest = LargestAngle(camera);
      ASSERT_GT(largest, 0.3);
      const auto seen = [&](double angle) {
        return Project(camera, {std::sin(angle), 0, std::cos(angle)}).status;
      };
      EXPECT_EQ(Status::kOk, seen(largest - 1e-6));
      EXPECT_TRUE(largest > 3.14 || seen(largest + 1e-6) != Status::kOk) << largest;
    }
  }
  Camera none;
  none.fx = 0;
  EXPECT_EQ(0, LargestAngle(none));
}

TEST(CameraTest, AFieldOfViewOfNothingIsAPinhole) {
  Camera camera;
  camera.lens = Lens::kFieldOfView;
  camera.fx = camera.fy = 300;
  for (const double w : {0.0, 0.9}) {
    camera.distortion[0] = w;
    for (const double x : {0.0, 0.4}) {
      const Projected projected = Project(camera, {x, 0, 1});
      const double radius = w == 0 ? x : std::atan(2 * x * std::tan(w / 2)) / w;
      EXPECT_NEAR(300 * radius, projected.pixel.u, 1e-9) << w << " " << x;
      EXPECT_NEAR(0, Angle({x, 0, 1}, Unproject(camera, projected.pixel).ray), 1e-12);
    }
  }
}

struct NoCamera {
  const char* what;
  Lens lens;
  double fy, shape0, shape1, distortion0;
};

TEST(CameraTest, RefusesNumbersThatNoLensHas) {
  const NoCamera cases[] = {
      {"fy", Lens::kPinhole, -1, 0, 0, 0},
      {"mirror", Lens::kOmni, 1, -0.1, 0, 0},
      {"alpha below 0", Lens::kExtendedUnified, 1, -0.1, 1, 0},
      {"alpha above 1", Lens::kExtendedUnified, 1, 1.1, 1, 0},
      {"beta", Lens::kExtendedUnified, 1, 0.5, 0, 0},
      {"alpha of two below 0", Lens::kDoubleSphere, 1, 0, -0.1, 0},
      {"alpha of two above 1", Lens::kDoubleSphere, 1, 0, 1.1, 0},
      {"xi at -1", Lens::kDoubleSphere, 1, -1, 0.5, 0},
      {"xi above 1", Lens::kDoubleSphere, 1, 1.1, 0.5, 0},
      {"field below 0", Lens::kFieldOfView, 1, 0, 0, -0.1},
      {"field of a turn", Lens::kFieldOfView, 1, 0, 0, 3.1416},
  };
  for (const NoCamera& no : cases) {
    Camera camera;
    camera.fx = 1;
    camera.lens = no.lens;
    camera.fy = no.fy;
    camera.shape[0] = no.shape0;
    camera.shape[1] = no.shape1;
    camera.distortion[0] = no.distortion0;
    EXPECT_EQ(Status::kNotACamera, Project(camera, {0, 0, 1}).status) << no.what;
    EXPECT_EQ(Status::kNotACamera, Unproject(camera, {0, 0}).status) << no.what;
  }
}

TEST(CameraTest, ExplainsEachStatus) {
  std::set<std::string> texts;
  for (int status = 0; status <= static_cast<int>(Status::kNoMemory); ++status) {
    texts.insert(Explain(static_cast<Status>(status)));
  }
  EXPECT_EQ(static_cast<size_t>(Status::kNoMemory) + 1, texts.size());
  EXPECT_EQ(0u, texts.count("is unknown"));
  EXPECT_STREQ("is unknown", Explain(static_cast<Status>(99)));
}

TEST(CameraTest, RefusesWhatIsNoCameraOrNoPoint) {
  Camera camera;
  const double nan = std::nan("");
  EXPECT_EQ(Status::kNotFinite, Project(camera, {nan, 0, 1}).status);
  EXPECT_EQ(Status::kNotFinite, Unproject(camera, {0, INFINITY}).status);
  EXPECT_EQ(Status::kNotFinite, Unproject(camera, {nan, 0}).status);
  EXPECT_EQ(Status::kBehind, Project(camera, {0, 0, 0}).status);
  camera.fx = 0;
  EXPECT_EQ(Status::kNotACamera, Project(camera, {0, 0, 1}).status);
  camera.fx = nan;
  EXPECT_EQ(Status::kNotACamera, Unproject(camera, {0, 0}).status);
}

Transform RandomTransform(std::mt19937* random) {
  const auto number = [&] { return static_cast<double>((*random)()) / 2147483648.0 - 1; };
  const Quaternion q = {number(), number(), number(), number()};
  return FromQuaternion(q, {number(), number(), number()});
}

void ExpectNear(const Transform& a, const Transform& b, double tolerance) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(a.m[i], b.m[i], tolerance) << i;
}

TEST(TransformTest, EveryFormComesBack) {
  std::mt19937 random(1);
  for (int i = 0; i < 200; ++i) {
    const Transform transform = RandomTransform(&random);
    const Point at = {transform.m[3], transform.m[7], transform.m[11]};
    EXPECT_LT(RotationDefect(transform), 1e-14);
    ExpectNear(transform, Invert(Invert(transform)), 1e-14);
    ExpectNear(Transform(), Compose(transform, Invert(transform)), 1e-14);
    ExpectNear(transform, FromQuaternion(QuaternionOf(transform), at), 1e-14);
    ExpectNear(transform, FromRollPitchYaw(RollPitchYawOf(transform), at), 1e-14);
    ExpectNear(transform, FromRotationVector(RotationVectorOf(transform), at), 1e-14);
    const Transform other = RandomTransform(&random);
    const Point p = Apply(Compose(other, transform), {1, 2, 3});
    const Point q = Apply(other, Apply(transform, {1, 2, 3}));
    EXPECT_NEAR(p.x, q.x, 1e-14);
  }
  // Straight up, where roll and yaw are one.
  const Transform up = FromRollPitchYaw({0.3, kPi / 2, 0.2}, {0, 0, 0});
  ExpectNear(up, FromRollPitchYaw(RollPitchYawOf(up), {0, 0, 0}), 1e-12);
}

TEST(TransformTest, TellsSmallAngleHalfTurnAndDistance) {
  for (const double degrees : {0., 1e-9, 0.01, 45., 90., 179.999999, 180.}) {
    const double c = std::cos(degrees * kDegree), s = std::sin(degrees * kDegree);
    const Transform turned = {{c, 0, s, 3, 0, 1, 0, 12, -s, 0, c, 4, 0, 0, 0, 1}};
    EXPECT_NEAR(AngleBetween(Transform(), turned), degrees * kDegree, 1e-11 * degrees);
    EXPECT_NEAR(AngleBetween(turned, Transform()), degrees * kDegree, 1e-11 * degrees);
    EXPECT_DOUBLE_EQ(13, DistanceBetween(turned, Transform()));
  }
  std::mt19937 random(3);
  const Transform a = RandomTransform(&random), b = RandomTransform(&random);
  EXPECT_NEAR(AngleBetween(a, b), AngleBetween(Compose(b, a), Compose(b, b)), 1e-14);
}

TEST(TransformTest, FindsTheNearestRotation) {
  std::mt19937 random(2);
  const Transform transform = RandomTransform(&random);
  Transform rounded = transform;
  for (int i = 0; i < 11; ++i) rounded.m[i] = std::round(rounded.m[i] * 1e4) / 1e4;
  EXPECT_GT(RotationDefect(rounded), 1e-6);
  EXPECT_LT(RotationDefect(rounded), 1e-3);
  ASSERT_TRUE(Orthonormalize(&rounded));
  EXPECT_LT(RotationDefect(rounded), 1e-14);
  ExpectNear(transform, rounded, 1e-4);
  Transform mirror;
  mirror.m[0] = -1;
  EXPECT_TRUE(std::isinf(RotationDefect(mirror)));
  EXPECT_FALSE(Orthonormalize(&mirror));
  Transform projective;
  projective.m[12] = 1e-9;
  EXPECT_TRUE(std::isinf(RotationDefect(projective)));
}

}  // namespace
}  // namespace calibration_geometry
}  // namespace zarvo
