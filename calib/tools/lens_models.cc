#include "calib/tools/lens_models.h"

#include <algorithm>

namespace calib {

namespace {

constexpr size_t kHeldOfBrown = 8;

bool IsCalled(const LensModel& model, const std::string& squeezed) {
  if (SqueezeName(model.name) == squeezed) return true;
  return std::any_of(model.aliases.begin(), model.aliases.end(),
                     [&](const std::string& alias) { return SqueezeName(alias) == squeezed; });
}

}  // namespace

const std::vector<LensModel>& LensModels() {
  using Order = LensModel::Order;
  static const std::vector<LensModel> models = {
      {"plumb_bob",
       {"radtan", "radial_tangential", "pinhole_radtan", "lensmodel_opencv4", "lensmodel_opencv5"},
       Order::kBrown,
       {0, 4, 5},
       {},
       true},
      {"rational_polynomial",
       {"rational", "radtan8", "pinhole_radtan8", "pinhole_full", "lensmodel_opencv8",
        "lensmodel_opencv12"},
       Order::kBrown,
       {0, 5, 8, 12, 14},
       {},
       true},
      {"equidistant",
       {"fisheye", "equi", "kannala_brandt", "kannala_brandt4", "kannala_brandt8", "kb", "kb4",
        "kb8", "opencv_fisheye", "fisheye_model", "pinhole_equi"},
       Order::kFisheye,
       {4},
       {},
       true},
      {"none", {"no_distortion", "undistorted"}, Order::kNone, {0}, {}},
      {"pinhole", {"perspective", "rectilinear", "lensmodel_pinhole"}, Order::kOpen, {}, {}},
      {"omni",
       {"mei", "omnidirectional", "unified", "omni_radtan"},
       Order::kBrown,
       {0, 4, 5},
       {"xi"}},
      {"ucm", {}, Order::kOpen, {}, {"alpha"}},
      {"eucm", {"extended_unified"}, Order::kOpen, {}, {"alpha", "beta"}},
      {"ds", {"double_sphere"}, Order::kOpen, {}, {"xi", "alpha"}},
      {"fov", {"atan", "arctan"}, Order::kForeign, {1}, {}},
      {"brown_conrady", {"brown"}, Order::kBrown, {4, 5}, {}, false, 2},
      {"inverse_brown_conrady", {"modified_brown_conrady"}, Order::kForeign, {5}, {}},
  };
  return models;
}

bool LensModel::Takes(size_t coefficients) const {
  return std::find(sizes.begin(), sizes.end(), coefficients) != sizes.end();
}

std::string LensModel::SizesText() const {
  std::string text;
  for (const size_t size : sizes) {
    if (size != 0) text += (text.empty() ? "" : " or ") + std::to_string(size);
  }
  return text;
}

int LensModel::p() const { return order == Order::kBrown ? 2 : 0; }

int LensModel::k() const {
  return sizes.empty() ? 0 : static_cast<int>(std::min(sizes.back(), kHeldOfBrown)) - p();
}

std::string SqueezeName(const std::string& name) {
  std::string squeezed;
  for (const char c : name) {
    if (c >= 'A' && c <= 'Z') squeezed += static_cast<char>(c - 'A' + 'a');
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) squeezed += c;
  }
  return squeezed;
}

const LensModel* FindLensModel(const std::string& name) {
  const std::string squeezed = SqueezeName(name);
  for (const LensModel& model : LensModels()) {
    if (IsCalled(model, squeezed)) return &model;
  }
  return nullptr;
}

std::vector<std::string> CameraInfoModels() {
  std::vector<std::string> names;
  for (const LensModel& model : LensModels()) {
    if (model.in_camera_info) names.push_back(model.name);
  }
  return names;
}

}  // namespace calib
