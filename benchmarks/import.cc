// What the import of points takes beside the tree that yaml-cpp makes of the same file: processor
// time and memory, for the forms in which OpenCV's programs write 1,000,000 points. Prints one
// table; scripts/benchmark --import runs it. Memory is what is in use at most beside the file
// itself.
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "benchmarks/clock.h"
#include "calib/tools/foreign.h"
#include "calib/tools/importers.h"
#include "tests/support/peak_memory.h"

namespace {

using zarvo::calibration::benchmarks::Stopwatch;

constexpr int kPoints = 1000000, kInView = 50;

struct Figures {
  double nanoseconds, bytes;
};

template <typename Call>
Figures Measure(const Call& call) {
  Figures least = {1e18, 1e18};
  for (int run = 0; run < 3; ++run) {
    const zarvo::calibration::testing::PeakMemory memory;
    const Stopwatch stopwatch;
    call();
    least.nanoseconds = std::min(least.nanoseconds, stopwatch.Nanoseconds());
    least.bytes = std::min(least.bytes, static_cast<double>(memory.bytes()));
  }
  return least;
}

void Print(const char* form, const std::string& file) {
  const Figures tree = Measure([&] { YAML::Load(file); });
  const Figures import = Measure([&] {
    zarvo::calibration::RobotCalibration robot;
    calib::ImportOpenCv({calib::Foreign::Parse("file", file)}, nullptr, &robot);
    if (robot.camera(0).intrinsics().sample_points_size() != kPoints) std::puts("points are lost");
  });
  const auto size = static_cast<double>(file.size());
  std::printf("%-22s %9.1f %10.2f %10.2f %8.2f %12.1f %12.1f\n", form, size / 1e6,
              tree.nanoseconds / 1e9, import.nanoseconds / 1e9,
              import.nanoseconds / tree.nanoseconds, tree.bytes / size, import.bytes / size);
}

// Numbers of so many digits, `separator` between them, `line` between views.
std::string Numbers(const char* format, const char* separator, const char* line) {
  std::string numbers;
  for (int i = 0; i < 2 * kPoints; ++i) {
    char number[32];
    std::snprintf(number, sizeof number, format, 640.0 * (i % 997) / 997);
    if (i > 0) numbers += i % (2 * kInView) == 0 ? line : separator;
    numbers += number;
  }
  return numbers;
}

std::string File(const std::string& points) {
  std::string grid;
  for (int i = 0; i < kInView; ++i) grid += (i == 0 ? "" : ", ") + std::to_string(i) + "., 0., 0.";
  return "camera_matrix: {rows: 3, cols: 3, dt: d, data: [400, 0, 320, 0, 401, 240, 0, 0, 1]}\n"
         "image_points:" +
         points + "grid_points: [" + grid + "]\n";
}

std::string Matrix(const char* format) {
  return File("\n  rows: " + std::to_string(kPoints / kInView) +
              "\n  cols: " + std::to_string(kInView) + "\n  dt: 2f\n  data: [" +
              Numbers(format, ", ", ",\n    ") + "]\n");
}

}  // namespace

int main() {
  std::printf("%-22s %9s %10s %10s %8s %12s %12s\n", "points", "MB", "Load s", "import s", "ratio",
              "Load B/B", "import B/B");
  Print("matrix, 4 digits", Matrix("%.1f"));
  Print("matrix, as written", Matrix("%.8e"));
  Print("list", File(" [" + Numbers("%.1f", ", ", ",\n  ") + "]\n"));
  Print("list of views", File("\n  - [" + Numbers("%.1f", ", ", "]\n  - [") + "]\n"));
}
