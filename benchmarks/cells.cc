#include "benchmarks/cells.h"

#include <cstdio>
#include <cstdlib>
#include <map>

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

void RequireEqual(const PayloadEntry& first, const PayloadEntry& entry, const char* what,
                  const std::string& expected, const std::string& actual) {
  if (actual == expected) return;
  std::fprintf(stderr, "benchmarks: payload %s: what %s %s (%zu bytes) is not what %s does (%zu)\n",
               entry.payload.c_str(), entry.side.c_str(), what, actual.size(), first.side.c_str(),
               expected.size());
  std::exit(1);
}

}  // namespace

void CheckAgreement(const Catalogue& catalogue) {
  struct First {
    const PayloadEntry* entry;
    std::string encoded, rewritten;
  };
  std::map<std::string, First> seen;
  for (const PayloadEntry& entry : catalogue.payloads) {
    const std::string encoded = entry.encoded();
    const std::string rewritten = entry.rewritten();
    const auto found = seen.find(entry.payload);
    if (found == seen.end()) {
      seen[entry.payload] = {&entry, encoded, rewritten};
      continue;
    }
    const First& first = found->second;
    RequireEqual(*first.entry, entry, "fills in", first.encoded, encoded);
    RequireEqual(*first.entry, entry, "makes of what it has read", first.rewritten, rewritten);
  }
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
