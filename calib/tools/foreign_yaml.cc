// YAML, read by its events: maps, lists and text are those of the tree, tags and anchors are not
// kept, and an alias is what it stands for. It stands for it without a copy, unless that is text;
// still, a list of aliases to a list of aliases and so on makes more than anybody can read, so that
// all of a file's aliases may stand for no more than a file of that size could hold.
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/yaml.h>

#include <istream>
#include <map>
#include <vector>

#include "calib/console/failure.h"
#include "calib/tools/foreign_tree.h"
#include "calib/tools/yaml_source.h"

namespace calib {
namespace {

using Place = YamlSource::Place;
using Index = ForeignTree::Index;
using Kind = ForeignTree::Kind;

constexpr size_t kDeepest = 64;
// What aliases may stand for in any file, however small, in bytes.
constexpr uint64_t kAliasesAtLeast = uint64_t{256} << 10;

std::string Spell(Place place) {
  if (place.line < 0) return "";
  return ":" + std::to_string(place.line + 1) + ":" + std::to_string(place.column + 1);
}

class Loader : public YAML::EventHandler {
 public:
  Loader(const std::string& file, uint64_t size, YamlSource* source)
      : file_(file), most_aliased_(size + kAliasesAtLeast), source_(source) {}

  ForeignTree Take() { return std::move(tree_); }

  // Where the innermost list or map began whose end is still to come.
  Place OpenAt() const { return open_.empty() ? Place{-1, -1} : open_.back().place; }

  void OnDocumentStart(const YAML::Mark& mark) override {
    anchors_.clear();
    // In front of what can begin no document the reader makes documents of nothing for ever.
    if (mark.pos == document_at_) Refuse(source_->PlaceOf(mark), "no value begins here");
    document_at_ = mark.pos;
  }
  void OnDocumentEnd() override {}

  void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    const Place place = Arrive(mark);
    if (open_.empty()) return;  // a document of nothing
    if (ExpectsKey()) RefuseKey(place);
    const Index index = AddValue(place);
    Remember(anchor, {index, Kind::kNothing, 0, ""});
  }

  void OnScalar(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                const std::string& text) override {
    const Place place = Arrive(mark);
    AddText(place, text);
    if (anchor != 0) Remember(anchor, {0, Kind::kText, text.size() + 1, text});
  }

  void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    const Place place = Arrive(mark);
    const auto found = anchors_.find(anchor);
    if (found == anchors_.end()) Refuse(place, "is an alias of the value that it is in");
    const Anchor target = found->second;
    aliased_ += target.weight;
    if (aliased_ > most_aliased_) {
      Refuse(place, "the aliases up to here stand for more than the whole file");
    }
    weight_ += target.weight;
    if (target.kind == Kind::kText) return AddText(place, target.text);
    if (ExpectsKey()) RefuseKey(place);
    const Index index = AddValue(place);
    if (target.kind != Kind::kNothing) tree_.SetAlias(index, target.index);
  }

  void OnSequenceStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                       YAML::EmitterStyle::value) override {
    Begin(mark, Kind::kList, anchor);
  }
  void OnSequenceEnd() override { End(); }
  void OnMapStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                  YAML::EmitterStyle::value) override {
    Begin(mark, Kind::kMap, anchor);
  }
  void OnMapEnd() override { End(); }

 private:
  struct Anchor {
    Index index;
    Kind kind;
    uint64_t weight;   // about as many bytes as it takes in a file
    std::string text;  // if that is what it is
  };
  // A list or a map whose end is still to come.
  struct Open {
    Index index;
    Kind kind;
    YAML::anchor_t anchor;
    uint64_t weight_before;
    uint32_t items = 0;
    Place place = {-1, -1};
    bool has_key = false;  // of a map: the next is its value
    std::string key;
    Place key_place = {-1, -1};
  };

  [[noreturn]] void Refuse(Place place, const std::string& what) const {
    throw Failure(file_ + Spell(place) + ": " + what, "Check that it is the file you meant.");
  }
  [[noreturn]] void RefuseKey(Place place) const {
    throw Failure(file_ + Spell(place) + ": is a key that is no text", "Correct it there.");
  }

  Place Arrive(const YAML::Mark& mark) {
    const Place place = source_->PlaceOf(mark);
    source_->Arrived(place);
    return place;
  }

  bool ExpectsKey() const {
    return !open_.empty() && open_.back().kind == Kind::kMap && !open_.back().has_key;
  }

  void Remember(YAML::anchor_t anchor, Anchor target) {
    if (anchor != 0) anchors_[anchor] = std::move(target);
  }

  void AddText(Place place, const std::string& text) {
    weight_ += text.size() + 1;
    if (ExpectsKey()) {
      open_.back().has_key = true;
      open_.back().key = text;
      open_.back().key_place = place;
      return;
    }
    tree_.SetText(AddValue(place), text);
  }

  Index AddValue(Place place) {
    ++weight_;
    if (open_.empty() && !tree_.empty()) {
      throw Failure(file_ + Spell(place) + ": a document of its own begins here",
                    source_->HasMarker()
                        ? "Bring in one document at a time: split the file where it says '---'."
                        : "What stands before it is a whole list, map or text: is the file YAML?");
    }
    if (open_.empty() || open_.back().kind != Kind::kMap) {
      if (!open_.empty()) ++open_.back().items;
      return tree_.Add(place.line, place.column);
    }
    Open& map = open_.back();
    // A value of several lines begins below its key.
    if (map.key_place.line < place.line) place = map.key_place;
    const Index index = tree_.Add(place.line, place.column);
    tree_.SetKey(index, map.key);
    map.has_key = false;
    ++map.items;
    return index;
  }

  void Begin(const YAML::Mark& mark, Kind kind, YAML::anchor_t anchor) {
    const Place place = Arrive(mark);
    if (ExpectsKey()) RefuseKey(place);
    if (open_.size() == kDeepest) {
      Refuse(place, "is nested more than " + std::to_string(kDeepest) + " deep");
    }
    const uint64_t before = weight_;
    Open open;
    open.place = place;
    open.index = AddValue(place);
    open.kind = kind;
    open.anchor = anchor;
    open.weight_before = before;
    open_.push_back(open);
  }

  void End() {
    const Open& open = open_.back();
    tree_.Close(open.index, open.kind, open.items);
    Remember(open.anchor, {open.index, open.kind, weight_ - open.weight_before, ""});
    open_.pop_back();
  }

  const std::string& file_;
  const uint64_t most_aliased_;
  YamlSource* source_;
  ForeignTree tree_;
  std::vector<Open> open_;
  std::map<YAML::anchor_t, Anchor> anchors_;
  uint64_t weight_ = 0, aliased_ = 0;
  int document_at_ = -1;  // in what was handed out
};

// Where a colon stands in the line that ends a key, if it is a line of a key.
size_t ColonOf(std::string_view line) {
  for (size_t at = line.find(':'); at != std::string_view::npos; at = line.find(':', at + 1)) {
    if (at + 1 == line.size() || line[at + 1] == ' ' || line[at + 1] == '\t') return at;
  }
  return std::string_view::npos;
}

// Says what is wrong. The reader names the place where it noticed, which is often a line late.
[[noreturn]] void RefuseSyntax(const std::string& file, const YamlSource& source,
                               const Loader& loader, const YAML::Exception& error) {
  Place place = source.PlaceOf(error.mark);
  std::string what = error.msg, remedy = "The file is no YAML; correct it there.";
  const bool in_list = what == YAML::ErrorMsg::END_OF_SEQ_FLOW;
  if ((in_list || what == YAML::ErrorMsg::END_OF_MAP_FLOW) && loader.OpenAt().line >= 0) {
    place = loader.OpenAt();
    what = in_list ? "the list that begins here is not closed by ']'"
                   : "the map that begins here is not closed by '}'";
    remedy = "Close it, and put commas between what is in it.";
  } else if (what == YAML::ErrorMsg::MAP_VALUE || what == YAML::ErrorMsg::END_OF_MAP) {
    // Text without a colon goes on in the next line, or ends where the map should.
    int number = -1;
    const bool goes_on = what == YAML::ErrorMsg::MAP_VALUE;
    const std::string_view line = source.LineBefore(place.line + (goes_on ? 0 : 1), &number);
    if (!line.empty() && line[0] != '-' && ColonOf(line) == std::string_view::npos) {
      place = {number, goes_on ? 0 : place.column};
      what = "has no key with a colon and a blank behind it";
      remedy = "Write it like 'key: value'.";
    } else if (!goes_on) {
      what = "is no entry of the map above it";
      remedy = "Begin it in the column in which the keys of that map begin.";
    }
  }
  throw Failure(file + Spell(place) + ": " + what, remedy);
}

}  // namespace

ForeignTree LoadYaml(const std::string& file, const std::string& text) {
  YamlSource source(text);
  Loader loader(file, text.size(), &source);
  try {
    std::istream stream(&source);
    YAML::Parser parser(stream);
    while (parser.HandleNextDocument(loader)) {
    }
  } catch (const YAML::Exception& error) {
    if (source.HoldsTooMuch()) {
      throw Failure(file + Spell(source.arrived_at()) + ": more than " +
                        std::to_string(YamlSource::kMostHeldBack) +
                        " signs without a value follow, or a list or map that may be a key",
                    "Write a list of that length behind its key, in the same line.");
    }
    RefuseSyntax(file, source, loader, error);
  }
  ForeignTree tree = loader.Take();
  if (tree.empty()) throw Failure(file + ": is empty", "Check that it is the file you meant.");
  return tree;
}

}  // namespace calib
