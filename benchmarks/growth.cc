// How time and memory grow with the size of a record: from 10 to 1,000,000 sample points, and
// images from 1 to 512 MB. Prints one table; scripts/benchmark --growth runs it.
//
// Memory is what the allocator has in use (glibc's mallinfo2) for the parsed record; time is the
// thread's processor time, the least of a few runs.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "benchmarks/clock.h"
#include "calibration_common/calibration.pb.h"

#ifdef CALIBRATION_BENCHMARKS_OPPONENT
#include "opponent/calibration.pb.h"
#endif

namespace {

using zarvo::calibration::benchmarks::Stopwatch;

struct Figures {
  double parse;   // nanoseconds
  double write;   // nanoseconds
  double memory;  // bytes
};

double BytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

template <typename Record>
Figures Measure(const std::string& bytes, int runs) {
  Figures least = {1e18, 1e18, 0};
  for (int i = 0; i < runs; ++i) {
    const double before = BytesInUse();
    const auto record = std::make_unique<Record>();
    const Stopwatch parsing;
    if (!record->ParseFromString(bytes)) {
      std::fprintf(stderr, "benchmark_growth: the record cannot be parsed\n");
      std::exit(1);
    }
    least.parse = std::min(least.parse, parsing.Nanoseconds());
    least.memory = BytesInUse() - before;
    std::string written;
    const Stopwatch writing;
    record->SerializeToString(&written);
    least.write = std::min(least.write, writing.Nanoseconds());
  }
  return least;
}

void PrintRow(const char* side, double count, const Figures& figures, const char* unit) {
  std::printf("%-9s %12.0f %s  %10.2f %10.2f %10.2f\n", side, count, unit, figures.parse / count,
              figures.write / count, figures.memory / count);
}

std::string Points(int count) {
  zarvo::calibration::CameraIntrinsics record;
  record.set_fx(1);
  record.set_fy(1);
  record.set_skew(0);
  record.set_cx(1);
  record.set_cy(1);
  for (int i = 0; i < count; ++i) {
    zarvo::calibration::CameraIntrinsicsSamplePoints* point = record.add_sample_points();
    point->set_img_x(0.5f * static_cast<float>(i));
    point->set_img_y(0.25f * static_cast<float>(i));
    point->set_tgt_x(1);
    point->set_tgt_y(2);
  }
  return record.SerializeAsString();
}

std::string Image(int megabytes) {
  zarvo::calibration::CalibrationImage record;
  record.set_imgdata(std::string(static_cast<size_t>(megabytes) << 20, '\x5A'));
  return record.SerializeAsString();
}

}  // namespace

int main() {
  std::printf("%-9s %12s         %10s %10s %10s\n", "side", "size", "parse ns", "write ns",
              "bytes");
  for (const int count : {10, 1000, 100000, 1000000}) {
    const std::string bytes = Points(count);
    const int runs = count < 100000 ? 200 : 5;
    PrintRow("ours", count, Measure<zarvo::calibration::CameraIntrinsics>(bytes, runs), "points");
#ifdef CALIBRATION_BENCHMARKS_OPPONENT
    PrintRow("opponent", count, Measure<opponent::calibration::CameraIntrinsics>(bytes, runs),
             "points");
#endif
  }
  for (const int megabytes : {1, 16, 128, 512}) {
    const std::string bytes = Image(megabytes);
    const int runs = megabytes < 128 ? 20 : 3;
    const double size = static_cast<double>(megabytes) * (1 << 20);
    PrintRow("ours", size, Measure<zarvo::calibration::CalibrationImage>(bytes, runs), "octets");
#ifdef CALIBRATION_BENCHMARKS_OPPONENT
    PrintRow("opponent", size, Measure<opponent::calibration::CalibrationImage>(bytes, runs),
             "octets");
#endif
  }
}
