#include "calib/tools/foreign.h"

#include <yaml-cpp/yaml.h>

#include <cmath>

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

// Reads a number as YAML spells them; false if it is none.
template <typename T>
bool Read(const ForeignTree& node, T* value) {
  return node.kind == Kind::kText && YAML::convert<T>::decode(YAML::Node(node.text), *value);
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

double Foreign::Number() const {
  notebook_->used.insert(path_);
  double value = 0;
  if (Read(*node_, &value) && std::isfinite(value)) return value;
  const bool several = node_->text.find(' ') != std::string::npos;
  Refuse("is " + Spell(*node_) + ", expected a number",
         several ? "Put commas between the numbers." : "Correct it there.");
}

int32_t Foreign::Count() const {
  notebook_->used.insert(path_);
  int32_t value = 0;
  if (Read(*node_, &value) && value >= 0) return value;
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
