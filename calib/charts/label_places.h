// Places for labels that neither overlap each other nor leave the drawing.
#ifndef CALIB_CHARTS_LABEL_PLACES_H_
#define CALIB_CHARTS_LABEL_PLACES_H_

#include <vector>

namespace calib {

struct Box {
  double x1, y1, x2, y2;
};

class LabelPlaces {
 public:
  explicit LabelPlaces(const Box& drawing) : drawing_(drawing) {}

  // Takes the first of the places that lies in the drawing and is free. Returns its number, or -1
  // if there is none.
  int Take(const std::vector<Box>& places);

 private:
  bool IsFree(const Box& place) const;

  Box drawing_;
  std::vector<Box> taken_;
};

}  // namespace calib

#endif  // CALIB_CHARTS_LABEL_PLACES_H_
