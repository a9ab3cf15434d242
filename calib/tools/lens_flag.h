// The flag by which a user says what distortion coefficients mean where nothing else does.
#ifndef CALIB_TOOLS_LENS_FLAG_H_
#define CALIB_TOOLS_LENS_FLAG_H_

#include <string>

#include "calib/console/command_line.h"
#include "calib/tools/lens_models.h"

namespace calib {

// Adds an option that takes one of some words, among them lens models by any of their names.
Option* AddLensChoice(Command* command, const std::string& option, std::string* value,
                      const std::vector<std::string>& words, const std::string& description);

// --distortion-model, by any name of the model.
struct LensFlag {
  std::string name = "auto";

  void AddTo(Command* command, const std::string& description);
  const LensModel* model() const { return name == "auto" ? nullptr : FindLensModel(name); }
};

}  // namespace calib

#endif  // CALIB_TOOLS_LENS_FLAG_H_
