// Images as PNG, and what tells PNG from JPEG.
#ifndef CALIB_IMAGES_PNG_FILE_H_
#define CALIB_IMAGES_PNG_FILE_H_

#include <string>

#include "calib/images/raster.h"

namespace calib {

// The image as a PNG file. Throws Failure, naming it, if it is wider or higher than libpng writes.
std::string EncodePng(const Raster& raster, const std::string& name);

// The image of a PNG file; palettes become colors, and what has fewer than 8 bits gets 8. Throws
// Failure, naming the file, if it is no whole PNG, has 16 bits for each color, or more than 1 GiB.
// Takes no memory for samples that a file of that size cannot hold.
Raster DecodePng(const std::string& bytes, const std::string& name);

// "png" or "jpeg" by the first bytes of a file; "" if it is neither.
std::string CompressionOf(const std::string& bytes);

// Whether they are one without its end, so that nothing, or not all of it, is shown.
bool IsCutOff(const std::string& bytes);

}  // namespace calib

#endif  // CALIB_IMAGES_PNG_FILE_H_
