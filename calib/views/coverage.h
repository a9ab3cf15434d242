// How much of an image the sample points of its calibration cover, and which of them are a view.
#ifndef CALIB_VIEWS_COVERAGE_H_
#define CALIB_VIEWS_COVERAGE_H_

#include <cstddef>
#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"

namespace calib {

// The image in 12 x 8 cells, 8 x 12 if it is upright, and the points in each of them.
struct Coverage {
  int across = 12, down = 8;
  std::vector<size_t> hits;  // by rows
  size_t inside = 0, outside = 0;

  size_t At(int column, int row) const;
  size_t CellsHit() const;
  // "71 % of 12 x 8 cells hit, no point in the top right corner".
  std::string Text() const;
};

// Of intrinsics whose width and height are above 0. Points with 0 <= img_x < width, and img_y
// likewise, are inside; what is not set or no number is not counted.
Coverage CoverageOf(const zarvo::calibration::CameraIntrinsics& intrinsics);

// Where each view of the target begins in sample_points, if their order shows that: a view is a run
// of points in which no point of the target comes twice. Only {0} if there is no more than one, or
// if the runs are too short to be views.
std::vector<int> ViewsOf(const zarvo::calibration::CameraIntrinsics& intrinsics);

}  // namespace calib

#endif  // CALIB_VIEWS_COVERAGE_H_
