// What is said of how sample points cover an image, and which of them are views.
#include "calib/views/coverage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace calib {
namespace {

using zarvo::calibration::CameraIntrinsics;

struct Point {
  float x, y;
};

CameraIntrinsics ImageWith(int width, int height, const std::vector<Point>& points) {
  CameraIntrinsics intrinsics;
  intrinsics.set_width(width);
  intrinsics.set_height(height);
  for (const Point& point : points) {
    auto* sample = intrinsics.add_sample_points();
    sample->set_img_x(point.x);
    sample->set_img_y(point.y);
  }
  return intrinsics;
}

struct CoverageCase {
  int width, height;
  std::vector<Point> points;
  size_t inside, outside;
  std::string text;
};

TEST(CoverageTest, CountsCellsAndCorners) {
  std::vector<Point> all;
  for (int row = 0; row < 8; ++row) {
    for (int column = 0; column < 12; ++column) {
      all.push_back({static_cast<float>(column) * 10 + 5, static_cast<float>(row) * 10 + 5});
    }
  }
  std::vector<Point> but_one = all;
  but_one.erase(but_one.begin() + 50);
  const CoverageCase cases[] = {
      {120, 80, all, 96, 0, "100 % of 12 × 8 cells hit"},
      {120, 80, but_one, 95, 0, "99 % of 12 × 8 cells hit"},
      {120, 80, {}, 0, 0, "0 % of 12 × 8 cells hit, no point in any corner"},
      {80, 120, {{40, 60}}, 1, 0, "1 % of 8 × 12 cells hit, no point in any corner"},
      {120,
       80,
       {{0, 0}, {119.99F, 0}, {0, 79.99F}},
       3,
       0,
       "3 % of 12 × 8 cells hit, no point in the bottom right corner"},
      {120,
       80,
       {{-1, 5}, {120, 5}, {5, 80}, {NAN, 5}, {INFINITY, 5}},
       0,
       4,
       "0 % of 12 × 8 cells hit, no point in any corner"}};
  for (const CoverageCase& test : cases) {
    const Coverage coverage = CoverageOf(ImageWith(test.width, test.height, test.points));
    EXPECT_EQ(coverage.Text(), test.text);
    EXPECT_EQ(coverage.inside, test.inside) << test.text;
    EXPECT_EQ(coverage.outside, test.outside) << test.text;
  }
}

struct ViewsCase {
  const char* what;
  std::string targets;  // a letter for each point of the target, in the order of the samples
  std::vector<int> views;
};

TEST(ViewsTest, GoByTheOrder) {
  const ViewsCase cases[] = {
      {"nothing", "", {0}},          {"one", "abcdef", {0}},
      {"two", "abcdeabcde", {0, 5}}, {"parts of the target", "abcdefcdefabcde", {0, 6, 12}},
      {"no order", "aabbccdd", {0}}, {"one not set", "abcde-abcde", {0}}};
  for (const ViewsCase& test : cases) {
    CameraIntrinsics intrinsics;
    for (const char target : test.targets) {
      auto* sample = intrinsics.add_sample_points();
      if (target == '-') continue;
      sample->set_tgt_x(static_cast<float>(target));
      sample->set_tgt_y(0);
    }
    EXPECT_EQ(ViewsOf(intrinsics), test.views) << test.what;
  }
}

}  // namespace
}  // namespace calib
