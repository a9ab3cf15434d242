// The .ini form of ROS, which is Videre's: a map of its sections, each a map of its keys. A key is
// a line of its own, which may have blanks in it; the numbers below it, on one line or more, are
// its value: a list, or text if there is one.
#include <vector>

#include "calib/console/failure.h"
#include "calib/tools/foreign_lines.h"
#include "calib/tools/foreign_tree.h"

namespace calib {
namespace {

using Kind = ForeignTree::Kind;

constexpr char kComments[] = "#;";
constexpr char kFirstSection[] = "[image]";

bool IsSection(std::string_view line) {
  return line.size() > 2 && line.front() == '[' && line.back() == ']' &&
         line.find_first_of(",:{}\"'[]", 1) == line.size() - 1;
}

bool IsNumbers(std::string_view line) {
  return line[0] == '-' || line[0] == '+' || line[0] == '.' || (line[0] >= '0' && line[0] <= '9');
}

class Loader {
 public:
  Loader(const std::string& file, std::string_view text) : file_(file), lines_(text, kComments) {}

  ForeignTree Load() {
    const ForeignTree::Index root = tree_.Add(0, 0);
    uint32_t sections = 0;
    for (more_ = lines_.Next(&line_); more_; ++sections) {
      // The calibrator prints both cameras of a pair.
      if (sections > 0 && line_.text == kFirstSection) {
        Refuse("begins a second camera", "Split the file there, and bring in one at a time.");
      }
      LoadSection();
    }
    tree_.Close(root, Kind::kMap, sections);
    return std::move(tree_);
  }

 private:
  [[noreturn]] void Refuse(const std::string& what,
                           const char* cure = "Check that it is the file you meant.") const {
    throw Failure(file_ + ":" + std::to_string(line_.number + 1) + ":" +
                      std::to_string(line_.column + 1) + ": '" +
                      std::string(line_.text.substr(0, 40)) + "' " + what,
                  cure);
  }

  void LoadSection() {
    if (!IsSection(line_.text)) Refuse("is no section, such as [image]");
    const ForeignTree::Index section = tree_.Add(line_.number, line_.column);
    tree_.SetKey(section, line_.text.substr(1, line_.text.size() - 2));
    uint32_t keys = 0;
    more_ = lines_.Next(&line_);
    for (; more_ && !IsSection(line_.text); ++keys) LoadKey();
    tree_.Close(section, Kind::kMap, keys);
  }

  void LoadKey() {
    if (IsNumbers(line_.text)) Refuse("is the value of no key");
    const ForeignTree::Index value = tree_.Add(line_.number, line_.column);
    tree_.SetKey(value, line_.text);
    uint32_t numbers = 0;
    more_ = lines_.Next(&line_);
    for (; more_ && IsNumbers(line_.text); more_ = lines_.Next(&line_)) {
      for (const Word& word : line_.Words()) {
        tree_.SetText(tree_.Add(line_.number, word.column), word.text);
        ++numbers;
      }
    }
    if (numbers == 0) return;
    tree_.Close(value, Kind::kList, numbers);
    if (numbers == 1) tree_.Unwrap(value);
  }

  const std::string& file_;
  Lines lines_;
  Line line_ = {};
  bool more_ = false;  // whether there is a line_
  ForeignTree tree_;
};

}  // namespace

bool IsIni(std::string_view text) {
  Lines lines(text, kComments);
  Line line;
  return lines.Next(&line) && IsSection(line.text) && lines.Next(&line) && !IsNumbers(line.text) &&
         line.text.find_first_of(":{}[]") == std::string_view::npos;
}

ForeignTree LoadIni(const std::string& file, const std::string& text) {
  return Loader(file, text).Load();
}

}  // namespace calib
