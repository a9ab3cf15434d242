// Text of lines, word by word, for the files that are neither YAML nor XML.
#ifndef CALIB_TOOLS_FOREIGN_LINES_H_
#define CALIB_TOOLS_FOREIGN_LINES_H_

#include <string_view>
#include <vector>

namespace calib {

struct Word {
  std::string_view text;
  int column;  // counted from 0
};

// A line that is neither empty nor a comment.
struct Line {
  std::string_view text;  // without the blanks around it
  int number, column;     // counted from 0
  std::vector<Word> Words() const;
};

// Goes through the lines of a text; a comment begins with one of `comments`.
class Lines {
 public:
  Lines(std::string_view text, std::string_view comments) : text_(text), comments_(comments) {}

  // False behind the last one.
  bool Next(Line* line);

 private:
  std::string_view text_;  // what is left
  std::string_view comments_;
  int number_ = 0;
};

}  // namespace calib

#endif  // CALIB_TOOLS_FOREIGN_LINES_H_
