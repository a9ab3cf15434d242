// The bytes of a file as the reader of YAML wants them, and where its marks lie in the file. What
// some tools write and that reader does not take is handed out with more in between:
//
//   - the mark of a document's start, behind which no key can stand, before a file that is as a
//     whole a list or map in brackets, such as JSON;
//   - in a file with OpenCV's first line, whose own reader ends a key at the first colon, a blank
//     between a key and a value that follows at once.
#ifndef CALIB_TOOLS_YAML_SOURCE_H_
#define CALIB_TOOLS_YAML_SOURCE_H_

#include <yaml-cpp/mark.h>

#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace calib {

class YamlSource : public std::streambuf {
 public:
  struct Place {
    int line, column;  // counted from 0; -1 if there is none
  };

  // The reader holds all of a list or map back that may turn out to be a key, at up to 360 bytes
  // for each sign that is not within a word.
  static constexpr size_t kMostHeldBack = size_t{32} << 10;

  // The text must outlive it. OpenCV's first line is "#YAML:1.0" in it, a comment to the reader.
  explicit YamlSource(const std::string& text);

  // Where the mark lies in the file.
  Place PlaceOf(const YAML::Mark& mark) const;

  // Whether a line says that a document begins there or ends.
  bool HasMarker() const;

  // The last line before that one that is neither empty nor a comment; its number is stored.
  std::string_view LineBefore(int line, int* number) const;

  // Says that the reader has got somewhere, here.
  void Arrived(Place place);
  bool HoldsTooMuch() const { return handed_out_ > kMostHeldBack; }
  Place arrived_at() const { return arrived_at_; }

 protected:
  // Throws YAML::Exception if the reader holds too much.
  int_type underflow() override;

 private:
  // What is handed out at a position of the text, which is at that place.
  struct Insertion {
    size_t position;
    Place place;
    std::string_view bytes;
  };

  void MarkStart();
  void SplitKeys();
  void HandOut(std::string_view bytes);

  const std::string& text_;
  size_t position_ = 0;
  std::vector<Insertion> insertions_;  // in the text's order, one a line at most
  size_t next_insertion_ = 0;
  size_t handed_out_ = 0;  // signs, since it got somewhere
  Place arrived_at_ = {0, 0};
};

}  // namespace calib

#endif  // CALIB_TOOLS_YAML_SOURCE_H_
