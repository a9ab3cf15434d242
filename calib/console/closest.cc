#include "calib/console/closest.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace calib {
namespace {

// The number of letters to insert, remove, replace or swap with the next one to make one word of
// the other.
size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> before, last, row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (size_t i = 0; i < a.size(); ++i) {
    before = std::exchange(last, row);
    row[0] = i + 1;
    for (size_t j = 0; j < b.size(); ++j) {
      row[j + 1] = std::min({last[j] + (a[i] != b[j]), last[j + 1] + 1, row[j] + 1});
      const bool swapped = i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j];
      if (swapped) row[j + 1] = std::min(row[j + 1], before[j - 1] + 1);
    }
  }
  return row.back();
}

}  // namespace

std::string SuggestClosest(const std::string& name, const std::vector<std::string>& candidates) {
  std::string closest;
  size_t least = std::max<size_t>(1, name.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const size_t distance = EditDistance(name, candidate);
    if (distance < least) {
      least = distance;
      closest = candidate;
    }
  }
  return closest.empty() ? "" : "Did you mean " + closest + "? ";
}

}  // namespace calib
