#include "calib/charts/label_places.h"

#include <algorithm>

namespace calib {

void LabelPlaces::Avoid(double x1, double y1, double x2, double y2) {
  lines_.push_back({x1, y1, x2, y2});
}

int LabelPlaces::Take(const std::vector<Box>& places) {
  int best = -1;
  size_t fewest = 0;
  for (size_t i = 0; i < places.size() && (best < 0 || fewest > 0); ++i) {
    if (!IsFree(places[i])) continue;
    const size_t lines = LinesOn(places[i]);
    if (best >= 0 && lines >= fewest) continue;
    best = static_cast<int>(i);
    fewest = lines;
  }
  if (best >= 0) taken_.push_back(places[static_cast<size_t>(best)]);
  return best;
}

bool LabelPlaces::IsFree(const Box& place) const {
  if (place.x1 < drawing_.x1 || place.y1 < drawing_.y1 || place.x2 > drawing_.x2 ||
      place.y2 > drawing_.y2) {
    return false;
  }
  return std::none_of(taken_.begin(), taken_.end(), [&](const Box& other) {
    return place.x1 < other.x2 && other.x1 < place.x2 && place.y1 < other.y2 && other.y1 < place.y2;
  });
}

size_t LabelPlaces::LinesOn(const Box& place) const {
  return static_cast<size_t>(std::count_if(lines_.begin(), lines_.end(), [&](const Box& line) {
    // The part of the line, as shares of its length, that is within the box in x, and of that in y.
    double begin = 0, end = 1;
    const auto cut = [&](double from, double to, double low, double high) {
      if (from == to) {
        if (from < low || from > high) end = -1;
        return;
      }
      const double at_low = (low - from) / (to - from), at_high = (high - from) / (to - from);
      begin = std::max(begin, std::min(at_low, at_high));
      end = std::min(end, std::max(at_low, at_high));
    };
    cut(line.x1, line.x2, place.x1, place.x2);
    cut(line.y1, line.y2, place.y1, place.y2);
    return begin <= end;
  }));
}

}  // namespace calib
