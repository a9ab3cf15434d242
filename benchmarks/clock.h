// Takes the processor time of the calling thread.
#ifndef CALIBRATION_BENCHMARKS_CLOCK_H_
#define CALIBRATION_BENCHMARKS_CLOCK_H_

#include <time.h>

#include <algorithm>

namespace zarvo {
namespace calibration {
namespace benchmarks {

class Stopwatch {
 public:
  Stopwatch() : start_(Now()) {}

  // Since the stopwatch was made, without what it takes to read the clock.
  double Nanoseconds() const { return std::max(Now() - start_ - Overhead(), 0.0); }

 private:
  static double Now() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
  }

  // The least of many, once for the process.
  static double Overhead() {
    static const double overhead = [] {
      double least = 1e9;
      for (int i = 0; i < 1000; ++i) {
        const double start = Now();
        least = std::min(least, Now() - start);
      }
      return least;
    }();
    return overhead;
  }

  double start_;
};

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_CLOCK_H_
