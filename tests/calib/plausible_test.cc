// The arithmetic behind `calib check --plausible` and `calib diff`: radial curves beside curves
// that are walked along in small steps, rigid transforms beside such as were put together by hand,
// residuals of points that are off by so much.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <random>

#include "calib/checks/radial_curve.h"
#include "calib/checks/rules.h"
#include "calib/fields/rigid_numbers.h"

namespace calib {
namespace {

double Power(const std::vector<double>& coefficients, double s) {
  double value = 1, power = 1;
  for (const double c : coefficients) value += c * (power *= s);
  return value;
}

// The same by steps: where the landing is highest before it falls for the first time.
std::optional<double> Walked(const RadialCurve& curve) {
  constexpr int kSteps = 100000;
  double before = 0;
  for (int i = 1; i <= kSteps; ++i) {
    const double in = curve.largest * i / kSteps;
    const double bottom = Power(curve.denominator, in * in);
    if (bottom <= 0) return std::nullopt;
    const double landing = in * Power(curve.numerator, in * in) / bottom;
    if (landing < before) return before;
    before = landing;
  }
  return std::nullopt;
}

TEST(RadialCurveTest, FallsWhereStepsSayThatItDoes) {
  std::mt19937 random(20240229);
  std::uniform_real_distribution<double> coefficient(-0.5, 0.5);
  int falling = 0;
  constexpr int kCurves = 300;
  for (int i = 0; i < kCurves; ++i) {
    RadialCurve curve = {{}, {}, 3};
    for (int j = 0; j < 1 + i % 4; ++j) curve.numerator.push_back(coefficient(random));
    for (int j = 0; j < i / 4 % 4; ++j) curve.denominator.push_back(coefficient(random));
    const std::optional<double> expected = Walked(curve), found = HighestLanding(curve);
    ASSERT_EQ(found.has_value(), expected.has_value()) << "curve " << i;
    if (!expected) continue;
    ++falling;
    EXPECT_NEAR(*found, *expected, 1e-6 * std::abs(*expected)) << "curve " << i;
  }
  EXPECT_GT(falling, kCurves / 4);
  EXPECT_LT(falling, kCurves * 3 / 4);
}

TEST(RadialCurveTest, RisesWithoutCoefficients) {
  EXPECT_FALSE(HighestLanding({{}, {}, 1e6}).has_value());
  EXPECT_FALSE(HighestLanding({{0, 0, 0}, {0}, 1e6}).has_value());
  EXPECT_DOUBLE_EQ(HighestLanding({{-1. / 3}, {}, 1e6}).value(), 2. / 3);  // in - in^3 / 3
}

RigidNumbers Transform(std::initializer_list<double> numbers) {
  const google::protobuf::RepeatedField<double> a(numbers.begin(), numbers.end());
  return AsRigidNumbers(a).value();
}

TEST(RigidNumbersTest, IsTheSameInEveryLayout) {
  const double c = std::cos(0.1), s = std::sin(0.1);
  const RigidNumbers transforms[] = {
      Transform({c, -s, 0, 1, s, c, 0, 2, 0, 0, 1, 3}),
      Transform({c, s, 0, -s, c, 0, 0, 0, 1, 1, 2, 3}),
      Transform({c, -s, 0, 1, s, c, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}),
      Transform({c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}),
  };
  for (const RigidNumbers& transform : transforms) {
    const auto& m = transform.transform.m;
    EXPECT_TRUE(std::equal(std::begin(m), std::end(m), transforms[0].transform.m));
    EXPECT_EQ((std::array<double, 3>{m[3], m[7], m[11]}), (std::array<double, 3>{1, 2, 3}));
    EXPECT_LT(transform.off, 1e-15);
  }
}

// Three views of a target, whose points are seen half a pixel off, to all sides.
zarvo::calibration::CameraIntrinsics WithSamples(bool fisheye) {
  namespace geometry = zarvo::calibration_geometry;
  zarvo::calibration::CameraIntrinsics in;
  geometry::Camera camera;
  in.set_fx(camera.fx = 400);
  in.set_fy(camera.fy = 410);
  in.set_skew(0);
  in.set_cx(camera.cx = 320);
  in.set_cy(camera.cy = 240);
  camera.lens = fisheye ? geometry::Lens::kFisheye : geometry::Lens::kBrown;
  for (const double k : {0.1, -0.05, 0.02, -0.01}) {
    if (!fisheye && in.k_size() == 2) break;
    camera.distortion[in.k_size()] = k;
    in.add_k(k);
  }
  if (!fisheye) in.add_p(camera.distortion[2] = 0.001);
  if (!fisheye) in.add_p(camera.distortion[3] = -0.002);
  for (int view = 0; view < 3; ++view) {
    const geometry::Transform pose =
        geometry::FromRotationVector({0.2 * view, -0.1, 0.05}, {-0.3, -0.3, 1.2 + 0.1 * view});
    for (int i = 0; i < 64; ++i) {
      const double x = 0.1 * (i % 8), y = 0.1 * (i / 8);
      const geometry::Pixel pixel =
          geometry::Project(camera, geometry::Apply(pose, {x, y, 0})).pixel;
      auto* sample = in.add_sample_points();
      const double angle = 2.4 * i;
      sample->set_img_x(static_cast<float>(pixel.u + 0.5 * std::cos(angle)));
      sample->set_img_y(static_cast<float>(pixel.v + 0.5 * std::sin(angle)));
      sample->set_tgt_x(static_cast<float>(x));
      sample->set_tgt_y(static_cast<float>(y));
    }
  }
  return in;
}

TEST(ResidualRuleTest, FindsErrorsThatPointsDoNotHave) {
  for (const bool fisheye : {false, true}) {
    const zarvo::calibration::CameraIntrinsics in = WithSamples(fisheye);
    const auto findings = [&](double error, auto change) {
      zarvo::calibration::CameraIntrinsics changed = in;
      changed.set_error_per_point(error);
      change(&changed);
      Findings found;
      CheckResiduals(changed, "camera", &found);
      return found;
    };
    const auto as_it_is = [](auto*) {};
    EXPECT_TRUE(findings(0.5, as_it_is).empty());
    EXPECT_TRUE(findings(0.36, as_it_is).empty());
    EXPECT_TRUE(findings(0.7, as_it_is).empty());
    for (const double error : {0.3, 0.8, 0.0, -1.0, std::nan("")}) {
      const Findings found = findings(error, as_it_is);
      ASSERT_EQ(found.size(), 1U) << error;
      EXPECT_EQ(found[0].rule, "residual");
      EXPECT_EQ(found[0].path, "camera.error_per_point");
    }
    // What does not tell is not judged.
    EXPECT_TRUE(findings(9, [](auto* it) { it->clear_error_per_point(); }).empty());
    EXPECT_TRUE(findings(9, [](auto* it) { it->clear_sample_points(); }).empty());
    EXPECT_TRUE(findings(9, [](auto* it) { it->clear_fx(); }).empty());
    EXPECT_TRUE(findings(9, [](auto* it) { it->mutable_sample_points(5)->clear_tgt_x(); }).empty());
    EXPECT_TRUE(findings(9, [](auto* it) {
                  it->add_sample_points()->CopyFrom(it->sample_points(0));
                }).empty());
    EXPECT_TRUE(findings(9, [](auto* it) { it->set_fx(-1); }).empty());
  }
}

}  // namespace
}  // namespace calib
