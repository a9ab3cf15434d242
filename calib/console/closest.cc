#include "calib/console/closest.h"

#include <algorithm>
#include <numeric>

namespace calib {
namespace {

// The number of letters to insert, remove or replace to make one word of the other.
size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
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
