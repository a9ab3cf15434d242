#include "tests/calib/geometry/reference.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace zarvo {
namespace calibration_geometry {

namespace {

Lens LensNamed(const std::string& name) {
  if (name == "brown") return Lens::kBrown;
  if (name == "fisheye") return Lens::kFisheye;
  if (name == "omni") return Lens::kOmni;
  ADD_FAILURE() << name << " is no lens of the reference";
  return Lens::kPinhole;
}

}  // namespace

void ForEachReference(const std::function<void(const Reference&)>& visit) {
  std::ifstream file(GEOMETRY_REFERENCE);
  for (std::string text; std::getline(file, text);) {
    if (text.empty() || text[0] == '#') continue;
    Reference line;
    line.text = text;
    std::istringstream words(text);
    words >> line.kind;
    if (line.kind == "camera") {
      std::string lens;
      int count = 0;
      Camera& camera = line.camera;
      words >> lens >> camera.fx >> camera.fy >> camera.skew >> camera.cx >> camera.cy >> count;
      camera.lens = LensNamed(lens);
      for (int i = 0; i < count; ++i) words >> camera.distortion[i];
      words >> camera.shape[0];
    } else {
      for (double number; words >> number;) line.numbers.push_back(number);
    }
    visit(line);
  }
}

}  // namespace calibration_geometry
}  // namespace zarvo
