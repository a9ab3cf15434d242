// A cell is what the benchmarks measure: one operation on one payload, with one side's classes.
//
// The sides are `ours`, `opponent` (a schema compiler's classes of the same schema), `dynamic` (the
// run-time's DynamicMessage) and `limit` (the least that the operation could cost). Both
// programs, the one that takes the time and the one that counts instructions, run the same cells.
#ifndef CALIBRATION_BENCHMARKS_CELLS_H_
#define CALIBRATION_BENCHMARKS_CELLS_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zarvo {
namespace calibration {
namespace benchmarks {

class Cell {
 public:
  virtual ~Cell() = default;

  // Makes ready whatever the next `count` runs of the operation need; not part of what is measured.
  virtual void Prepare(int count) = 0;

  // Runs the operation `count` times. REQUIRES: Prepare(count) came right before.
  virtual void Run(int count) = 0;
};

struct CellEntry {
  std::string side;
  std::string operation;
  std::string payload;
  int batch;        // how often Run() should repeat the operation: less often for large payloads
  bool repeatable;  // Run() may repeat it any number of times
  std::function<std::unique_ptr<Cell>()> make;

  std::string Name() const { return side + "/" + operation + "/" + payload; }
};

// What one side makes of a payload, as bytes. Comparing them between the sides shows that all
// measure the same work.
struct PayloadEntry {
  std::string side;
  std::string payload;
  std::function<std::string()> encoded;    // the payload's own bytes
  std::function<std::string()> rewritten;  // written by this side once it has read them
};

struct Catalogue {
  std::vector<CellEntry> cells;
  std::vector<PayloadEntry> payloads;
};

// Each adds one side. AddOpponent() is only there if the opponent was built.
void AddOurs(Catalogue* catalogue);
void AddOpponent(Catalogue* catalogue);
void AddDynamic(Catalogue* catalogue);
void AddLimits(Catalogue* catalogue);

// All sides that were built, in that order. The peers' programs have sides of their own.
Catalogue EverySide();

// Ends the program with a message unless all sides have the same bytes for each payload and write
// the same once they have read them.
void CheckAgreement(const Catalogue& catalogue);

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_CELLS_H_
