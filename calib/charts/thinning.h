// Fewer marks that look the same: of many points that would be drawn over each other, what is seen
// of them is kept.
#ifndef CALIB_CHARTS_THINNING_H_
#define CALIB_CHARTS_THINNING_H_

#include <cstddef>
#include <vector>

namespace calib {

struct Pixel {  // in the drawing, in pixels
  double x, y;
};

// A row of cells beside each other that were hit.
struct DotRun {
  long row, column, count;
};

// The cells of `size` pixels in which there are points; each cell once, by rows.
std::vector<DotRun> HitCells(const std::vector<Pixel>& places, double size);

// A curve through at most four points of each pixel's width: where it comes in, its lowest and its
// highest, and where it leaves. x must not fall.
std::vector<Pixel> ThinnedCurve(const std::vector<Pixel>& curve);

}  // namespace calib

#endif  // CALIB_CHARTS_THINNING_H_
