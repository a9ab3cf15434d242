#include "calib/tools/lens_flag.h"

#include "calib/console/arguments.h"

namespace calib {

namespace {

// Makes an alias the name; other words stay, and are refused as what they are.
void ToName(std::string* word) {
  const LensModel* model = FindLensModel(*word);
  if (model != nullptr && model->in_camera_info) *word = model->name;
}

}  // namespace

Option* AddLensChoice(Command* command, const std::string& option, std::string* value,
                      const std::vector<std::string>& words, const std::string& description) {
  return AddChoice(command, option, value, words, description)->Transform(ToName);
}

void LensFlag::AddTo(Command* command, const std::string& description) {
  std::vector<std::string> words = CameraInfoModels();
  words.insert(words.begin(), "auto");
  AddLensChoice(command, "--distortion-model", &name, words, description);
}

}  // namespace calib
