#include "calib/geometry/grid.h"

#include <algorithm>
#include <cmath>

namespace zarvo {
namespace calibration_geometry {

std::vector<Pixel> Grid(const Camera& camera, int columns) {
  const double wanted = std::round(1.0 * columns * camera.height / camera.width);
  const int rows = static_cast<int>(std::min(std::max(wanted, 2.0), 10.0 * columns));
  std::vector<Pixel> pixels;
  pixels.reserve(static_cast<size_t>(columns) * static_cast<size_t>(rows));
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      pixels.push_back({1.0 * column * (camera.width - 1) / (columns - 1),
                        1.0 * row * (camera.height - 1) / (rows - 1)});
    }
  }
  return pixels;
}

}  // namespace calibration_geometry
}  // namespace zarvo
