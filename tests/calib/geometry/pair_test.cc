// What is made of two cameras, or of one camera another: rectified pairs, differences, fitted
// lenses, other images, poses. Against the numbers of reference.txt, and against what must hold of
// any camera.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "calib/geometry/calibration_geometry.h"
#include "tests/calib/geometry/reference.h"

namespace zarvo {
namespace calibration_geometry {
namespace {

// The lines of that kind, each with the two cameras above it.
struct Case {
  Reference line;
  Camera before, last;
};

std::vector<Case> CasesOf(const std::string& kind) {
  std::vector<Case> cases;
  Camera before, last;
  double width = 0, height = 0;
  ForEachReference([&](const Reference& line) {
    if (line.kind == "size") {
      width = line.numbers[0];
      height = line.numbers[1];
    } else if (line.kind == "camera") {
      before = last;
      last = line.camera;
      last.width = static_cast<int>(width);
      last.height = static_cast<int>(height);
    } else if (line.kind == kind) {
      cases.push_back({line, before, last});
    }
  });
  EXPECT_GT(cases.size(), 2) << kind;
  return cases;
}

Transform FromRows(const double* rows) {
  Transform transform;
  std::copy(rows, rows + 12, transform.m);
  return transform;
}

void ExpectNumbers(const double* expected, const double* actual, int count, const char* what) {
  for (int i = 0; i < count; ++i) EXPECT_NEAR(expected[i], actual[i], 1e-9) << what << i;
}

TEST(RectifyTest, AgreesWithTheReference) {
  for (const Case& c : CasesOf("stereo")) {
    SCOPED_TRACE(c.line.text);
    const double* n = c.line.numbers.data();
    RectifyOptions options;
    options.alpha = n[0];
    options.zero_disparity = n[1] != 0;
    const Rectified pair = Rectify(c.before, c.last, FromRows(n + 2), options);
    EXPECT_EQ(Status::kOk, pair.status);
    EXPECT_FALSE(pair.swapped);
    ExpectNumbers(n + 14, pair.r1, 9, "R1 ");
    ExpectNumbers(n + 23, pair.r2, 9, "R2 ");
    ExpectNumbers(n + 32, pair.p1, 12, "P1 ");
    ExpectNumbers(n + 44, pair.p2, 12, "P2 ");
    ExpectNumbers(n + 56, pair.q, 16, "Q ");
  }
}

double Between(std::mt19937* random, double low, double high) {
  return low + (high - low) * static_cast<double>((*random)()) / 4294967296.0;
}

Camera RandomCamera(Lens lens, std::mt19937* random) {
  Camera camera;
  camera.lens = lens;
  camera.width = 1280;
  camera.height = 960;
  camera.fx = Between(random, 600, 900);
  camera.fy = camera.fx * Between(random, 0.98, 1.02);
  camera.cx = Between(random, 600, 680);
  camera.cy = Between(random, 440, 520);
  for (int i = 0; i < 4; ++i) {
    const double size = lens == Lens::kBrown && i >= 2 ? 0.002 : 0.03 / (i + 1);
    camera.distortion[i] = Between(random, -size, size);
  }
  return camera;
}

Pixel Landing(const double* p, const double* r, const Point& point) {
  double x[3];
  for (int i = 0; i < 3; ++i)
    x[i] = r[3 * i] * point.x + r[3 * i + 1] * point.y + r[3 * i + 2] * point.z;
  double h[3];
  for (int i = 0; i < 3; ++i) {
    h[i] = p[4 * i] * x[0] + p[4 * i + 1] * x[1] + p[4 * i + 2] * x[2] + p[4 * i + 3];
  }
  return {h[0] / h[2], h[1] / h[2]};
}

// A point is in the same row (column) of both rectified images, and Q tells where it is. P2 maps
// from the first rectified camera.
TEST(RectifyTest, RowsMeet) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const Lens lenses[] = {Lens::kBrown, Lens::kFisheye};
    const Camera left = RandomCamera(lenses[seed % 2], &random);
    const Camera right = RandomCamera(lenses[seed / 2 % 2], &random);
    const bool vertical = seed % 3 == 0, swapped = seed % 5 == 0;
    Point offset = {vertical ? 0.02 : 0.2, vertical ? 0.2 : -0.02, 0.03};
    if (!swapped) offset = {-offset.x, -offset.y, offset.z};
    const Transform between = FromRollPitchYaw(
        {Between(&random, -0.1, 0.1), Between(&random, -0.1, 0.1), Between(&random, -0.1, 0.1)},
        offset);
    const Rectified pair = Rectify(left, right, between, RectifyOptions());
    ASSERT_EQ(Status::kOk, pair.status);
    EXPECT_EQ(vertical, pair.vertical);
    EXPECT_EQ(swapped, pair.swapped);
    EXPECT_NEAR(std::hypot(offset.x, offset.y, offset.z), pair.baseline, 1e-12);
    for (int i = 0; i < 20; ++i) {
      const Point p = {Between(&random, -1, 1), Between(&random, -1, 1), Between(&random, 2, 9)};
      const Pixel a = Landing(pair.p1, pair.r1, p);
      const Pixel in_second = Landing(pair.p2, pair.r1, p);
      // Seen by the second camera itself: turned by its own rotation, without the offset.
      double alone[12];
      std::copy(pair.p2, pair.p2 + 12, alone);
      alone[3] = alone[7] = 0;
      const Pixel b = Landing(alone, pair.r2, Apply(between, p));
      EXPECT_NEAR(vertical ? a.u : a.v, vertical ? b.u : b.v, 1e-6);
      EXPECT_NEAR(in_second.u, b.u, 1e-6);
      EXPECT_NEAR(in_second.v, b.v, 1e-6);
      const double disparity = vertical ? a.v - b.v : a.u - b.u;
      double h[4];
      for (int row = 0; row < 4; ++row) {
        const double* q = pair.q + 4 * row;
        h[row] = q[0] * a.u + q[1] * a.v + q[2] * disparity + q[3];
      }
      const double* r = pair.r1;
      EXPECT_NEAR(r[6] * p.x + r[7] * p.y + r[8] * p.z, h[2] / h[3], 1e-6);
    }
  }
}

TEST(RectifyTest, RefusesWhatCannotBeRectified) {
  std::mt19937 random(1);
  const Camera camera = RandomCamera(Lens::kBrown, &random);
  Transform between;
  EXPECT_EQ(Status::kNoSolution, Rectify(camera, camera, between, {}).status) << "no baseline";
  between.m[11] = 1;
  EXPECT_EQ(Status::kNoSolution, Rectify(camera, camera, between, {}).status) << "along the axis";
  between.m[3] = 1;
  between.m[0] = 2;
  EXPECT_EQ(Status::kNotARotation, Rectify(camera, camera, between, {}).status);
  Camera other = camera;
  other.width = 640;
  EXPECT_EQ(Status::kNotACamera, Rectify(camera, other, Transform(), {}).status);
}

TEST(CompareTest, AgreesWithTheReference) {
  for (const Case& c : CasesOf("difference")) {
    SCOPED_TRACE(c.line.text);
    const std::vector<double>& n = c.line.numbers;
    DifferenceOptions options;
    options.columns = static_cast<int>(n[0]);
    options.distance = n[1];
    options.fit = n[2] != 0;
    const Difference difference = Compare(c.before, c.last, options);
    ASSERT_EQ(Status::kOk, difference.status);
    for (int i = 0; i < 9; ++i) {
      EXPECT_NEAR(n[3 + i], difference.after_from_before.m[i / 3 * 4 + i % 3], 1e-5);
    }
    for (size_t i = 12; i < n.size(); i += 4) {
      const auto at = static_cast<size_t>(n[i] * options.columns + n[i + 1]);
      const Displacement& pixel = difference.pixels[at];
      EXPECT_EQ(Status::kOk, pixel.status) << at;
      EXPECT_NEAR(n[i + 2], pixel.by.u, 0.01) << at;
      EXPECT_NEAR(n[i + 3], pixel.by.v, 0.01) << at;
      EXPECT_LE(std::hypot(pixel.by.u, pixel.by.v), difference.largest);
    }
  }
}

TEST(CompareTest, TakesOutWhatIsOnlyTurned) {
  std::mt19937 random(3);
  const Camera camera = RandomCamera(Lens::kBrown, &random);
  const Difference same = Compare(camera, camera, {});
  EXPECT_LT(same.largest, 1e-9);
  Camera shifted = camera;
  shifted.cx += 3;
  const Difference turned = Compare(camera, shifted, {});
  DifferenceOptions plain;
  plain.fit = false;
  const Difference left = Compare(camera, shifted, plain);
  EXPECT_NEAR(3, left.largest, 1e-9);
  EXPECT_NEAR(3, left.mean, 1e-9);
  EXPECT_LT(turned.mean, 1);
  EXPECT_NEAR(-3 / camera.fx, RotationVectorOf(turned.after_from_before).y, 1e-3);
}

struct FitCase {
  const char* name;
  Lens from, to;
  int coefficients;
  double most;  // largest error that is left
};

TEST(FitLensTest, RecoversWhatWasPutIn) {
  const FitCase cases[] = {{"brown", Lens::kBrown, Lens::kBrown, 4, 1e-6},
                           {"as more", Lens::kBrown, Lens::kBrown, 8, 1e-4},
                           {"fisheye", Lens::kFisheye, Lens::kFisheye, 4, 1e-6},
                           {"across", Lens::kFisheye, Lens::kBrown, 8, 0.3},
                           {"back", Lens::kBrown, Lens::kFisheye, 4, 8.0}};
  for (const FitCase& c : cases) {
    for (unsigned seed = 0; seed < 3; ++seed) {
      SCOPED_TRACE(std::string(c.name) + ", seed " + std::to_string(seed));
      std::mt19937 random(seed);
      const Camera source = RandomCamera(c.from, &random);
      const FittedLens fitted = FitLens(source, c.to, c.coefficients, {});
      ASSERT_EQ(Status::kOk, fitted.status);
      EXPECT_LT(fitted.largest, c.most);
      EXPECT_LE(fitted.rms, fitted.largest);
      EXPECT_EQ(0u, fitted.unseen) << fitted.reach << " " << fitted.angle << " "
                                   << LargestAngle(fitted.camera) << " " << fitted.rms;
      if (c.from != c.to || c.coefficients != 4) continue;
      EXPECT_NEAR(source.fx, fitted.camera.fx, 1e-5);
      EXPECT_NEAR(source.cx, fitted.camera.cx, 1e-5);
      for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(source.distortion[i], fitted.camera.distortion[i], 1e-7) << i;
      }
      EXPECT_EQ(fitted.reach, fitted.angle);
    }
  }
}

// A thin prism fisheye without the prism is a fisheye, and a division lens near the axis one of the
// plane.
TEST(FitLensTest, RecoversWhatIsTheSameLens) {
  Camera camera;
  camera.lens = Lens::kThinPrismFisheye;
  camera.width = 1280;
  camera.height = 1024;
  camera.fx = 420;
  camera.fy = 421;
  camera.cx = 641;
  camera.cy = 510;
  const double thin[] = {0.05, -0.02, 0, 0, 0.008, -0.001};
  std::copy(thin, thin + 6, camera.distortion);
  FittedLens fitted = FitLens(camera, Lens::kFisheye, 4, {});
  ASSERT_EQ(Status::kOk, fitted.status);
  EXPECT_LT(fitted.largest, 1e-6);
  EXPECT_NEAR(420, fitted.camera.fx, 1e-5);
  EXPECT_NEAR(510, fitted.camera.cy, 1e-5);
  const double k[] = {0.05, -0.02, 0.008, -0.001};
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(k[i], fitted.camera.distortion[i], 1e-7) << i;

  // A real one's prism and tangential distortion, which no fisheye of a record has.
  const double prism[] = {2e-4, -1e-4, 3e-4, -2e-4};
  camera.distortion[2] = prism[0];
  camera.distortion[3] = prism[1];
  camera.distortion[8] = prism[2];
  camera.distortion[10] = prism[3];
  fitted = FitLens(camera, Lens::kFisheye, 4, {});
  ASSERT_EQ(Status::kOk, fitted.status);
  EXPECT_GT(fitted.largest, 1e-2);
  EXPECT_LT(fitted.largest, 2);

  camera = Camera();
  camera.lens = Lens::kDivision;
  camera.width = 640;
  camera.height = 480;
  camera.fx = camera.fy = 500;
  camera.cx = 320;
  camera.cy = 240;
  for (const double lambda : {-0.2, 0.1}) {
    camera.distortion[0] = lambda;
    fitted = FitLens(camera, Lens::kBrown, 8, {});
    ASSERT_EQ(Status::kOk, fitted.status);
    EXPECT_LT(fitted.largest, 1e-3) << lambda;
    EXPECT_NEAR(500, fitted.camera.fx, 1e-2);
    // x (1 + lambda r^2 + ...) to the first order
    EXPECT_NEAR(lambda, fitted.camera.distortion[0] - fitted.camera.distortion[5], 1e-2);
  }
}

// Numerator and denominator nearly cancel, as they do in cameras of some makers, and a little is
// there that the fitted lens does not have: from no distortion at all there is no way to them.
TEST(FitLensTest, BeginsWithTheCoefficientsOfTheSameModel) {
  Camera camera;
  camera.lens = Lens::kBrown;
  camera.width = 1280;
  camera.height = 800;
  camera.fx = camera.fy = 800;
  camera.cx = 640;
  camera.cy = 400;
  const double coefficients[] = {-4.5, 15.25, 5e-4, -1.5e-3, 3.5, -4.75, 16.5, 0.5, 2e-4};
  std::copy(std::begin(coefficients), std::end(coefficients), camera.distortion);
  const FittedLens fitted = FitLens(camera, Lens::kBrown, 8, {});
  ASSERT_EQ(Status::kOk, fitted.status);
  EXPECT_LT(fitted.largest, 0.1);
  EXPECT_NEAR(-4.5, fitted.camera.distortion[0], 0.1);
  EXPECT_EQ(0, fitted.camera.distortion[8]);
}

// A unified camera with a mirror, of 190 degrees, as a fisheye: and as a lens that cannot be.
TEST(FitLensTest, TellsWhereItHolds) {
  Camera omni;
  omni.lens = Lens::kOmni;
  omni.width = 1280;
  omni.height = 1024;
  omni.fx = omni.fy = 900;
  omni.cx = 640;
  omni.cy = 512;
  omni.shape[0] = 1.3;
  omni.distortion[0] = -0.1;
  const FittedLens fisheye = FitLens(omni, Lens::kFisheye, 4, {});
  ASSERT_EQ(Status::kOk, fisheye.status);
  EXPECT_LT(fisheye.largest, 0.5);
  EXPECT_GT(fisheye.reach, 1.2);
  EXPECT_EQ(fisheye.reach, fisheye.angle);
  const FittedLens bob = FitLens(omni, Lens::kBrown, 5, {});
  ASSERT_EQ(Status::kOk, bob.status);
  EXPECT_GT(bob.largest, 0.5);
  EXPECT_LT(bob.angle, bob.reach);
}

// The pixel map and the camera say the same of every point.
TEST(ResizeTest, PixelsAreWhereTheImageHasThem) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    std::mt19937 random(seed);
    Camera camera = RandomCamera(seed % 2 == 0 ? Lens::kBrown : Lens::kFisheye, &random);
    if (seed % 2 == 0) {
      for (int i = 8; i < 12; ++i) camera.distortion[i] = Between(&random, -0.01, 0.01);
    }
    Camera skewed = camera;
    skewed.skew = 2.5;
    const Resized all[] = {Scale(skewed, 333, 500),  Crop(skewed, 20, 30, 100, 90),
                           Bin(skewed, 2, 4, false), Bin(skewed, 2, 4, true),
                           Rotate(camera, 1),        Rotate(skewed, 2),
                           Rotate(camera, 3),        Rotate(skewed, 4),
                           Rotate(camera, -1)};
    for (size_t i = 0; i < sizeof all / sizeof *all; ++i) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", case " + std::to_string(i));
      const Resized& resized = all[i];
      ASSERT_EQ(Status::kOk, resized.status);
      const bool straight = i == 4 || i == 6 || i == 8;
      const Point point = {Between(&random, -1, 1), Between(&random, -1, 1), 2};
      const Pixel before = Project(straight ? camera : skewed, point).pixel;
      const Pixel after = Project(resized.camera, Apply(resized.new_from_old, point)).pixel;
      const double* m = resized.pixel_map;
      EXPECT_NEAR(m[0] * before.u + m[1] * before.v + m[2], after.u, 1e-9);
      EXPECT_NEAR(m[3] * before.u + m[4] * before.v + m[5], after.v, 1e-9);
    }
    const Camera there_and_back = Scale(Scale(skewed, 640, 480).camera, 1280, 960).camera;
    EXPECT_NEAR(skewed.cx, there_and_back.cx, 1e-12 * skewed.cx);
    EXPECT_NEAR(skewed.fx, there_and_back.fx, 1e-12 * skewed.fx);
    EXPECT_EQ(Status::kNoSolution, Rotate(skewed, 1).status);
  }
}

TEST(ResizeTest, AgreesWithTheReference) {
  Camera camera;
  camera.height = 4;
  for (const Case& c : CasesOf("resize")) {
    const std::vector<double>& n = c.line.numbers;
    camera.width = static_cast<int>(n[0]);
    const Resized resized = Scale(camera, static_cast<int>(n[1]), 4);
    EXPECT_NEAR(n[2], resized.pixel_map[0] * n[3] + resized.pixel_map[2], 1e-9) << c.line.text;
  }
  for (const Case& c : CasesOf("turn")) {
    const std::vector<double>& n = c.line.numbers;
    camera.width = static_cast<int>(n[1]);
    camera.height = static_cast<int>(n[2]);
    const Resized resized = Rotate(camera, static_cast<int>(n[0]));
    const double* m = resized.pixel_map;
    EXPECT_EQ(n[5], m[0] * n[3] + m[1] * n[4] + m[2]) << c.line.text;
    EXPECT_EQ(n[6], m[3] * n[3] + m[4] * n[4] + m[5]) << c.line.text;
  }
}

TEST(FitPoseTest, AgreesWithTheReference) {
  const std::vector<Case> targets = CasesOf("target"), poses = CasesOf("pose");
  for (size_t i = 0; i < targets.size(); ++i) {
    SCOPED_TRACE(i);
    const std::vector<double>& n = targets[i].line.numbers;
    std::vector<TargetPoint> points;
    for (size_t at = 1; at < n.size(); at += 4) {
      points.push_back({n[at], n[at + 1], {n[at + 2], n[at + 3]}});
    }
    const Pose pose = FitPose(targets[i].last, n[0], points);
    ASSERT_EQ(Status::kOk, pose.status);
    const double* expected = poses[i].line.numbers.data();
    EXPECT_NEAR(expected[0], pose.rms, 1e-7);
    const Point vector = RotationVectorOf(pose.camera_from_target);
    const double* m = pose.camera_from_target.m;
    const double actual[] = {vector.x, vector.y, vector.z, m[3], m[7], m[11]};
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(expected[1 + k], actual[k], 1e-6) << k;
    points.resize(3);
    EXPECT_EQ(Status::kNoSolution, FitPose(targets[i].last, n[0], points).status);
  }
}

TEST(FitPoseTest, RefusesPointsOnALine) {
  std::mt19937 random(4);
  std::vector<TargetPoint> points;
  for (int i = 0; i < 10; ++i) points.push_back({0.1 * i, 0, {600 + 10.0 * i, 480}});
  EXPECT_EQ(Status::kNoSolution, FitPose(RandomCamera(Lens::kBrown, &random), 0, points).status);
}

}  // namespace
}  // namespace calibration_geometry
}  // namespace zarvo
