#include "calib/tools/foreign.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/fields/field_path.h"

namespace calib {

using Kind = ForeignTree::Kind;

namespace {

// What was found, as short as a message wants it.
std::string Spell(const ForeignTree& node) {
  switch (node.kind) {
    case Kind::kMap:
      return "a map";
    case Kind::kList:
      return "a list of " + std::to_string(node.items.size());
    case Kind::kText:
      return "'" + (node.text.size() > 40 ? node.text.substr(0, 40) + "..." : node.text) + "'";
    default:
      return "nothing";
  }
}

bool LooksLikeXml(const std::string& text) {
  const size_t begin = text.find_first_not_of(" \t\r\n\xef\xbb\xbf");
  return begin != std::string::npos && text[begin] == '<';
}

constexpr char kDigits[] = "0123456789";

// Whether the text is a whole number with a leading zero, which is octal in YAML 1.1 and decimal in
// YAML 1.2.
bool IsAmbiguous(const std::string& text) {
  const size_t first = text.find_first_not_of("+-");
  return first < 2 && first + 1 < text.size() && text[first] == '0' &&
         text.find_first_not_of(kDigits, first) == std::string::npos;
}

// Reads a number of the decimal notation; false if the text is none.
bool ReadNumber(const std::string& text, double* number) {
  if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos) return false;
  char* end = nullptr;
  *number = std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size();
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

}  // namespace

Foreign::Foreign(std::string file, std::string path, const ForeignTree* node,
                 std::shared_ptr<Notebook> notebook)
    : file_(std::move(file)), path_(std::move(path)), node_(node), notebook_(std::move(notebook)) {}

Foreign Foreign::Parse(const std::string& file, const std::string& text) {
  const auto notebook = std::make_shared<Notebook>();
  notebook->tree = LooksLikeXml(text) ? LoadXml(file, text) : LoadYaml(file, text);
  return Foreign(file, "", &notebook->tree, notebook);
}

std::string Foreign::Place() const {
  return file_ + PlaceOf(*node_) + ": " + (path_.empty() ? "" : path_ + ": ");
}

void Foreign::Refuse(const std::string& what, const std::string& remedy) const {
  throw Failure(Place() + what, remedy);
}

void Foreign::Remark(const std::string& what) const {
  notebook_->remarks.emplace(node_->line, Place() + what);
}

void Foreign::NotKept(const std::string& why) const {
  Remark((node_->kind == Kind::kText ? Spell(*node_) + " " : "") + "not kept: " + why);
}

std::vector<std::pair<std::string, Foreign>> Foreign::Entries() const {
  if (node_->kind != Kind::kMap) {
    Refuse("is " + Spell(*node_) + ", expected a map of keys and values",
           "Check its layout, and that --from names the tool that wrote the file.");
  }
  std::vector<std::pair<std::string, Foreign>> entries;
  std::set<std::string> keys;
  for (size_t i = 0; i < node_->items.size(); ++i) {
    const std::string& key = node_->keys[i];
    const Foreign value(file_, JoinPath(path_, key), &node_->items[i], notebook_);
    if (!keys.insert(key).second) value.Refuse("is there twice", "Leave one of them out.");
    entries.emplace_back(key, value);
  }
  return entries;
}

std::optional<Foreign> Foreign::Find(const std::vector<std::string>& keys) const {
  const auto entries = Entries();
  for (const std::string& key : keys) {
    for (const auto& entry : entries) {
      if (entry.first == key) return entry.second;
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
  if (node_->kind != Kind::kText || !IsAmbiguous(node_->text)) return;
  Refuse("is " + Spell(*node_) +
             ", which is octal for some readers and decimal for others: it begins with 0",
         "Write it without the leading zero.");
}

double Foreign::Number() const {
  notebook_->used.insert(path_);
  RefuseAmbiguous();
  double value = 0;
  if (node_->kind == Kind::kText && ReadNumber(node_->text, &value) && std::isfinite(value)) {
    return value;
  }
  const bool several = node_->text.find(' ') != std::string::npos;
  Refuse("is " + Spell(*node_) + ", expected a number",
         several ? "Put commas between the numbers." : "Correct it there.");
}

int32_t Foreign::Count() const {
  notebook_->used.insert(path_);
  RefuseAmbiguous();
  int32_t value = 0;
  if (node_->kind == Kind::kText && ReadCount(node_->text, &value)) return value;
  Refuse("is " + Spell(*node_) + ", expected a whole number that is not negative",
         "Correct it there.");
}

std::string Foreign::Text() const {
  notebook_->used.insert(path_);
  if (node_->kind != Kind::kText) {
    Refuse("is " + Spell(*node_) + ", expected text", "Correct it there.");
  }
  return node_->text;
}

Foreign Foreign::Element(size_t index) const {
  return Foreign(file_, path_ + "[" + std::to_string(index) + "]", &node_->items[index], notebook_);
}

std::vector<double> Foreign::Numbers() const {
  notebook_->used.insert(path_);
  if (node_->kind != Kind::kList) {
    Refuse("is " + Spell(*node_) + ", expected a list of numbers",
           "Write it like [1.0, 2.0], with commas.");
  }
  std::vector<double> numbers;
  for (size_t i = 0; i < node_->items.size(); ++i) numbers.push_back(Element(i).Number());
  return numbers;
}

void Foreign::CheckFloats(const std::vector<double>& numbers) const {
  for (size_t i = 0; i < numbers.size(); ++i) {
    if (std::abs(numbers[i]) <= std::numeric_limits<float>::max()) continue;
    Element(i).Refuse("is " + Spell(*Element(i).node_) + ", too large for the field, a float",
                      "Correct it there.");
  }
}

std::vector<double> Foreign::Rows(size_t rows, size_t columns) const {
  notebook_->used.insert(path_);
  const std::string expected =
      std::to_string(rows) + " rows of " + std::to_string(columns) + " numbers";
  if (node_->kind != Kind::kList || node_->items.size() != rows) {
    Refuse("is " + Spell(*node_) + ", expected " + expected, "Correct it there.");
  }
  std::vector<double> numbers;
  for (size_t row = 0; row < rows; ++row) {
    const std::vector<double> part = Element(row).Numbers();
    if (part.size() != columns) {
      Element(row).Refuse("has " + std::to_string(part.size()) + " numbers, expected " + expected,
                          "Correct it there.");
    }
    numbers.insert(numbers.end(), part.begin(), part.end());
  }
  return numbers;
}

bool Foreign::AnyUsedBelow() const {
  const auto next = notebook_->used.lower_bound(path_ + ".");
  return path_.empty() ||
         (next != notebook_->used.end() && next->compare(0, path_.size() + 1, path_ + ".") == 0);
}

void Foreign::CollectUnused() const {
  if (notebook_->used.count(path_) != 0) return;
  if (node_->kind != Kind::kMap || !AnyUsedBelow()) return NotKept("no field of a record holds it");
  for (const auto& entry : Entries()) entry.second.CollectUnused();
}

void Foreign::Report() const {
  CollectUnused();
  for (const auto& remark : notebook_->remarks) Note(remark.second);
}

}  // namespace calib
