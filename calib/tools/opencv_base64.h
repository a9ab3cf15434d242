// Numbers as OpenCV writes them with WRITE_BASE64: a head of 24 bytes that names the types of what
// follows, and the bytes of that, as a computer that is little-endian has them in memory.
#ifndef CALIB_TOOLS_OPENCV_BASE64_H_
#define CALIB_TOOLS_OPENCV_BASE64_H_

#include <vector>

#include "calib/tools/foreign.h"

namespace calib {

// Whether the value is such text, or lists it.
bool IsBase64(const Foreign& value);

// The numbers of each text, whatever their type is. Throws Failure if one is no such text.
std::vector<std::vector<double>> Base64Lists(const Foreign& value);
// The numbers of all, one after another.
std::vector<double> Base64Numbers(const Foreign& value);

}  // namespace calib

#endif  // CALIB_TOOLS_OPENCV_BASE64_H_
