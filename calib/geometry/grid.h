// Pixels that are spread over an image.
#ifndef CALIB_GEOMETRY_GRID_H_
#define CALIB_GEOMETRY_GRID_H_

#include <vector>

#include "calib/geometry/calibration_geometry.h"

namespace zarvo {
namespace calibration_geometry {

// From corner to corner, row by row. There are as many rows as make the meshes squares, but two at
// least, and ten for each column at most.
std::vector<Pixel> Grid(const Camera& camera, int columns);

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIB_GEOMETRY_GRID_H_
