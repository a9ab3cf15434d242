#include "calib/views/coverage.h"

#include <algorithm>
#include <set>
#include <utility>

namespace calib {

using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::CameraIntrinsicsSamplePoints;

namespace {

constexpr int kLong = 12, kShort = 8;
constexpr size_t kLeastOfView = 4;  // a homography takes as many

int CellOf(double value, double length, int cells) {
  return std::min(static_cast<int>(value / length * cells), cells - 1);
}

// Whether no point is in the corner: a quarter of the columns and of the rows.
bool IsEmptyCorner(const Coverage& coverage, bool right, bool bottom) {
  const int wide = coverage.across / 4, high = coverage.down / 4;
  for (int row = 0; row < high; ++row) {
    for (int column = 0; column < wide; ++column) {
      if (coverage.At(right ? coverage.across - 1 - column : column,
                      bottom ? coverage.down - 1 - row : row) > 0) {
        return false;
      }
    }
  }
  return true;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (size_t i = 0; i < words.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == words.size() ? " and " : ", ") + words[i];
  }
  return text;
}

}  // namespace

size_t Coverage::At(int column, int row) const {
  return hits[static_cast<size_t>(row) * static_cast<size_t>(across) + static_cast<size_t>(column)];
}

size_t Coverage::CellsHit() const {
  return static_cast<size_t>(
      std::count_if(hits.begin(), hits.end(), [](size_t count) { return count > 0; }));
}

std::string Coverage::Text() const {
  // All of them is what 100 % says, and none 0 %.
  size_t percent = (CellsHit() * 200 + hits.size()) / (2 * hits.size());
  if (percent == 100 && CellsHit() < hits.size()) percent = 99;
  if (percent == 0 && CellsHit() > 0) percent = 1;
  std::string text = std::to_string(percent) + " % of " + std::to_string(across) + " \xc3\x97 " +
                     std::to_string(down) + " cells hit";
  std::vector<std::string> corners;
  for (const bool bottom : {false, true}) {
    for (const bool right : {false, true}) {
      if (IsEmptyCorner(*this, right, bottom)) {
        corners.push_back(std::string(bottom ? "bottom " : "top ") + (right ? "right" : "left"));
      }
    }
  }
  if (corners.empty()) return text;
  if (corners.size() == 4) return text + ", no point in any corner";
  return text + ", no point in the " + Joined(corners) +
         (corners.size() == 1 ? " corner" : " corners");
}

Coverage CoverageOf(const CameraIntrinsics& intrinsics) {
  Coverage coverage;
  const double width = intrinsics.width(), height = intrinsics.height();
  coverage.across = width >= height ? kLong : kShort;
  coverage.down = width >= height ? kShort : kLong;
  coverage.hits.resize(static_cast<size_t>(coverage.across) * static_cast<size_t>(coverage.down));
  for (const CameraIntrinsicsSamplePoints& point : intrinsics.sample_points()) {
    const double x = point.img_x(), y = point.img_y();
    if (!point.has_img_x() || !point.has_img_y() || x != x || y != y) continue;
    if (!(x >= 0 && x < width && y >= 0 && y < height)) {
      ++coverage.outside;
      continue;
    }
    ++coverage.inside;
    const int row = CellOf(y, height, coverage.down), column = CellOf(x, width, coverage.across);
    ++coverage.hits[static_cast<size_t>(row) * static_cast<size_t>(coverage.across) +
                    static_cast<size_t>(column)];
  }
  return coverage;
}

std::vector<int> ViewsOf(const CameraIntrinsics& intrinsics) {
  std::vector<int> views = {0};
  std::set<std::pair<float, float>> seen;
  for (int i = 0; i < intrinsics.sample_points_size(); ++i) {
    const CameraIntrinsicsSamplePoints& point = intrinsics.sample_points(i);
    const float x = point.tgt_x(), y = point.tgt_y();
    if (!point.has_tgt_x() || !point.has_tgt_y() || x != x || y != y) return {0};
    if (seen.insert({x, y}).second) continue;
    views.push_back(i);
    seen = {{x, y}};
  }
  const size_t points = static_cast<size_t>(intrinsics.sample_points_size());
  if (points < views.size() * kLeastOfView) return {0};
  return views;
}

}  // namespace calib
