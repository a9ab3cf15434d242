#include "calib/foreign.h"

#include <cmath>

#include "calib/failure.h"
#include "calib/field_path.h"
#include "calib/file.h"

namespace calib {

namespace {

std::string LineAndColumn(const YAML::Mark& mark) {
  if (mark.is_null()) return "";
  return ":" + std::to_string(mark.line + 1) + ":" + std::to_string(mark.column + 1);
}

// What was found, as short as a message wants it.
std::string Spell(const YAML::Node& node) {
  if (node.IsMap()) return "a map";
  if (node.IsSequence()) return "a list of " + std::to_string(node.size());
  if (!node.IsScalar()) return "nothing";
  const std::string& text = node.Scalar();
  return "'" + (text.size() > 40 ? text.substr(0, 40) + "..." : text) + "'";
}

std::vector<YAML::Node> LoadDocuments(const std::string& file, const std::string& text) {
  std::vector<YAML::Node> documents;
  try {
    for (const YAML::Node& document : YAML::LoadAll(text)) {
      if (document.IsDefined() && !document.IsNull()) documents.push_back(document);
    }
  } catch (const YAML::Exception& error) {
    throw Failure(file + LineAndColumn(error.mark) + ": " + error.msg,
                  "The file is no YAML; correct it there.");
  }
  return documents;
}

}  // namespace

Foreign::Foreign(std::string file, std::string path, YAML::Mark mark, YAML::Node node,
                 std::shared_ptr<Notebook> notebook)
    : file_(std::move(file)),
      path_(std::move(path)),
      mark_(mark),
      node_(std::move(node)),
      notebook_(std::move(notebook)) {}

Foreign Foreign::Parse(const std::string& file, const std::string& text) {
  const std::vector<YAML::Node> documents = LoadDocuments(file, text);
  if (documents.empty()) throw Failure(file + ": is empty", "Check that it is the file you meant.");
  if (documents.size() > 1) {
    throw Failure(file + LineAndColumn(documents[1].Mark()) + ": a document of its own begins here",
                  "Bring in one document at a time: split the file where it says '---'.");
  }
  return Foreign(file, "", documents[0].Mark(), documents[0], std::make_shared<Notebook>());
}

std::string Foreign::Place() const {
  return file_ + LineAndColumn(mark_) + ": " + (path_.empty() ? "" : path_ + ": ");
}

void Foreign::Refuse(const std::string& what, const std::string& remedy) const {
  throw Failure(Place() + what, remedy);
}

void Foreign::Remark(const std::string& what) const {
  notebook_->remarks.emplace(mark_.line, Place() + what);
}

void Foreign::NotKept(const std::string& why) const {
  Remark((node_.IsScalar() ? Spell(node_) + " " : "") + "not kept: " + why);
}

std::vector<std::pair<std::string, Foreign>> Foreign::Entries() const {
  if (!node_.IsMap()) {
    Refuse("is " + Spell(node_) + ", expected a map of keys and values",
           "Check the indentation, and that --from names the tool that wrote the file.");
  }
  std::vector<std::pair<std::string, Foreign>> entries;
  std::set<std::string> keys;
  for (const auto& entry : node_) {
    const std::string key = entry.first.IsScalar() ? entry.first.Scalar() : Spell(entry.first);
    // A value of several lines begins below its key.
    const YAML::Mark above = entry.first.Mark(), mark = entry.second.Mark();
    const Foreign value(file_, JoinPath(path_, key), above.line < mark.line ? above : mark,
                        entry.second, notebook_);
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
  if (node_.IsScalar() && YAML::convert<double>::decode(node_, value) && std::isfinite(value)) {
    return value;
  }
  const bool several = node_.IsScalar() && node_.Scalar().find(' ') != std::string::npos;
  Refuse("is " + Spell(node_) + ", expected a number",
         several ? "Put commas between the numbers." : "Correct it there.");
}

int32_t Foreign::Count() const {
  notebook_->used.insert(path_);
  int32_t value = 0;
  if (node_.IsScalar() && YAML::convert<int32_t>::decode(node_, value) && value >= 0) return value;
  Refuse("is " + Spell(node_) + ", expected a whole number that is not negative",
         "Correct it there.");
}

std::string Foreign::Text() const {
  notebook_->used.insert(path_);
  if (!node_.IsScalar()) Refuse("is " + Spell(node_) + ", expected text", "Correct it there.");
  return node_.Scalar();
}

Foreign Foreign::Element(size_t index) const {
  const YAML::Node node = node_[index];
  return Foreign(file_, path_ + "[" + std::to_string(index) + "]", node.Mark(), node, notebook_);
}

std::vector<double> Foreign::Numbers() const {
  notebook_->used.insert(path_);
  if (!node_.IsSequence()) {
    Refuse("is " + Spell(node_) + ", expected a list of numbers",
           "Write it like [1.0, 2.0], with commas.");
  }
  std::vector<double> numbers;
  for (size_t i = 0; i < node_.size(); ++i) numbers.push_back(Element(i).Number());
  return numbers;
}

std::vector<double> Foreign::Rows(size_t rows, size_t columns) const {
  notebook_->used.insert(path_);
  const std::string expected =
      std::to_string(rows) + " rows of " + std::to_string(columns) + " numbers";
  if (!node_.IsSequence() || node_.size() != rows) {
    Refuse("is " + Spell(node_) + ", expected " + expected, "Correct it there.");
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
  if (!node_.IsMap() || !AnyUsedBelow()) return NotKept("no field of a record holds it");
  for (const auto& entry : Entries()) entry.second.CollectUnused();
}

void Foreign::Report() const {
  CollectUnused();
  for (const auto& remark : notebook_->remarks) Note(remark.second);
}

}  // namespace calib
