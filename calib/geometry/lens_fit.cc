// A lens of one model as another: directions of a grid of pixels are projected anew.
#include <algorithm>
#include <cmath>

#include "calib/geometry/brown.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/grid.h"
#include "calib/geometry/guarded.h"
#include "calib/geometry/least_squares.h"
#include "calib/geometry/pose_difference.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

constexpr int kColumns = 40;       // of the grid that is fitted
constexpr int kFineColumns = 120;  // of the grid that the errors are told of
// Pixels for a coefficient of 1. Where numerator and denominator vanish together, a lens would have
// a gap: then coefficients are kept small, as little as it takes.
constexpr double kShorts[] = {0, 1e-3, 1e-2, 0.1, 1};
constexpr double kRightAngle = kPi / 2;

struct Sight {
  Pixel pixel;
  Point ray;
  double angle;
};

// What pixels of the image see, up to the angle.
std::vector<Sight> Sights(const Camera& camera, int columns, double largest_angle) {
  const std::vector<Pixel> pixels = Grid(camera, columns);
  std::vector<Direction> directions(pixels.size());
  Unproject(camera, pixels.data(), pixels.size(), directions.data());
  std::vector<Sight> sights;
  for (size_t i = 0; i < pixels.size(); ++i) {
    if (Checked(directions[i].status) != Status::kOk) continue;
    const Point& ray = directions[i].ray;
    const double angle = std::atan2(std::hypot(ray.x, ray.y), ray.z);
    if (angle <= largest_angle) sights.push_back({pixels[i], ray, angle});
  }
  return sights;
}

// As Project(), but of points that a lens on the way to the right one does not see, too.
Pixel Landing(const Camera& camera, const Brown& brown, const Sight& sight) {
  const double radius = std::hypot(sight.ray.x, sight.ray.y);
  Flat flat = {0, 0};
  if (camera.lens == Lens::kFisheye) {
    const double* k = camera.distortion;
    const double s = sight.angle * sight.angle;
    const double bent = sight.angle * (1 + s * (k[0] + s * (k[1] + s * (k[2] + s * k[3]))));
    if (radius > 0) flat = {sight.ray.x / radius * bent, sight.ray.y / radius * bent};
  } else {
    flat = brown.Unchecked({sight.ray.x / sight.ray.z, sight.ray.y / sight.ray.z});
  }
  return {camera.fx * flat.x + camera.skew * flat.y + camera.cx, camera.fy * flat.y + camera.cy};
}

Camera FromParameters(const Camera& start, const std::vector<double>& parameters) {
  Camera camera = start;
  camera.fx = parameters[0];
  camera.fy = parameters[1];
  camera.cx = parameters[2];
  camera.cy = parameters[3];
  std::copy(parameters.begin() + 4, parameters.end(), camera.distortion);
  return camera;
}

// How the image grows with the angle near the axis: all models are the same there.
void StartAt(const Camera& source, Camera* camera) {
  const double small = 1e-4;
  const Projected centre = Project(source, {0, 0, 1});
  const Projected right = Project(source, {small, 0, 1}), below = Project(source, {0, small, 1});
  for (const Projected& point : {centre, right, below}) {
    if (Checked(point.status) != Status::kOk) return;
  }
  camera->fx = (right.pixel.u - centre.pixel.u) / small;
  camera->fy = (below.pixel.v - centre.pixel.v) / small;
  camera->cx = centre.pixel.u;
  camera->cy = centre.pixel.v;
}

bool Fit(const std::vector<Sight>& sights, int coefficients, double keep_short, Camera* camera) {
  std::vector<double> parameters = {camera->fx, camera->fy, camera->cx, camera->cy};
  parameters.insert(parameters.end(), camera->distortion, camera->distortion + coefficients);
  const Camera start = *camera;
  const auto residuals = [&](const std::vector<double>& at, std::vector<double>* values) {
    const Camera trial = FromParameters(start, at);
    const Brown brown(trial.distortion);
    for (size_t i = 0; i < sights.size(); ++i) {
      const Pixel pixel = Landing(trial, brown, sights[i]);
      (*values)[2 * i] = pixel.u - sights[i].pixel.u;
      (*values)[2 * i + 1] = pixel.v - sights[i].pixel.v;
    }
    for (size_t i = 4; i < at.size(); ++i)
      (*values)[2 * sights.size() + i - 4] = keep_short * at[i];
  };
  const size_t count = 2 * sights.size() + static_cast<size_t>(coefficients);
  const bool fits = LeastSquares(count, residuals, &parameters);
  if (fits) *camera = FromParameters(start, parameters);
  return fits;
}

// From the axis outwards: what fits within is a good start for what is further out.
bool FitOutwards(const std::vector<Sight>& sights, int coefficients, double keep_short,
                 double reach, Camera* camera) {
  for (const double share : {0.4, 0.7, 1.0}) {
    std::vector<Sight> within;
    for (const Sight& sight : sights) {
      if (sight.angle <= share * reach) within.push_back(sight);
    }
    if (static_cast<int>(within.size()) < 4 + coefficients && share < 1) continue;
    if (!Fit(within, coefficients, keep_short, camera) && share == 1) return false;
  }
  return true;
}

// What is left between the two cameras.
void Judge(const Camera& source, const FitOptions& options, FittedLens* fitted) {
  std::vector<Sight> sights = Sights(source, kFineColumns, options.largest_angle);
  std::sort(sights.begin(), sights.end(),
            [](const Sight& a, const Sight& b) { return a.angle < b.angle; });
  double sum = 0;
  bool holds = true;
  for (const Sight& sight : sights) {
    const Projected again = Project(fitted->camera, sight.ray);
    const double error =
        Checked(again.status) == Status::kOk
            ? std::hypot(again.pixel.u - sight.pixel.u, again.pixel.v - sight.pixel.v)
            : HUGE_VAL;
    if (!(error <= options.max_error)) holds = false;
    if (holds) fitted->angle = sight.angle;
    fitted->reach = sight.angle;
    if (again.status != Status::kOk) {
      if (fitted->unseen++ == 0) fitted->where = sight.pixel;
      continue;
    }
    sum += error * error;
    if (error <= fitted->largest) continue;
    fitted->largest = error;
    if (fitted->unseen == 0) fitted->where = sight.pixel;
  }
  const size_t seen = sights.size() - fitted->unseen;
  if (seen > 0) fitted->rms = std::sqrt(sum / static_cast<double>(seen));
}

// The lens that fits best from `start` on.
FittedLens FitFrom(const Camera& start, const Camera& source, const std::vector<Sight>& sights,
                   int coefficients, const FitOptions& options) {
  FittedLens result;
  double reach = 0;
  for (const Sight& sight : sights) reach = std::max(reach, sight.angle);
  for (const double keep_short : kShorts) {
    result.camera = start;
    if (!FitOutwards(sights, coefficients, keep_short, reach, &result.camera)) return result;
    if (LargestAngle(result.camera) >= reach) break;
  }
  Judge(source, options, &result);
  result.status = Status::kOk;
  return result;
}

bool IsBetter(const FittedLens& a, const FittedLens& b) {
  if (a.status != Status::kOk || b.status != Status::kOk) return a.status == Status::kOk;
  return a.unseen != b.unseen ? a.unseen < b.unseen : a.rms < b.rms;
}

FittedLens TryFitLens(const Camera& source, Lens target, int coefficients,
                      const FitOptions& options) {
  const int most = target == Lens::kBrown ? 14 : target == Lens::kFisheye ? 4 : 0;
  if (coefficients < 0 || coefficients > most || target > Lens::kFisheye) return {};
  if (source.width < 2 || source.height < 2 ||
      Checked(Project(source, {0, 0, 1}).status) == Status::kNotACamera) {
    FittedLens none;
    none.status = Status::kNotACamera;
    return none;
  }
  Camera start = source;
  start.lens = target;
  std::fill(start.distortion, start.distortion + 14, 0);
  std::fill(start.shape, start.shape + 2, 0);
  StartAt(source, &start);
  double end = options.largest_angle;
  // What is at a right angle to the axis or behind it, no flat image holds.
  if (target != Lens::kFisheye) end = std::min(end, kRightAngle - 1e-2);
  const std::vector<Sight> sights = Sights(source, kColumns, end);
  if (static_cast<int>(2 * sights.size()) < 4 + coefficients) return {};
  FittedLens fitted = FitFrom(start, source, sights, coefficients, options);
  if (source.lens != target) return fitted;
  // Of the same model, what the source has of the coefficients may be nearer: where numerator and
  // denominator nearly cancel, there is no way to them from 0.
  start = source;
  std::fill(start.distortion + coefficients, start.distortion + 14, 0);
  FittedLens other = FitFrom(start, source, sights, coefficients, options);
  return IsBetter(other, fitted) ? other : fitted;
}

}  // namespace

FittedLens FitLens(const Camera& source, Lens target, int coefficients,
                   const FitOptions& options) noexcept {
  return Guarded([&] { return TryFitLens(source, target, coefficients, options); });
}

}  // namespace calibration_geometry
}  // namespace zarvo
