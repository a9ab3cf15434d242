// What is in a file that another tool wrote, whatever its syntax: text, lists and maps, each with
// its place.
#ifndef CALIB_TOOLS_FOREIGN_TREE_H_
#define CALIB_TOOLS_FOREIGN_TREE_H_

#include <string>
#include <vector>

namespace calib {

struct ForeignTree {
  enum class Kind { kNothing, kText, kList, kMap };
  Kind kind = Kind::kNothing;
  std::string text;
  std::vector<ForeignTree> items;  // of a list or a map
  std::vector<std::string> keys;   // of a map, one for each item
  // Where users look for the value, counted from 0; -1 where it is not known.
  int line = -1, column = -1;
};

// Line and column, as messages have them behind the file's name: ":3:7", or ":3" if the column is
// not known.
std::string PlaceOf(const ForeignTree& tree);

// The one document of a file in YAML, or in the XML of OpenCV. Both throw Failure with the place
// if the syntax is wrong or the file holds several documents.
ForeignTree LoadYaml(const std::string& file, const std::string& text);
ForeignTree LoadXml(const std::string& file, const std::string& text);

}  // namespace calib

#endif  // CALIB_TOOLS_FOREIGN_TREE_H_
