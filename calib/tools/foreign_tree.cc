#include "calib/tools/foreign_tree.h"

namespace calib {

std::string PlaceOf(const ForeignTree& tree) {
  if (tree.line < 0) return "";
  return ":" + std::to_string(tree.line + 1) +
         (tree.column < 0 ? "" : ":" + std::to_string(tree.column + 1));
}

}  // namespace calib
