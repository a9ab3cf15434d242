#include "calib/tools/opencv_keys.h"

#include <algorithm>

#include "calib/tools/lens_models.h"

namespace calib {

namespace {

struct Name {
  const char* squeezed;
  OpenCvPart part;
};

// The most usual first. Of one letter they are capitals: k1 is a coefficient.
const std::vector<Name> kNames = {
    {"cameramatrix", OpenCvPart::kMatrix},
    {"cameramat", OpenCvPart::kMatrix},
    {"k", OpenCvPart::kMatrix},
    {"m", OpenCvPart::kMatrix},
    {"mtx", OpenCvPart::kMatrix},
    {"intrinsicmatrix", OpenCvPart::kMatrix},
    {"distortioncoefficients", OpenCvPart::kCoefficients},
    {"distcoeffs", OpenCvPart::kCoefficients},
    {"distcoeff", OpenCvPart::kCoefficients},
    {"d", OpenCvPart::kCoefficients},
    {"distortioncoeffs", OpenCvPart::kCoefficients},
    {"distortioncoeff", OpenCvPart::kCoefficients},
    {"distortioncoefs", OpenCvPart::kCoefficients},
    {"distcoefs", OpenCvPart::kCoefficients},
    {"distcoef", OpenCvPart::kCoefficients},
    {"dist", OpenCvPart::kCoefficients},
    {"distortion", OpenCvPart::kCoefficients},
};

struct Side {
  const char* word;
  int camera;
  bool sided;
};

const std::vector<Side> kSides = {{"left", 1, true}, {"right", 2, true}, {"l", 1, true},
                                  {"r", 2, true},    {"1", 1, false},    {"2", 2, false}};

bool IsCapital(char c) { return c >= 'A' && c <= 'Z'; }

}  // namespace

std::optional<OpenCvKey> FindOpenCvKey(const std::string& key) {
  if (key == "R") return OpenCvKey{OpenCvPart::kRotation, 2, false, 0};
  if (key == "T") return OpenCvKey{OpenCvPart::kTranslation, 2, false, 0};
  if (key.find('.') != std::string::npos) return std::nullopt;  // LEFT.K is of ORB-SLAM
  const std::string squeezed = SqueezeName(key);
  if (squeezed == "rotationmatrix") return OpenCvKey{OpenCvPart::kRotation, 2, false, 1};
  if (squeezed == "translationvector") return OpenCvKey{OpenCvPart::kTranslation, 2, false, 1};
  for (size_t rank = 0; rank < kNames.size(); ++rank) {
    const std::string name = kNames[rank].squeezed;
    const bool letter = name.size() == 1;
    if (letter && !(IsCapital(key[0]) || IsCapital(key.back()))) continue;
    // An M alone is not told from anything else.
    if (squeezed == name && name != "m") return OpenCvKey{kNames[rank].part, 0, false, rank};
    for (const Side& side : kSides) {
      if (squeezed == name + side.word || (side.word[1] != '\0' && squeezed == side.word + name)) {
        return OpenCvKey{kNames[rank].part, side.camera, side.sided, rank};
      }
    }
  }
  return std::nullopt;
}

std::optional<Foreign> FindOpenCvPart(const Foreign& file, OpenCvPart part, int camera) {
  std::optional<Foreign> found;
  size_t rank = SIZE_MAX;
  file.ForEachEntry([&](const std::string& key, const Foreign& value) {
    const auto meaning = FindOpenCvKey(key);
    if (!meaning || meaning->part != part || meaning->camera != camera) return;
    if (part == OpenCvPart::kCoefficients && value.IsText()) return;  // the name of a lens
    if (meaning->rank >= rank) return;
    rank = meaning->rank;
    found = value;
  });
  return found;
}

std::optional<Foreign> FindSpelled(const Foreign& file, const std::vector<std::string>& squeezed) {
  for (const std::string& name : squeezed) {
    std::optional<Foreign> found;
    file.ForEachEntry([&](const std::string& key, const Foreign& value) {
      if (!found && SqueezeName(key) == name) found = value;
    });
    if (found) return found;
  }
  return std::nullopt;
}

bool HasFormOfMatrix(const Foreign& value) {
  if (value.IsMap()) return value.Has({"dt"});
  if (!value.IsList()) return false;
  if (value.Items() == 9) return value.Lists().empty();
  const auto is_row = [](const Foreign& row) { return row.Items() == 3; };
  if (value.Items() != 3) return false;
  const std::vector<Foreign> rows = value.Lists();
  return rows.size() == 3 && std::all_of(rows.begin(), rows.end(), is_row);
}

}  // namespace calib
