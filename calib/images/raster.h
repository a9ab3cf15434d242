// An image as rows of samples, as PNG knows them.
#ifndef CALIB_IMAGES_RASTER_H_
#define CALIB_IMAGES_RASTER_H_

#include <cstddef>
#include <string>

namespace calib {

struct Raster {
  int width = 0, height = 0;
  int channels = 1;   // 1 grey, 3 red green blue, 4 with alpha
  int bits = 8;       // of a sample: 8, or 16 with the high byte first
  std::string bytes;  // the rows, one behind the other

  size_t RowBytes() const {
    return static_cast<size_t>(width) * static_cast<size_t>(channels * bits / 8);
  }
};

}  // namespace calib

#endif  // CALIB_IMAGES_RASTER_H_
