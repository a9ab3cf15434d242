// COLMAP's list of cameras, one a line: its number, the model, width, height and parameters. A map
// by the number, each with what COLMAP's other files call these.
#include "calib/console/failure.h"
#include "calib/tools/foreign_lines.h"
#include "calib/tools/foreign_tree.h"

namespace calib {
namespace {

using Kind = ForeignTree::Kind;

constexpr char kComments[] = "#";
const char* const kKeys[] = {"camera_id", "camera_model_name", "width", "height"};
constexpr size_t kKeyed = sizeof kKeys / sizeof kKeys[0];

bool IsDigits(std::string_view text) {
  return text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsModel(std::string_view text) {
  return text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789") ==
             std::string_view::npos &&
         text[0] >= 'A';
}

bool IsCamera(const std::vector<Word>& words) {
  return words.size() >= kKeyed && IsDigits(words[0].text) && IsModel(words[1].text) &&
         IsDigits(words[2].text) && IsDigits(words[3].text);
}

void AddCamera(const Line& line, const std::vector<Word>& words, ForeignTree* tree) {
  const auto add = [&](const Word& word) { return tree->Add(line.number, word.column); };
  const ForeignTree::Index camera = add(words[0]);
  tree->SetKey(camera, words[0].text);
  for (size_t i = 0; i < kKeyed; ++i) {
    const ForeignTree::Index value = add(words[i]);
    tree->SetKey(value, kKeys[i]);
    tree->SetText(value, words[i].text);
  }
  const ForeignTree::Index list = add(words[words.size() > kKeyed ? kKeyed : kKeyed - 1]);
  tree->SetKey(list, "camera_params");
  for (size_t i = kKeyed; i < words.size(); ++i) tree->SetText(add(words[i]), words[i].text);
  tree->Close(list, Kind::kList, static_cast<uint32_t>(words.size() - kKeyed));
  tree->Close(camera, Kind::kMap, kKeyed + 1);
}

}  // namespace

bool IsCameraList(std::string_view text) {
  Lines lines(text, kComments);
  Line line;
  return lines.Next(&line) && IsCamera(line.Words());
}

ForeignTree LoadCameraList(const std::string& file, const std::string& text) {
  ForeignTree tree;
  const ForeignTree::Index root = tree.Add(0, 0);
  uint32_t cameras = 0;
  Lines lines(text, kComments);
  for (Line line; lines.Next(&line); ++cameras) {
    const std::vector<Word> words = line.Words();
    if (!IsCamera(words)) {
      throw Failure(file + ":" + std::to_string(line.number + 1) +
                        ": is no camera, expected its "
                        "number, model, width, height and parameters",
                    "Correct it there.");
    }
    AddCamera(line, words, &tree);
  }
  tree.Close(root, Kind::kMap, cameras);
  return tree;
}

}  // namespace calib
