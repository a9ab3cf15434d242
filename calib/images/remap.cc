#include "calib/images/remap.h"

#include <algorithm>
#include <cmath>

namespace calib {

namespace {

double SampleAt(const Raster& image, int u, int v, int channel) {
  const size_t bytes = static_cast<size_t>(image.bits / 8);
  const size_t pixel = static_cast<size_t>(u) * static_cast<size_t>(image.channels);
  const size_t at =
      static_cast<size_t>(v) * image.RowBytes() + (pixel + static_cast<size_t>(channel)) * bytes;
  const auto octet = [&](size_t i) { return static_cast<unsigned char>(image.bytes[i]); };
  return bytes == 1 ? octet(at) : octet(at) * 256.0 + octet(at + 1);
}

}  // namespace

Raster Remap(const Raster& image, int width,
             const std::vector<zarvo::calibration_geometry::Pixel>& sources) {
  Raster result = image;
  result.width = width;
  result.height = static_cast<int>(sources.size() / static_cast<size_t>(width));
  const size_t bytes = static_cast<size_t>(image.bits / 8);
  result.bytes.assign(result.RowBytes() * static_cast<size_t>(result.height), '\0');
  size_t out = 0;
  for (const auto& source : sources) {
    const bool inside = source.u >= 0 && source.v >= 0 && source.u <= image.width - 1 &&
                        source.v <= image.height - 1;
    for (int channel = 0; channel < image.channels; ++channel, out += bytes) {
      if (!inside) continue;
      const int u = static_cast<int>(source.u), v = static_cast<int>(source.v);
      const int right = std::min(u + 1, image.width - 1), below = std::min(v + 1, image.height - 1);
      const double x = source.u - u, y = source.v - v;
      const double value = (1 - y) * ((1 - x) * SampleAt(image, u, v, channel) +
                                      x * SampleAt(image, right, v, channel)) +
                           y * ((1 - x) * SampleAt(image, u, below, channel) +
                                x * SampleAt(image, right, below, channel));
      const auto rounded = static_cast<unsigned>(std::lround(value));
      if (bytes == 2) result.bytes[out] = static_cast<char>(rounded >> 8);
      result.bytes[out + bytes - 1] = static_cast<char>(rounded & 255);
    }
  }
  return result;
}

}  // namespace calib
