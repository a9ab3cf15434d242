#include "calib/charts/thinning.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace calib {

std::vector<DotRun> HitCells(const std::vector<Pixel>& places, double size) {
  std::vector<std::pair<long, long>> cells;  // row and column
  cells.reserve(places.size());
  for (const Pixel& place : places) {
    cells.emplace_back(std::lround(std::floor(place.y / size)),
                       std::lround(std::floor(place.x / size)));
  }
  std::sort(cells.begin(), cells.end());
  cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
  std::vector<DotRun> runs;
  for (const auto& cell : cells) {
    if (!runs.empty() && runs.back().row == cell.first &&
        runs.back().column + runs.back().count == cell.second) {
      ++runs.back().count;
    } else {
      runs.push_back({cell.first, cell.second, 1});
    }
  }
  return runs;
}

std::vector<Pixel> ThinnedCurve(const std::vector<Pixel>& curve) {
  std::vector<Pixel> thin;
  for (size_t begin = 0, end; begin < curve.size(); begin = end) {
    const double column = std::floor(curve[begin].x);
    size_t lowest = begin, highest = begin;
    for (end = begin; end < curve.size() && std::floor(curve[end].x) == column; ++end) {
      if (curve[end].y < curve[lowest].y) lowest = end;
      if (curve[end].y > curve[highest].y) highest = end;
    }
    size_t kept[] = {begin, lowest, highest, end - 1};
    std::sort(std::begin(kept), std::end(kept));
    const auto last = std::unique(std::begin(kept), std::end(kept));
    for (auto i = std::begin(kept); i != last; ++i) thin.push_back(curve[*i]);
  }
  return thin;
}

}  // namespace calib
