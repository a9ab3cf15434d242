// Takes the time, with Google Benchmark.
//
// Each benchmark is one operation on one payload and runs all sides by turns, a batch of each, so
// that whatever else the machine does hits them alike. What counts is the thread's processor time:
// time that other processes were given is not the operation's. The benchmark's own time is that of
// all sides together; the time of one run on each side, in nanoseconds, stands in the counter with
// the side's name.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/cells.h"
#include "benchmarks/clock.h"
#include "benchmarks/heap.h"

namespace {

using zarvo::calibration::benchmarks::Catalogue;
using zarvo::calibration::benchmarks::Cell;
using zarvo::calibration::benchmarks::CellEntry;
using zarvo::calibration::benchmarks::CheckAgreement;
using zarvo::calibration::benchmarks::EverySide;
using zarvo::calibration::benchmarks::KeepMemory;
using zarvo::calibration::benchmarks::Stopwatch;

struct Turn {
  const CellEntry* entry;
  std::unique_ptr<Cell> cell;
  int batch;
  double nanoseconds;  // in all batches
};

double RunBatch(Cell* cell, int batch) {
  cell->Prepare(batch);
  const Stopwatch stopwatch;
  cell->Run(batch);
  return stopwatch.Nanoseconds();
}

void Take(const std::vector<const CellEntry*>& entries, benchmark::State& state) {
  const double kShortestBatch = 50000;  // nanoseconds: long beside the clock's own precision
  std::vector<Turn> turns;
  for (const CellEntry* entry : entries) {
    Turn turn = {entry, entry->make(), entry->batch, 0};
    RunBatch(turn.cell.get(), turn.batch);  // warm up
    while (RunBatch(turn.cell.get(), turn.batch) < kShortestBatch && entry->repeatable) {
      turn.batch *= 2;
    }
    turns.push_back(std::move(turn));
  }
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores)
    double total = 0;
    for (Turn& turn : turns) {
      const double nanoseconds = RunBatch(turn.cell.get(), turn.batch);
      turn.nanoseconds += nanoseconds;
      total += nanoseconds;
    }
    state.SetIterationTime(total / 1e9);
    std::rotate(turns.begin(), turns.begin() + 1, turns.end());
  }
  for (const Turn& turn : turns) {
    state.counters[turn.entry->side] =
        turn.nanoseconds / (static_cast<double>(state.iterations()) * turn.batch);
  }
}

}  // namespace

int main(int argc, char** argv) {
  KeepMemory();
  const Catalogue catalogue = EverySide();
  CheckAgreement(catalogue);

  std::vector<std::string> names;  // in the catalogue's order
  std::map<std::string, std::vector<const CellEntry*>> sides;
  for (const CellEntry& entry : catalogue.cells) {
    const std::string name = entry.operation + "/" + entry.payload;
    if (sides[name].empty()) names.push_back(name);
    sides[name].push_back(&entry);
    entry.make();  // so that all records that are read lie in a heap without gaps
  }
  for (const std::string& name : names) {
    benchmark::RegisterBenchmark(name.c_str(), [entries = sides[name]](benchmark::State& state) {
      Take(entries, state);
    })->UseManualTime();
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
