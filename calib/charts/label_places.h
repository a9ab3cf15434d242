// Places for labels that neither overlap each other nor leave the drawing.
#ifndef CALIB_CHARTS_LABEL_PLACES_H_
#define CALIB_CHARTS_LABEL_PLACES_H_

#include <cstddef>
#include <vector>

namespace calib {

struct Box {
  double x1, y1, x2, y2;
};

class LabelPlaces {
 public:
  explicit LabelPlaces(const Box& drawing) : drawing_(drawing) {}

  // A line that labels had better not lie on.
  void Avoid(double x1, double y1, double x2, double y2);

  // Takes, of the places that lie in the drawing and are free, the first on the fewest lines.
  // Returns its number, or -1 if there is none.
  int Take(const std::vector<Box>& places);

 private:
  bool IsFree(const Box& place) const;
  size_t LinesOn(const Box& place) const;

  Box drawing_;
  std::vector<Box> taken_;
  std::vector<Box> lines_;  // from one corner to the opposite one
};

}  // namespace calib

#endif  // CALIB_CHARTS_LABEL_PLACES_H_
