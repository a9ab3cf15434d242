// The camera models of COLMAP that a record can hold, at least in part.
#ifndef CALIB_TOOLS_COLMAP_MODELS_H_
#define CALIB_TOOLS_COLMAP_MODELS_H_

#include <string>
#include <vector>

namespace calib {

struct ColmapModel {
  std::string name;
  // What its parameters are, in their order; f stands for fx and fy. Coefficients that a record
  // holds are k1 to k6, p1 and p2.
  std::vector<std::string> parameters;
  bool fisheye;  // k1 to k4 are those of an equidistant lens
};

const std::vector<ColmapModel>& ColmapModels();

// nullptr if there is none of that name.
const ColmapModel* FindColmapModel(const std::string& name);

}  // namespace calib

#endif  // CALIB_TOOLS_COLMAP_MODELS_H_
