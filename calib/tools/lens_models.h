// The lens models of all tools, in one table: what they are called, how their coefficients are
// listed, and what of them a record holds. Importers learn here what the words of a file mean, the
// exporter what it may write; docs/calib-import.md shows the same table.
#ifndef CALIB_TOOLS_LENS_MODELS_H_
#define CALIB_TOOLS_LENS_MODELS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace calib {

struct LensModel {
  // How distortion coefficients are listed.
  enum class Order {
    kOpen,     // the name says nothing about distortion
    kNone,     // there is none
    kBrown,    // k1 k2 p1 p2 [k3 [k4 k5 k6 [s1 s2 s3 s4 [tx ty]]]]; k and p hold the first eight
    kFisheye,  // k1 k2 k3 k4; k holds them
    kForeign   // in a way that k and p cannot hold
  };

  std::string name;                  // that of camera_info, if that knows the model
  std::vector<std::string> aliases;  // what other tools and older versions call it
  Order order;
  // How many coefficients there may be: those that are missing at the end are 0, as are any that
  // stand behind the last of kBrown.
  std::vector<size_t> sizes;
  // What the model has beside focal lengths, principal point and coefficients. A record holds none
  // of it, and without it the lens is another one, unless all of it is 0.
  std::vector<std::string> parameters;
  bool in_camera_info = false;
  // Tools that use the name agree on the order of this many coefficients, if not of all.
  size_t agreed = SIZE_MAX;

  bool Takes(size_t coefficients) const;
  // "4 or 5", leaving 0 out.
  std::string SizesText() const;
  // The most that a record holds of each.
  int k() const;
  int p() const;
};

const std::vector<LensModel>& LensModels();

// A word as names are compared: small letters and digits alone.
std::string SqueezeName(const std::string& name);

// The model of that name or alias, in small or capital letters, with or without hyphens,
// underscores and blanks; nullptr if there is none.
const LensModel* FindLensModel(const std::string& name);

// The models that camera_info names, which are those that a user can choose from.
std::vector<std::string> CameraInfoModels();

}  // namespace calib

#endif  // CALIB_TOOLS_LENS_MODELS_H_
