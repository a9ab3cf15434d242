// What the octets of a calibration image are. The record has no vocabulary for `format`; these are
// the customary names, in any case: GRAY8, GRAY16, RGB8, BGR8, RGBA8, BGRA8, and Bayer patterns
// such as BAYER_RGGB8, which are taken as grey. Octets that are a PNG or JPEG file are that,
// whatever format says. Of 16 bits the low byte comes first.
#ifndef CALIB_IMAGES_CALIBRATION_IMAGE_H_
#define CALIB_IMAGES_CALIBRATION_IMAGE_H_

#include <string>

#include "calib/images/raster.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// All names of formats, with commas between them.
std::string ImageFormatNames();

// The image as samples. Throws Failure if its format is none of the above, or if stride, sizes and
// octets do not fit together; `name` is what messages call it.
Raster RasterOf(const zarvo::calibration::CalibrationImage& image, const std::string& name);

// The image as a file: of the octets' own kind if they are PNG or JPEG, else PNG. Throws as
// RasterOf() and EncodePng() do.
std::string ImageFileOf(const zarvo::calibration::CalibrationImage& image, const std::string& name);

// The same as a data: URL.
std::string ImageUrl(const zarvo::calibration::CalibrationImage& image, const std::string& name);

// The raster as an image: GRAY8, GRAY16, RGB8 or RGBA8, without padding.
zarvo::calibration::CalibrationImage ImageOf(const Raster& raster);

}  // namespace calib

#endif  // CALIB_IMAGES_CALIBRATION_IMAGE_H_
