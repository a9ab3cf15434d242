// Goes on and on: random records of every class are read, merged, copied, written, printed and
// cleared, in objects that live long and in new ones, for as long as is asked; and the memory that
// the process holds must not grow. scripts/soak builds and runs it.
//
//   soak SECONDS [SEED]
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/class_calls.h"
#include "tests/support/entrances.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using Clock = std::chrono::steady_clock;

constexpr size_t kLargest = 100000;   // a record that has grown beyond it is cleared
constexpr int kPerSample = 2000;      // rounds from one look at the memory to the next
constexpr double kWarmUp = 0.25;      // of the time: so long the memory may grow
constexpr double kMostGrowth = 1.02;  // and so much afterwards: pages come in lots
constexpr long kMostGrowthKib = 512;

long ResidentKib() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void Require(bool holds, const char* what, unsigned long round) {
  if (holds) return;
  std::fprintf(stderr, "soak: in round %lu, %s\n", round, what);
  std::exit(1);
}

// One object of a class that lives as long as the process.
struct Resident {
  std::unique_ptr<Message> record;
  std::vector<Entrance> entrances;
};

void Round(std::mt19937* random, unsigned long round, std::vector<Resident>* residents) {
  Resident& resident = (*residents)[(*random)() % residents->size()];
  Message* record = resident.record.get();
  RandomOptions options;
  options.percent_set = static_cast<int>((*random)() % 100);
  const std::unique_ptr<Message> fresh(record->New());
  FillRandomly(random, options, fresh.get());
  const std::string bytes = fresh->SerializePartialAsString();

  const Entrance& entrance = resident.entrances[(*random)() % resident.entrances.size()];
  // Every other input is cut short or damaged; what becomes of the object then is not looked at.
  std::string input = bytes;
  if ((*random)() % 2 == 0 && !input.empty()) {
    const unsigned bit = 1u << (*random)() % 8;
    char& octet = input[(*random)() % input.size()];
    octet = static_cast<char>(octet ^ bit);
    input.resize(input.size() - (*random)() % 2);
  }
  const bool accepted = entrance.parse(record, input);
  if (input == bytes && entrance.partial) {
    Require(accepted, "a record was refused", round);
    if (!entrance.merges) {
      Require(record->SerializePartialAsString() == bytes, "a record changed", round);
    }
  }
  switch ((*random)() % 6) {
    case 0:
      record->MergeFrom(*fresh);
      break;
    case 1:
      record->CopyFrom(*fresh);
      break;
    case 2:
      record->Clear();
      break;
    case 3:
      record->GetReflection()->Swap(record, fresh.get());
      break;
    case 4:
      record->DebugString();
      break;
    default:
      break;
  }
  const std::string written = record->SerializePartialAsString();
  Require(fresh->ParsePartialFromString(written), "what was written was refused", round);
  if (round % 16 == 0) {
    Require(static_cast<bool>(EqualByReflection(*fresh, *record)),
            "what was written reads otherwise", round);
  }
  if (written.size() > kLargest) record->Clear();
}

int Soak(double seconds, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Resident> residents;
  for (const RecordType& type : RecordTypes()) {
    for (const auto& table : {ConcreteEntrances(type.name), GenericEntrances()}) {
      residents.push_back({type.make(), {}});
      for (const Entrance& entrance : table) {
        // Calls that ask for required fields log what is missing.
        if (entrance.partial) residents.back().entrances.push_back(entrance);
      }
    }
  }
  const Clock::time_point start = Clock::now();
  unsigned long round = 0;
  double elapsed = 0;
  long warm = 0, most = 0;
  while (elapsed < seconds) {
    for (int i = 0; i < kPerSample; ++i) Round(&random, ++round, &residents);
    elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    long& peak = elapsed < kWarmUp * seconds ? warm : most;
    peak = std::max(peak, ResidentKib());
  }
  std::printf(
      "%lu rounds in %.0f s, seed %u; resident at most %ld KiB in the first quarter, %ld KiB "
      "after it\n",
      round, elapsed, seed, warm, most);
  if (static_cast<double>(most) > kMostGrowth * static_cast<double>(warm) + kMostGrowthKib) {
    std::fprintf(stderr, "soak: the memory grows\n");
    return 1;
  }
  return 0;
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

int main(int argc, char** argv) {
  const double seconds = argc > 1 ? std::atof(argv[1]) : 0;
  if (seconds <= 0) {
    std::fprintf(stderr, "usage: soak SECONDS [SEED]\n");
    return 2;
  }
  const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1;
  const int result = ::zarvo::calibration::testing::Soak(seconds, seed);
  ::google::protobuf::ShutdownProtobufLibrary();
  return result;
}
