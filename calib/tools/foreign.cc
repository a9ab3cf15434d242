#include "calib/tools/foreign.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number.h"
#include "calib/fields/field_path.h"
#include "calib/tools/foreign_mcap.h"
#include "calib/tools/mcap_reader.h"

namespace calib {

using Kind = ForeignTree::Kind;

namespace {

bool LooksLikeXml(const std::string& text) {
  const size_t begin = text.find_first_not_of(" \t\r\n\xef\xbb\xbf");
  return begin != std::string::npos && text[begin] == '<';
}

constexpr char kDigits[] = "0123456789";

// Whether the text is a whole number with a leading zero, which is octal in YAML 1.1 and decimal in
// YAML 1.2.
bool IsAmbiguous(std::string_view text) {
  const size_t first = text.find_first_not_of("+-");
  return first < 2 && first + 1 < text.size() && text[first] == '0' &&
         text.find_first_not_of(kDigits, first) == std::string_view::npos;
}

// Reads a number of the decimal notation; false if the text is none.
bool ReadNumber(const std::string& text, double* number) {
  if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos) return false;
  char* end = nullptr;
  *number = std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size();
}

// The same of the few characters that most numbers have, without a word of memory; false if the
// text is none, or may be.
bool ReadPlain(std::string_view text, double* number) {
  char digits[32];
  if (text.empty() || text.size() >= sizeof digits || IsAmbiguous(text)) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if ((c < '0' || c > '9') && c != '.' && c != '-' && c != '+' && c != 'e' && c != 'E') {
      return false;
    }
    digits[i] = c;
  }
  digits[text.size()] = '\0';
  char* end = nullptr;
  *number = std::strtod(digits, &end);
  return end == digits + text.size() && std::isfinite(*number);
}

// Reads a whole number, decimal or hexadecimal ("0x1f").
bool ReadCount(const std::string& text, int32_t* count) {
  const bool hexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
  const size_t first = hexadecimal ? 2 : text.compare(0, 1, "+") == 0 ? 1 : 0;
  const char* digits = hexadecimal ? "0123456789abcdefABCDEF" : kDigits;
  if (first == text.size() || text.find_first_not_of(digits, first) != std::string::npos) {
    return false;
  }
  errno = 0;
  const long long value = std::strtoll(text.c_str() + first, nullptr, hexadecimal ? 16 : 10);
  if (errno != 0 || value > std::numeric_limits<int32_t>::max()) return false;
  *count = static_cast<int32_t>(value);
  return true;
}

// What cameras are kept in as well, but not as text.
void RefuseOtherForms(const std::string& file, const std::string& text) {
  static const struct {
    const char *begin, *what, *cure;
  } forms[] = {
      {"\x1f\x8b", "is compressed", "Decompress it first, with gunzip."},
      {"#ROSBAG V", "is a bag of ROS 1", "Make an MCAP file of it, with 'mcap convert'."},
      {"SQLite format 3", "is an SQLite database, as bags of ROS 2 are",
       "Make an MCAP file of it, with 'ros2 bag convert' or 'mcap convert'."},
      {"PK\x03\x04", "is a zip file, as NumPy's .npz are",
       "Write what is in it as YAML or JSON, with tolist()."},
      {"\x93NUMPY", "is an array of NumPy", "Write it as YAML or JSON, with tolist()."},
  };
  for (const auto& form : forms) {
    if (text.rfind(form.begin, 0) == 0) throw Failure(file + ": " + form.what, form.cure);
  }
}

ForeignTree Load(const std::string& file, const std::string& text) {
  if (LooksLikeXml(text)) return LoadXml(file, text);
  if (IsIni(text)) return LoadIni(file, text);
  if (IsCameraList(text)) return LoadCameraList(file, text);
  return LoadYaml(file, text);
}

}  // namespace

Foreign::Foreign(std::string file, std::string path, Index index,
                 std::shared_ptr<Notebook> notebook)
    : file_(std::move(file)),
      path_(std::move(path)),
      index_(index),
      notebook_(std::move(notebook)) {}

std::string Foreign::Spell() const {
  switch (tree().kind(index_)) {
    case Kind::kMap:
      return "a map";
    case Kind::kList:
      return "a list of " + std::to_string(tree().items(index_));
    case Kind::kText: {
      const std::string_view text = tree().text(index_);
      return "'" + std::string(text.substr(0, 40)) + (text.size() > 40 ? "...'" : "'");
    }
    default:
      return "nothing";
  }
}

Foreign Foreign::FromMcap(const std::string& file, ForeignTree tree) {
  const auto notebook = std::make_shared<Notebook>();
  notebook->tree = std::move(tree);
  notebook->is_mcap = true;
  return Foreign(file, "", 0, notebook);
}

Foreign Foreign::Parse(const std::string& file, std::string text) {
  if (BeginsAsMcap(text)) return ReadMcapCameras(file, text, {});
  RefuseOtherForms(file, text);
  // OpenCV's directive is no YAML, and so is YAML's own where no "---" follows; as a comment it
  // keeps the lines' count.
  if (text.compare(0, 5, "%YAML") == 0) text[0] = '#';
  const auto notebook = std::make_shared<Notebook>();
  BlankByteStrings(&text);
  notebook->tree = Load(file, text);
  return Foreign(file, "", 0, notebook);
}

std::string Foreign::Place() const {
  return file_ + tree().PlaceOf(index_) + ": " + (path_.empty() ? "" : path_ + ": ");
}

void Foreign::Refuse(const std::string& what, const std::string& remedy) const {
  throw Failure(Place() + what, remedy);
}

void Foreign::Remark(const std::string& what, Leftover::Kind kind) const {
  notebook_->remarks.emplace(tree().line(index_), Leftover{Place(), what, kind});
}

void Foreign::Lose(const std::string& why) const {
  notebook_->used.insert(path_);
  notebook_->remarks.emplace(tree().line(index_), Leftover{Place(), why, Leftover::Kind::kLens});
}

void Foreign::LoseLens(const std::string& why, std::vector<double> coefficients,
                       const zarvo::calibration::CameraIntrinsics* record) const {
  Lose(why);
  notebook_->lost_lenses.push_back({path_, std::move(coefficients), record});
}

void Foreign::TakeBackLosses(const std::string& path) const {
  const auto is_below = [&path](const std::string& place) {
    return path.empty() || place.find(": " + path + ".") != std::string::npos ||
           place.find(": " + path + ": ") != std::string::npos;
  };
  Remarks& remarks = notebook_->remarks;
  for (auto remark = remarks.begin(); remark != remarks.end();) {
    const bool lost = remark->second.kind == Leftover::Kind::kLens;
    remark = lost && is_below(remark->second.place) ? remarks.erase(remark) : std::next(remark);
  }
}

std::string Foreign::NotKeptText(const std::string& why) const {
  return (IsText() ? Spell() + " " : "") + "not kept: " + why;
}

void Foreign::NotKept(const std::string& why) const { Remark(NotKeptText(why)); }

void Foreign::Convert(const std::string& how) const {
  for (const auto& [line, remark] : notebook_->remarks) {
    if (remark.kind == Leftover::Kind::kConverted && remark.what == how) return;
  }
  notebook_->remarks.emplace(tree().line(index_),
                             Leftover{Place(), how, Leftover::Kind::kConverted});
}

void Foreign::CheckKeys() const {
  if (tree().kind(index_) != Kind::kMap) {
    Refuse("is " + Spell() + ", expected a map of keys and values",
           "Check its layout, and that --from names the tool that wrote the file.");
  }
  if (!notebook_->checked.insert(index_).second) return;
  std::vector<Index> entries;
  entries.reserve(tree().items(index_));
  Index entry = tree().First(index_);
  for (uint32_t left = tree().items(index_); left > 0; --left, entry = tree().Next(entry)) {
    entries.push_back(entry);
  }
  const auto key = [this](Index index) { return tree().key(index); };
  std::sort(entries.begin(), entries.end(), [&](Index a, Index b) {
    const int order = key(a).compare(key(b));
    return order != 0 ? order < 0 : a < b;
  });
  Index twice = 0;
  for (size_t i = 1; i < entries.size(); ++i) {
    if (key(entries[i]) != key(entries[i - 1])) continue;
    if (twice == 0 || entries[i] < twice) twice = entries[i];
  }
  if (twice != 0) Entry(twice).Refuse("is there twice", "Leave one of them out.");
}

void Foreign::ForEachEntry(
    const std::function<void(const std::string& key, const Foreign& value)>& visit) const {
  CheckKeys();
  Index entry = tree().First(index_);
  for (uint32_t left = tree().items(index_); left > 0; --left, entry = tree().Next(entry)) {
    visit(std::string(tree().key(entry)), Entry(entry));
  }
}

std::optional<Foreign> Foreign::Find(const std::vector<std::string>& keys) const {
  CheckKeys();
  for (const std::string& key : keys) {
    Index entry = tree().First(index_);
    for (uint32_t left = tree().items(index_); left > 0; --left, entry = tree().Next(entry)) {
      if (tree().key(entry) == key) return Entry(entry);
    }
  }
  return std::nullopt;
}

Foreign Foreign::At(const std::vector<std::string>& keys) const {
  if (std::optional<Foreign> value = Find(keys)) return *value;
  Refuse("has no " + keys.front(),
         "Add it, or check that --from names the tool that wrote the file.");
}

void Foreign::RefuseAmbiguous() const {
  if (!IsText() || !IsAmbiguous(tree().text(index_))) return;
  Refuse("is " + Spell() +
             ", which is octal for some readers and decimal for others: it begins with 0",
         "Write it without the leading zero.");
}

size_t Foreign::Items() const { return IsList() || IsMap() ? tree().items(index_) : 0; }

std::string Foreign::Peek() const {
  return IsText() ? std::string(tree().text(index_)) : std::string();
}

std::string Foreign::PeekFirst() const {
  Index first = index_;
  while (tree().kind(first) == Kind::kList && tree().items(first) > 0) first = tree().First(first);
  return tree().kind(first) == Kind::kText ? std::string(tree().text(first)) : "";
}

bool Foreign::IsZero() const {
  double number = 1;
  switch (tree().kind(index_)) {
    case Kind::kText:
      return ReadNumber(Peek(), &number) && number == 0;
    case Kind::kList: {
      Index element = tree().First(index_);
      for (uint32_t left = tree().items(index_); left > 0; --left, element = tree().Next(element)) {
        if (!Element(element, 0).IsZero()) return false;
      }
      return true;
    }
    case Kind::kMap: {
      const std::optional<Foreign> data = Find({"data"});
      return data && data->IsZero();
    }
    default:
      return true;
  }
}

double Foreign::Number() const {
  notebook_->used.insert(path_);
  return Value();
}

double Foreign::Value() const {
  RefuseAmbiguous();
  double value = 0;
  if (IsText() && ReadNumber(std::string(tree().text(index_)), &value) && std::isfinite(value)) {
    return value;
  }
  const bool several = IsText() && tree().text(index_).find(' ') != std::string_view::npos;
  Refuse("is " + Spell() + ", expected a number",
         several ? "Put commas between the numbers." : "Correct it there.");
}

int32_t Foreign::Count() const {
  notebook_->used.insert(path_);
  RefuseAmbiguous();
  int32_t value = 0;
  if (IsText() && ReadCount(std::string(tree().text(index_)), &value)) return value;
  Refuse("is " + Spell() + ", expected a whole number that is not negative", "Correct it there.");
}

std::string Foreign::Text() const {
  notebook_->used.insert(path_);
  if (!IsText()) {
    Refuse("is " + Spell() + ", expected text", "Correct it there.");
  }
  return std::string(tree().text(index_));
}

void Foreign::AddTexts(std::vector<std::string>* texts) const {
  if (IsText()) return texts->push_back(Peek());
  for (const Foreign& element : Elements()) element.AddTexts(texts);
}

std::vector<std::string> Foreign::Texts() const {
  notebook_->used.insert(path_);
  std::vector<std::string> texts;
  AddTexts(&texts);
  return texts;
}

Foreign Foreign::Entry(Index entry) const {
  return Foreign(file_, JoinPath(path_, std::string(tree().key(entry))), entry, notebook_);
}

Foreign Foreign::Element(Index element, size_t number) const {
  return Foreign(file_, path_ + "[" + std::to_string(number) + "]", element, notebook_);
}

std::vector<Foreign> Foreign::Elements() const {
  if (!IsList()) Refuse("is " + Spell() + ", expected a list", "Correct it there.");
  std::vector<Foreign> elements;
  Index element = tree().First(index_);
  for (uint32_t left = tree().items(index_); left > 0; --left, element = tree().Next(element)) {
    elements.push_back(Element(element, elements.size()));
  }
  return elements;
}

std::vector<Foreign> Foreign::Lists() const {
  std::vector<Foreign> lists;
  Index element = tree().First(index_);
  const uint32_t size = IsList() ? tree().items(index_) : 0;
  for (uint32_t i = 0; i < size; ++i, element = tree().Next(element)) {
    if (tree().kind(element) == Kind::kList) lists.push_back(Element(element, i));
  }
  return lists;
}

void Foreign::AddNumbers(bool nested, std::vector<double>* numbers) const {
  Index element = tree().First(index_);
  const uint32_t size = tree().items(index_);
  if (numbers->empty()) numbers->reserve(size);
  for (uint32_t i = 0; i < size; ++i, element = tree().Next(element)) {
    double number = 0;
    if (tree().kind(element) == Kind::kText && ReadPlain(tree().text(element), &number)) {
      numbers->push_back(number);
    } else if (nested && tree().kind(element) == Kind::kList) {
      Element(element, i).AddNumbers(nested, numbers);
    } else {
      numbers->push_back(Element(element, i).Value());
    }
  }
}

std::vector<double> Foreign::Numbers() const {
  notebook_->used.insert(path_);
  if (!IsList()) {
    Refuse("is " + Spell() + ", expected a list of numbers",
           "Write it like [1.0, 2.0], with commas.");
  }
  std::vector<double> numbers;
  AddNumbers(false, &numbers);
  return numbers;
}

std::vector<double> Foreign::FlatNumbers() const {
  notebook_->used.insert(path_);
  if (!IsList()) Refuse("is " + Spell() + ", expected a list of numbers", "Correct it there.");
  std::vector<double> numbers;
  AddNumbers(true, &numbers);
  return numbers;
}

void Foreign::CheckFloats(const std::vector<double>& numbers) const {
  for (size_t i = 0; i < numbers.size(); ++i) {
    if (std::abs(numbers[i]) <= std::numeric_limits<float>::max()) continue;
    Index element = tree().First(index_);
    if (!IsList() || tree().items(index_) != numbers.size()) element = index_;
    for (size_t before = 0; element != index_ && before < i; ++before) {
      element = tree().Next(element);
    }
    const Foreign large = element == index_ ? *this : Element(element, i);
    const std::string what =
        element == index_ ? "has " + Shortest(numbers[i]) : "is " + large.Spell();
    large.Refuse(what + ", too large for the field, a float", "Correct it there.");
  }
}

std::vector<double> Foreign::Rows(size_t rows, size_t columns) const {
  notebook_->used.insert(path_);
  const std::string expected =
      std::to_string(rows) + " rows of " + std::to_string(columns) + " numbers";
  if (IsList() && tree().items(index_) == rows * columns) return Numbers();
  if (tree().kind(index_) != Kind::kList || tree().items(index_) != rows) {
    Refuse("is " + Spell() + ", expected " + expected, "Correct it there.");
  }
  std::vector<double> numbers;
  Index element = tree().First(index_);
  for (size_t row = 0; row < rows; ++row, element = tree().Next(element)) {
    const Foreign list = Element(element, row);
    const std::vector<double> part = list.Numbers();
    if (part.size() != columns) {
      list.Refuse("has " + std::to_string(part.size()) + " numbers, expected " + expected,
                  "Correct it there.");
    }
    numbers.insert(numbers.end(), part.begin(), part.end());
  }
  return numbers;
}

bool Foreign::IsUsed() const { return notebook_->used.count(path_) != 0 || AnyUsedBelow(); }

bool Foreign::AnyUsedBelow() const {
  if (!IsMap() && !IsList()) return false;
  const std::string below = path_ + (IsMap() ? "." : "[");
  const auto next = notebook_->used.lower_bound(below);
  return path_.empty() ||
         (next != notebook_->used.end() && next->compare(0, below.size(), below) == 0);
}

void Foreign::ForEachUnused(const LeftoverVisitor& visit, Remarks::const_iterator* next) const {
  if (notebook_->used.count(path_) != 0) return;
  if (AnyUsedBelow()) {
    const auto visit_value = [&](const Foreign& value) { value.ForEachUnused(visit, next); };
    if (IsMap()) {
      ForEachEntry([&](const std::string&, const Foreign& value) { visit_value(value); });
    } else {
      for (const Foreign& element : Elements()) visit_value(element);
    }
    return;
  }
  const Remarks& remarks = notebook_->remarks;
  for (; *next != remarks.end() && (*next)->first <= tree().line(index_); ++*next) {
    visit((*next)->second);
  }
  visit({Place(), NotKeptText("no field of a record holds it")});
}

void Foreign::ForEachLeftover(const LeftoverVisitor& visit) const {
  Remarks::const_iterator next = notebook_->remarks.begin();
  ForEachUnused(visit, &next);
  for (; next != notebook_->remarks.end(); ++next) visit(next->second);
}

}  // namespace calib
