// An image whose pixels come from other places of another image.
#ifndef CALIB_IMAGES_REMAP_H_
#define CALIB_IMAGES_REMAP_H_

#include <vector>

#include "calib/geometry/calibration_geometry.h"
#include "calib/images/raster.h"

namespace calib {

// An image of that width. Pixel i, row by row, is what `image` shows at sources[i], between the
// four pixels around it; 0 where that is not within the image, or not a number.
Raster Remap(const Raster& image, int width,
             const std::vector<zarvo::calibration_geometry::Pixel>& sources);

}  // namespace calib

#endif  // CALIB_IMAGES_REMAP_H_
