#include "calib/tools/foreign_tree.h"

namespace calib {

ForeignTree::Index ForeignTree::Add(int line, int column) {
  Value value;
  value.line = line;
  value.column = column;
  values_.push_back(value);
  return static_cast<Index>(values_.size() - 1);
}

uint32_t ForeignTree::Keep(std::string_view text) {
  const size_t at = texts_.size();
  texts_.append(text);
  return static_cast<uint32_t>(at);
}

void ForeignTree::SetKey(Index index, std::string_view key) {
  values_[index].key = Keep(key);
  values_[index].key_size = static_cast<uint32_t>(key.size());
}

void ForeignTree::SetText(Index index, std::string_view text) {
  values_[index].kind = Kind::kText;
  values_[index].at = Keep(text);
  values_[index].size = static_cast<uint32_t>(text.size());
}

void ForeignTree::Close(Index index, Kind kind, uint32_t items) {
  values_[index].kind = kind;
  values_[index].at = static_cast<uint32_t>(values_.size());
  values_[index].size = items;
}

void ForeignTree::Unwrap(Index index) {
  const Value text = values_[index + 1];
  values_.resize(index + 1, text);
  values_[index].kind = text.kind;
  values_[index].at = text.at;
  values_[index].size = text.size;
}

void ForeignTree::SetAlias(Index index, Index target) {
  values_[index].kind = kAlias;
  values_[index].at = target;
}

const ForeignTree::Value& ForeignTree::Meant(Index index) const {
  const Value& value = values_[index];
  return value.kind == kAlias ? values_[value.at] : value;
}

ForeignTree::Index ForeignTree::First(Index index) const {
  return (values_[index].kind == kAlias ? values_[index].at : index) + 1;
}

ForeignTree::Index ForeignTree::Next(Index index) const {
  const Value& value = values_[index];
  return value.kind == Kind::kList || value.kind == Kind::kMap ? value.at : index + 1;
}

std::string ForeignTree::PlaceOf(Index index) const {
  const Value& value = values_[index];
  if (value.line < 0) return "";
  return ":" + std::to_string(value.line + 1) +
         (value.column < 0 ? "" : ":" + std::to_string(value.column + 1));
}

}  // namespace calib
