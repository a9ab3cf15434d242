// What the keys of OpenCV files stand for. FileStorage has no keys of its own: the sample programs
// of OpenCV have theirs, and programs of one's own follow the names of its parameters, with left
// and right, L and R, or 1 and 2 for a pair.
#ifndef CALIB_TOOLS_OPENCV_KEYS_H_
#define CALIB_TOOLS_OPENCV_KEYS_H_

#include <optional>
#include <string>
#include <vector>

#include "calib/tools/foreign.h"

namespace calib {

enum class OpenCvPart { kMatrix, kCoefficients, kRotation, kTranslation };

struct OpenCvKey {
  OpenCvPart part;
  int camera;   // 0 of one camera, 1 and 2 of a pair: left and right
  bool sided;   // whether it says left or right
  size_t rank;  // how usual the name is, from 0
};

std::optional<OpenCvKey> FindOpenCvKey(const std::string& key);

// The entry that is that part of that camera; that of the most usual name if there are several.
std::optional<Foreign> FindOpenCvPart(const Foreign& file, OpenCvPart part, int camera);

// The entry under the first of the keys that is there, in any spelling (SqueezeName()).
std::optional<Foreign> FindSpelled(const Foreign& file, const std::vector<std::string>& squeezed);

// Whether the value is a camera matrix by its form: a matrix of FileStorage, or a list of nine
// numbers or of three rows.
bool HasFormOfMatrix(const Foreign& value);

}  // namespace calib

#endif  // CALIB_TOOLS_OPENCV_KEYS_H_
