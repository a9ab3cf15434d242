#include "calib/console/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace calib {
namespace {

constexpr size_t kWorthShowing = size_t{32} << 20;

}  // namespace

Progress* Progress::of_many_ = nullptr;

bool Progress::OnTerminal() { return isatty(STDERR_FILENO) != 0; }

Progress::Progress(const std::string& action, size_t total)
    : action_(action),
      total_(total),
      shown_(of_many_ == nullptr && total >= kWorthShowing && OnTerminal()) {}

Progress::Progress(OfMany, const std::string& action, size_t total) : Progress(action, total) {
  of_many_ = this;
}

Progress::~Progress() {
  if (of_many_ == this) of_many_ = nullptr;
  if (percent_ >= 0) std::fprintf(stderr, "\r\033[K");
}

void Progress::AddToMany(size_t bytes) {
  if (of_many_ != nullptr) of_many_->Update(of_many_->done_ + bytes);
}

void Progress::Update(size_t done) {
  done_ = done;
  if (!shown_) return;
  const int percent = static_cast<int>(100 * std::min(done, total_) / total_);
  if (percent == percent_) return;
  percent_ = percent;
  std::fprintf(stderr, "\r\033[K%s: %d %% of %zu MB", action_.c_str(), percent, total_ / 1000000);
  std::fflush(stderr);
}

}  // namespace calib
