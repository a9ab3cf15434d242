// A file that another tool wrote, value by value, in YAML or in OpenCV's XML. Reading a value marks
// it as used; what nobody used is left for Report(), so that an importer cannot drop anything
// silently. Every complaint names the file, the line, the column and the value's path.
#ifndef CALIB_TOOLS_FOREIGN_H_
#define CALIB_TOOLS_FOREIGN_H_

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "calib/tools/foreign_tree.h"

namespace calib {

class Foreign {
 public:
  // The one document of the file. Throws Failure where the syntax is wrong.
  static Foreign Parse(const std::string& file, const std::string& text);

  const std::string& path() const { return path_; }

  // The entries of a map. Throws Failure if it is none, or has a key twice.
  std::vector<std::pair<std::string, Foreign>> Entries() const;
  // The entry under the first of the keys that is there: tools have renamed theirs.
  std::optional<Foreign> Find(const std::vector<std::string>& keys) const;
  Foreign At(const std::vector<std::string>& keys) const;

  double Number() const;
  int32_t Count() const;
  std::string Text() const;
  std::vector<double> Numbers() const;
  // Throws Failure if a float cannot hold one of the numbers, which are those of this list.
  void CheckFloats(const std::vector<double>& numbers) const;
  // A list of lists of numbers, by rows.
  std::vector<double> Rows(size_t rows, size_t columns) const;

  [[noreturn]] void Refuse(const std::string& what, const std::string& remedy) const;
  // A remark is for the user to know; NotKept() makes one that the record does not have the value.
  void Remark(const std::string& what) const;
  void NotKept(const std::string& why) const;
  // Prints all remarks, and NotKept() for what in and below this value was not used, topmost values
  // only: at the end, so that a file that is refused is not commented on as well.
  void Report() const;

 private:
  // What is common to all values of a file.
  struct Notebook {
    ForeignTree tree;
    std::set<std::string> used;               // paths
    std::multimap<int, std::string> remarks;  // by line
  };

  Foreign(std::string file, std::string path, const ForeignTree* node,
          std::shared_ptr<Notebook> notebook);

  Foreign Element(size_t index) const;
  void RefuseAmbiguous() const;
  void CollectUnused() const;
  bool AnyUsedBelow() const;
  std::string Place() const;

  std::string file_, path_;
  const ForeignTree* node_;  // in the notebook's tree
  std::shared_ptr<Notebook> notebook_;
};

}  // namespace calib

#endif  // CALIB_TOOLS_FOREIGN_H_
