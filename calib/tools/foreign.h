// A file that another tool wrote, value by value, in YAML, OpenCV's XML, lines or MCAP. Reading a
// value marks it as used; what nobody used is visited by ForEachLeftover(), so that an importer
// cannot drop anything silently. Every complaint names the file, the line, the column and the
// value's path.
#ifndef CALIB_TOOLS_FOREIGN_H_
#define CALIB_TOOLS_FOREIGN_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "calib/tools/foreign_tree.h"
#include "calib/tools/leftovers.h"

namespace zarvo {
namespace calibration {
class CameraIntrinsics;
}  // namespace calibration
}  // namespace zarvo

namespace calib {

// Coefficients of a lens, of which a record holds only the first ones.
struct LostLens {
  std::string path;  // of their list
  std::vector<double> coefficients;
  const zarvo::calibration::CameraIntrinsics* record;  // that holds those
};

class Foreign {
 public:
  // The one document of the file. Throws Failure where the syntax is wrong.
  static Foreign Parse(const std::string& file, std::string text);
  // What was read of an MCAP file; see foreign_mcap.h.
  static Foreign FromMcap(const std::string& file, ForeignTree tree);
  bool IsFromMcap() const { return notebook_->is_mcap; }

  const std::string& path() const { return path_; }

  // A look at the value that does not mark it as used.
  bool IsText() const { return tree().kind(index_) == ForeignTree::Kind::kText; }
  bool IsList() const { return tree().kind(index_) == ForeignTree::Kind::kList; }
  bool IsMap() const { return tree().kind(index_) == ForeignTree::Kind::kMap; }
  size_t Items() const;           // of a list or a map; 0 if it is none
  std::string Peek() const;       // the text; "" if it is none
  std::string PeekFirst() const;  // that, or what a list or a list in it begins with
  bool IsUsed() const;            // or what is in it
  // Whether it is nothing but numbers that are 0, in a list or as the data of a matrix.
  bool IsZero() const;
  // What it is, as short as a message wants it.
  std::string Spell() const;

  // Visits the entries of a map. Throws Failure if it is none, or has a key twice.
  void ForEachEntry(
      const std::function<void(const std::string& key, const Foreign& value)>& visit) const;
  // The entry under the first of the keys that is there: tools have renamed theirs.
  std::optional<Foreign> Find(const std::vector<std::string>& keys) const;
  // Whether it is a map that has one of the keys.
  bool Has(const std::vector<std::string>& keys) const { return IsMap() && Find(keys); }
  Foreign At(const std::vector<std::string>& keys) const;

  // The elements of a list. Throws Failure if it is none.
  std::vector<Foreign> Elements() const;
  // Those that are lists themselves.
  std::vector<Foreign> Lists() const;

  double Number() const;
  int32_t Count() const;
  std::string Text() const;
  // The text, or those in a list and in the lists in it. Throws Failure if there is anything else.
  std::vector<std::string> Texts() const;
  std::vector<double> Numbers() const;
  // The numbers of a list and of the lists in it, one after another.
  std::vector<double> FlatNumbers() const;
  // Throws Failure if a float cannot hold one of the numbers, which were read from this value.
  void CheckFloats(const std::vector<double>& numbers) const;
  // A list of lists of numbers, by rows, or one list of all of them.
  std::vector<double> Rows(size_t rows, size_t columns) const;

  [[noreturn]] void Refuse(const std::string& what, const std::string& remedy) const;
  // A remark is for the user to know; NotKept() makes one that the record does not have the value,
  // Lose() one that it has another lens for that, and that the value counts as used; Convert() one
  // that the record has the value in other terms, which is told once of all that a file has alike.
  void Remark(const std::string& what, Leftover::Kind kind = Leftover::Kind::kHarmless) const;
  void NotKept(const std::string& why) const;
  void Lose(const std::string& why) const;
  void Convert(const std::string& how) const;
  // Lose() of this list of a lens's coefficients, which LostLenses() of the file tell of.
  void LoseLens(const std::string& why, std::vector<double> coefficients,
                const zarvo::calibration::CameraIntrinsics* record) const;
  const std::vector<LostLens>& LostLenses() const { return notebook_->lost_lenses; }
  // Forgets what Lose() said of this value and of those below it, or of those at and below another
  // one's path: they were kept after all.
  void TakeBackLosses() const { TakeBackLosses(path_); }
  void TakeBackLosses(const std::string& path) const;
  // Visits all remarks, and makes NotKept() of what in and below this value was not used, topmost
  // values only.
  void ForEachLeftover(const LeftoverVisitor& visit) const;

 private:
  using Index = ForeignTree::Index;
  using Remarks = std::multimap<int, Leftover>;  // by line
  // What is common to all values of a file.
  struct Notebook {
    ForeignTree tree;
    bool is_mcap = false;
    std::set<std::string> used;  // paths
    std::set<Index> checked;     // maps that have no key twice
    Remarks remarks;
    std::vector<LostLens> lost_lenses;
  };

  Foreign(std::string file, std::string path, Index index, std::shared_ptr<Notebook> notebook);

  const ForeignTree& tree() const { return notebook_->tree; }
  std::string Place() const;
  std::string NotKeptText(const std::string& why) const;
  Foreign Entry(Index entry) const;
  Foreign Element(Index element, size_t number) const;
  double Value() const;  // the number, without marking it as used
  void AddNumbers(bool nested, std::vector<double>* numbers) const;
  void AddTexts(std::vector<std::string>* texts) const;
  void RefuseAmbiguous() const;
  void CheckKeys() const;
  bool AnyUsedBelow() const;
  // Visits what was not used, and the remarks on lines up to there, from `next` on.
  void ForEachUnused(const LeftoverVisitor& visit, Remarks::const_iterator* next) const;

  std::string file_, path_;
  Index index_;  // in the notebook's tree
  std::shared_ptr<Notebook> notebook_;
};

}  // namespace calib

#endif  // CALIB_TOOLS_FOREIGN_H_
