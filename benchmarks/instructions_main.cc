// Counts instructions; runs under valgrind --tool=callgrind --collect-atstart=no.
//
//   benchmark_instructions --list     prints every cell's name: side/operation/payload
//   benchmark_instructions INDEX...   runs the cells that stand there in the list, from 0
//
// Collects during the operation alone, once it has run before, and dumps the counts of each cell
// under the label "side/operation/payload/runs". Each cell runs in a child process of its own, on a
// heap without free blocks: its count is the same whichever other cells are run.
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/cells.h"
#include "benchmarks/heap.h"

namespace {

using zarvo::calibration::benchmarks::Catalogue;
using zarvo::calibration::benchmarks::Cell;
using zarvo::calibration::benchmarks::CellEntry;
using zarvo::calibration::benchmarks::CheckAgreement;
using zarvo::calibration::benchmarks::EverySide;
using zarvo::calibration::benchmarks::KeepMemory;
using zarvo::calibration::benchmarks::UseUpFreeBlocks;

void Count(const CellEntry& entry) {
  const int runs = entry.batch;
  const std::unique_ptr<Cell> cell = entry.make();
  const std::string label = entry.Name() + "/" + std::to_string(runs);
  UseUpFreeBlocks();
  cell->Prepare(runs);
  cell->Run(runs);
  cell->Prepare(runs);
  CALLGRIND_ZERO_STATS;
  CALLGRIND_TOGGLE_COLLECT;
  cell->Run(runs);
  CALLGRIND_TOGGLE_COLLECT;
  CALLGRIND_DUMP_STATS_AT(label.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  KeepMemory();
  const Catalogue catalogue = EverySide();
  const std::vector<CellEntry>& cells = catalogue.cells;
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
    CheckAgreement(catalogue);
    for (const CellEntry& entry : cells) std::printf("%s\n", entry.Name().c_str());
    return 0;
  }
  for (int i = 1; i < argc; ++i) {
    char* end;
    const size_t index = std::strtoul(argv[i], &end, 10);
    if (*end != '\0' || index >= cells.size()) {
      std::fprintf(stderr, "%s: '%s' is not the index of a cell, 0 to %zu\n", argv[0], argv[i],
                   cells.size() - 1);
      return 2;
    }
    const pid_t child = fork();
    if (child == 0) {
      Count(cells[index]);
      _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
      std::fprintf(stderr, "%s: the process of the cell %s failed (status %d)\n", argv[0],
                   cells[index].Name().c_str(), status);
      return 1;
    }
  }
  return 0;
}
