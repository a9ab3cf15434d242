#include "calib/charts/label_places.h"

#include <algorithm>

namespace calib {

int LabelPlaces::Take(const std::vector<Box>& places) {
  for (size_t i = 0; i < places.size(); ++i) {
    if (!IsFree(places[i])) continue;
    taken_.push_back(places[i]);
    return static_cast<int>(i);
  }
  return -1;
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

}  // namespace calib
