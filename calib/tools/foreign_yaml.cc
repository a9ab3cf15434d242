// YAML: maps, lists and text are those of the tree; tags and anchors are not kept, and an alias is
// the tree that it stands for.
#include <yaml-cpp/yaml.h>

#include "calib/console/failure.h"
#include "calib/tools/foreign_tree.h"

namespace calib {
namespace {

using Kind = ForeignTree::Kind;

// Aliases let a small file stand for a huge or an endless tree.
constexpr int kMostValues = 1 << 22, kDeepest = 64;

std::string LineAndColumn(const YAML::Mark& mark) {
  if (mark.is_null()) return "";
  return ":" + std::to_string(mark.line + 1) + ":" + std::to_string(mark.column + 1);
}

class Loader {
 public:
  explicit Loader(const std::string& file) : file_(file) {}

  ForeignTree Load(const YAML::Node& node, const YAML::Mark& mark, int depth) {
    if (++values_ > kMostValues || depth > kDeepest) {
      throw Failure(file_ + LineAndColumn(node.Mark()) + ": is nested too deep, or too large",
                    "Check that it is the file you meant.");
    }
    ForeignTree tree;
    tree.line = mark.line;
    tree.column = mark.column;
    if (node.IsScalar()) {
      tree.kind = Kind::kText;
      tree.text = node.Scalar();
    } else if (node.IsSequence()) {
      tree.kind = Kind::kList;
      for (const YAML::Node& item : node) {
        tree.items.push_back(Load(item, item.Mark(), depth + 1));
      }
    } else if (node.IsMap()) {
      tree.kind = Kind::kMap;
      for (const auto& entry : node) LoadEntry(entry.first, entry.second, depth, &tree);
    }
    return tree;
  }

 private:
  void LoadEntry(const YAML::Node& key, const YAML::Node& value, int depth, ForeignTree* map) {
    if (!key.IsScalar()) {
      throw Failure(file_ + LineAndColumn(key.Mark()) + ": is a key that is no text",
                    "Correct it there.");
    }
    // A value of several lines begins below its key.
    const bool below = key.Mark().line < value.Mark().line;
    map->items.push_back(Load(value, below ? key.Mark() : value.Mark(), depth + 1));
    map->keys.push_back(key.Scalar());
  }

  const std::string& file_;
  int values_ = 0;
};

}  // namespace

ForeignTree LoadYaml(const std::string& file, const std::string& text) {
  std::vector<YAML::Node> documents;
  try {
    for (const YAML::Node& document : YAML::LoadAll(text)) {
      if (document.IsDefined() && !document.IsNull()) documents.push_back(document);
    }
  } catch (const YAML::Exception& error) {
    throw Failure(file + LineAndColumn(error.mark) + ": " + error.msg,
                  "The file is no YAML; correct it there.");
  }
  if (documents.empty()) throw Failure(file + ": is empty", "Check that it is the file you meant.");
  if (documents.size() > 1) {
    throw Failure(file + LineAndColumn(documents[1].Mark()) + ": a document of its own begins here",
                  "Bring in one document at a time: split the file where it says '---'.");
  }
  return Loader(file).Load(documents[0], documents[0].Mark(), 0);
}

}  // namespace calib
