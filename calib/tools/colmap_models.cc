#include "calib/tools/colmap_models.h"

namespace calib {

const std::vector<ColmapModel>& ColmapModels() {
  static const std::vector<ColmapModel> models = {
      {"SIMPLE_PINHOLE", {"f", "cx", "cy"}, false},
      {"PINHOLE", {"fx", "fy", "cx", "cy"}, false},
      {"SIMPLE_RADIAL", {"f", "cx", "cy", "k1"}, false},
      {"RADIAL", {"f", "cx", "cy", "k1", "k2"}, false},
      {"OPENCV", {"fx", "fy", "cx", "cy", "k1", "k2", "p1", "p2"}, false},
      {"FULL_OPENCV",
       {"fx", "fy", "cx", "cy", "k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6"},
       false},
      {"SIMPLE_FISHEYE", {"f", "cx", "cy"}, true},
      {"FISHEYE", {"fx", "fy", "cx", "cy"}, true},
      {"SIMPLE_RADIAL_FISHEYE", {"f", "cx", "cy", "k1"}, true},
      {"RADIAL_FISHEYE", {"f", "cx", "cy", "k1", "k2"}, true},
      {"OPENCV_FISHEYE", {"fx", "fy", "cx", "cy", "k1", "k2", "k3", "k4"}, true},
      {"THIN_PRISM_FISHEYE",
       {"fx", "fy", "cx", "cy", "k1", "k2", "p1", "p2", "k3", "k4", "sx1", "sy1"},
       true},
      {"FOV", {"fx", "fy", "cx", "cy", "omega"}, false},
      {"SIMPLE_DIVISION", {"f", "cx", "cy", "lambda"}, false},
      {"DIVISION", {"fx", "fy", "cx", "cy", "lambda"}, false},
      {"EUCM", {"fx", "fy", "cx", "cy", "alpha", "beta"}, false},
  };
  return models;
}

const ColmapModel* FindColmapModel(const std::string& name) {
  for (const ColmapModel& model : ColmapModels()) {
    if (model.name == name) return &model;
  }
  return nullptr;
}

}  // namespace calib
