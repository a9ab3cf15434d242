// What is in a file that another tool wrote, whatever its syntax: text, lists and maps, each with
// its place. A file of millions of short values takes 28 bytes for each and its text once: the
// values stand in the order of the file, those of a list or a map behind it.
#ifndef CALIB_TOOLS_FOREIGN_TREE_H_
#define CALIB_TOOLS_FOREIGN_TREE_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace calib {

class ForeignTree {
 public:
  enum class Kind : uint32_t { kNothing, kText, kList, kMap };
  using Index = uint32_t;  // of a value; the outermost one is 0

  bool empty() const { return values_.empty(); }
  size_t size() const { return values_.size(); }

  // Adds a value behind all others, in the list or map that is still open if there is one. Lines
  // and columns count from 0, and are -1 where they are not known.
  Index Add(int line, int column);
  void SetKey(Index index, std::string_view key);  // of an entry of a map
  void SetText(Index index, std::string_view text);
  // Makes the value a list or map of so many items; all that was added since is in it.
  void Close(Index index, Kind kind, uint32_t items);
  // Makes a list or map of one text that text.
  void Unwrap(Index index);
  // Makes the value stand for a list or a map that was closed before.
  void SetAlias(Index index, Index target);

  Kind kind(Index index) const { return Meant(index).kind; }
  std::string_view text(Index index) const { return Text(Meant(index).at, Meant(index).size); }
  std::string_view key(Index index) const {
    return Text(values_[index].key, values_[index].key_size);
  }

  // The items of a list or a map: for (i = First(list), n = items(list); n > 0; i = Next(i), --n).
  uint32_t items(Index index) const { return Meant(index).size; }
  Index First(Index index) const;
  Index Next(Index index) const;

  // Where users look for the value.
  int line(Index index) const { return values_[index].line; }
  // Line and column, as messages have them behind the file's name: ":3:7", or ":3" if the column is
  // not known.
  std::string PlaceOf(Index index) const;

 private:
  struct Value {
    Kind kind = Kind::kNothing;
    uint32_t key = 0, key_size = 0;
    uint32_t at = 0;    // where its text begins, or the index behind the last of its items
    uint32_t size = 0;  // of its text, or the number of its items
    int32_t line, column;
  };
  static constexpr Kind kAlias{4};  // `at` is the index of what it stands for

  const Value& Meant(Index index) const;
  uint32_t Keep(std::string_view text);
  std::string_view Text(uint32_t at, uint32_t size) const {
    return std::string_view(texts_).substr(at, size);
  }

  std::deque<Value> values_;
  std::string texts_;
};

// The one document of a file in YAML (JSON is, too, and so is mrcal's Python), in the XML of
// OpenCV, in the .ini form of ROS, or in COLMAP's list of cameras. All throw Failure with the place
// if the syntax is wrong or the file holds several documents.
ForeignTree LoadYaml(const std::string& file, const std::string& text);
ForeignTree LoadXml(const std::string& file, const std::string& text);
ForeignTree LoadIni(const std::string& file, const std::string& text);
ForeignTree LoadCameraList(const std::string& file, const std::string& text);

// Makes YAML of a Python literal; leaves any other text as it is.
void BlankByteStrings(std::string* text);

// Whether the file's first line with anything in it is one that the form begins with.
bool IsIni(std::string_view text);
bool IsCameraList(std::string_view text);

}  // namespace calib

#endif  // CALIB_TOOLS_FOREIGN_TREE_H_
