#include "calib/console/progress.h"

#include <unistd.h>

#include <cstdio>

namespace calib {
namespace {

constexpr size_t kWorthShowing = size_t{32} << 20;

}  // namespace

Progress::Progress(const std::string& action, size_t total)
    : action_(action),
      total_(total),
      shown_(total >= kWorthShowing && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (percent_ >= 0) std::fprintf(stderr, "\r\033[K");
}

void Progress::Update(size_t done) {
  if (!shown_) return;
  const int percent = static_cast<int>(100 * done / total_);
  if (percent == percent_) return;
  percent_ = percent;
  std::fprintf(stderr, "\r\033[K%s: %d %% of %zu MB", action_.c_str(), percent, total_ / 1000000);
  std::fflush(stderr);
}

}  // namespace calib
