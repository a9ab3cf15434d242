// Which part of some values a drawing covers: all of them, or all but few that lie so far off that
// the others would be squeezed together.
#ifndef CALIB_CHARTS_RANGE_H_
#define CALIB_CHARTS_RANGE_H_

#include <vector>

namespace calib {

struct Range {
  double low = 0, high = 0;
};

// The range of the values, of which there is at least one. A value is left out if it is further
// from the middle half of the values than five times that half's length, if no more than the share
// `most_out` of all are (one always may be), and if the range is less than half as long without
// them.
Range RangeToDraw(std::vector<double> values, double most_out);

}  // namespace calib

#endif  // CALIB_CHARTS_RANGE_H_
