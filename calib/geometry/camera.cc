// Projection and its inverse. A direction becomes a point of the plane z = 1 by the lens's own
// rule; then kBrown and its kind bend that plane, and fx, fy, skew, cx and cy make it pixels.
#include <cmath>
#include <limits>
#include <new>

#include "calib/geometry/brown.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/polynomial.h"
#include "calib/geometry/pose_difference.h"

namespace zarvo {
namespace calibration_geometry {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

bool IsBent(const Camera& camera) {
  return camera.lens == Lens::kBrown || camera.lens == Lens::kOmni ||
         camera.lens == Lens::kThinPrismFisheye;
}

bool IsCamera(const Camera& camera) {
  double sum = camera.fx + camera.fy + camera.skew + camera.cx + camera.cy + camera.shape[0] +
               camera.shape[1];
  for (const double coefficient : camera.distortion) sum += coefficient;
  if (!std::isfinite(sum) || !(camera.fx > 0) || !(camera.fy > 0)) return false;
  const double alpha = camera.lens == Lens::kDoubleSphere ? camera.shape[1] : camera.shape[0];
  switch (camera.lens) {
    case Lens::kOmni:
      return camera.shape[0] >= 0;
    case Lens::kExtendedUnified:
      return alpha >= 0 && alpha <= 1 && camera.shape[1] > 0;
    case Lens::kDoubleSphere:
      return alpha >= 0 && alpha <= 1 && camera.shape[0] > -1 && camera.shape[0] <= 1;
    case Lens::kFieldOfView:
      return camera.distortion[0] >= 0 && camera.distortion[0] < kPi;
    default:
      return true;
  }
}

// A camera with what is worked out of it once.
class Optics {
 public:
  explicit Optics(const Camera& camera)
      : camera_(camera),
        valid_(IsCamera(camera)),
        brown_(camera.distortion, camera.lens != Lens::kThinPrismFisheye) {
    const double* k = camera.distortion;
    // In the square of the angle: theta (1 + k1 theta^2 + ...) rises as far as this is positive.
    fisheye_limit_ = std::fmin(
        kPi, std::sqrt(FirstSignChange({1, 3 * k[0], 5 * k[1], 7 * k[2], 9 * k[3]}, 0, kPi * kPi)));
  }

  Status Project(const Point& point, Pixel* pixel) const {
    if (!valid_) return Status::kNotACamera;
    const double length = std::hypot(std::hypot(point.x, point.y), point.z);
    if (!std::isfinite(length)) return Status::kNotFinite;
    if (length == 0) return Status::kBehind;
    Flat flat;
    Status status = Flatten({point.x / length, point.y / length, point.z / length}, &flat);
    if (status == Status::kOk && IsBent(camera_)) status = brown_.Distort(flat, &flat);
    if (status != Status::kOk) return status;
    *pixel = {camera_.fx * flat.x + camera_.skew * flat.y + camera_.cx,
              camera_.fy * flat.y + camera_.cy};
    return Status::kOk;
  }

  Status Unproject(const Pixel& pixel, Point* ray) const {
    if (!valid_) return Status::kNotACamera;
    if (!std::isfinite(pixel.u) || !std::isfinite(pixel.v)) return Status::kNotFinite;
    Flat flat;
    flat.y = (pixel.v - camera_.cy) / camera_.fy;
    flat.x = (pixel.u - camera_.cx - camera_.skew * flat.y) / camera_.fx;
    Status status = Status::kOk;
    if (IsBent(camera_)) status = brown_.Undistort(flat, &flat);
    if (status == Status::kOk) status = Raise(flat, ray);
    if (status != Status::kOk) return status;
    const double length = std::hypot(std::hypot(ray->x, ray->y), ray->z);
    *ray = {ray->x / length, ray->y / length, ray->z / length};
    return Status::kOk;
  }

  double LargestAngle() const {
    if (!valid_) return 0;
    switch (camera_.lens) {
      case Lens::kFisheye:
        return fisheye_limit_;
      case Lens::kOmni:
        return AngleOf(brown_.limit());
      case Lens::kDoubleSphere:
      case Lens::kExtendedUnified:
        return std::acos(-Depth());
      case Lens::kBrown:
        return std::atan(brown_.limit());
      case Lens::kThinPrismFisheye:
        return std::fmin(kPi, brown_.limit());
      case Lens::kDivision: {
        const double lambda = camera_.distortion[0];
        if (lambda < 0) return kPi;
        return lambda == 0 ? kPi / 2 : std::atan(0.5 / std::sqrt(lambda));
      }
      default:
        return kPi / 2;
    }
  }

 private:
  // A direction of length 1 as a point of the plane.
  Status Flatten(const Point& ray, Flat* flat) const {
    const double radius = std::hypot(ray.x, ray.y);
    double scale;
    switch (camera_.lens) {
      case Lens::kFisheye:
      case Lens::kThinPrismFisheye: {
        if (radius == 0) {
          *flat = {0, 0};
          return ray.z > 0 ? Status::kOk : Status::kBehind;
        }
        const double angle = std::atan2(radius, ray.z);
        const bool bent = camera_.lens == Lens::kFisheye;
        if (bent && angle > fisheye_limit_) return Status::kBeyondLens;
        scale = (bent ? Bent(angle) : angle) / radius;
        break;
      }
      case Lens::kDivision: {
        const double lambda = camera_.distortion[0];
        if (!(ray.z > 0) && (lambda >= 0 || radius == 0)) return Status::kBehind;
        const double square = ray.z * ray.z - 4 * lambda * radius * radius;
        if (square < 0) return Status::kBeyondLens;
        // Of the same value, the one that has no difference of what is nearly the same.
        scale = ray.z > 0 ? 2 / (ray.z + std::sqrt(square))
                          : (std::sqrt(square) - ray.z) / (-2 * lambda * radius * radius);
        break;
      }
      case Lens::kFieldOfView: {
        if (!(ray.z > 0)) return Status::kBehind;
        const double w = camera_.distortion[0], x = radius / ray.z;
        scale = w == 0 || radius == 0 ? (w == 0 ? 1 : 2 * std::tan(w / 2) / w) / ray.z
                                      : std::atan(2 * x * std::tan(w / 2)) / w / radius;
        break;
      }
      case Lens::kOmni:
        if (!(ray.z > -Depth())) return Status::kBehind;
        scale = 1 / (ray.z + camera_.shape[0]);
        break;
      case Lens::kDoubleSphere: {
        const double xi = camera_.shape[0], alpha = camera_.shape[1];
        const double z = xi + ray.z, distance = std::hypot(radius, z);
        if (!(z > -Share(alpha) * distance)) return Status::kBehind;
        scale = 1 / (alpha * distance + (1 - alpha) * z);
        break;
      }
      case Lens::kExtendedUnified: {
        const double alpha = camera_.shape[0], beta = camera_.shape[1];
        const double distance = std::sqrt(beta * radius * radius + ray.z * ray.z);
        if (!(ray.z > -Share(alpha) * distance)) return Status::kBehind;
        scale = 1 / (alpha * distance + (1 - alpha) * ray.z);
        break;
      }
      default:
        if (!(ray.z > 0)) return Status::kBehind;
        scale = 1 / ray.z;
    }
    *flat = {ray.x * scale, ray.y * scale};
    return Status::kOk;
  }

  // The inverse of Flatten(), of any length.
  Status Raise(const Flat& flat, Point* ray) const {
    const double s = flat.x * flat.x + flat.y * flat.y;
    const double radius = std::sqrt(s);
    switch (camera_.lens) {
      case Lens::kFisheye: {
        if (radius == 0) break;
        double angle;
        const Status status = AngleAt(radius, &angle);
        const double sine = std::sin(angle) / radius;
        *ray = {flat.x * sine, flat.y * sine, std::cos(angle)};
        return status;
      }
      case Lens::kThinPrismFisheye: {
        if (radius == 0) break;
        if (radius > kPi) return Status::kBeyondLens;
        const double sine = std::sin(radius) / radius;
        *ray = {flat.x * sine, flat.y * sine, std::cos(radius)};
        return Status::kOk;
      }
      case Lens::kDivision:
        // What is further out than 1 / sqrt(lambda) is seen a second time.
        if (camera_.distortion[0] * s > 1) return Status::kBeyondLens;
        *ray = {flat.x, flat.y, 1 + camera_.distortion[0] * s};
        return Status::kOk;
      case Lens::kFieldOfView: {
        const double w = camera_.distortion[0];
        if (w == 0 || radius == 0) {
          const double scale = w == 0 ? 1 : w / (2 * std::tan(w / 2));
          *ray = {flat.x * scale, flat.y * scale, 1};
          return Status::kOk;
        }
        if (radius * w >= kPi / 2) return Status::kBeyondLens;
        const double scale = std::tan(radius * w) / (2 * std::tan(w / 2)) / radius;
        *ray = {flat.x * scale, flat.y * scale, 1};
        return Status::kOk;
      }
      case Lens::kOmni: {
        const double xi = camera_.shape[0];
        const double root = 1 + (1 - xi * xi) * s;
        if (root < 0) return Status::kBeyondLens;
        const double scale = (xi + std::sqrt(root)) / (1 + s);
        *ray = {flat.x * scale, flat.y * scale, scale - xi};
        return Status::kOk;
      }
      case Lens::kDoubleSphere: {
        const double xi = camera_.shape[0], alpha = camera_.shape[1];
        const double inner = 1 - (2 * alpha - 1) * s;
        if (inner < 0) return Status::kBeyondLens;
        const double z = (1 - alpha * alpha * s) / (alpha * std::sqrt(inner) + 1 - alpha);
        const double root = z * z + (1 - xi * xi) * s;
        if (root < 0) return Status::kBeyondLens;
        const double scale = (z * xi + std::sqrt(root)) / (z * z + s);
        *ray = {flat.x * scale, flat.y * scale, z * scale - xi};
        return Status::kOk;
      }
      case Lens::kExtendedUnified: {
        const double alpha = camera_.shape[0], beta = camera_.shape[1];
        const double inner = 1 - (2 * alpha - 1) * beta * s;
        if (inner < 0) return Status::kBeyondLens;
        *ray = {flat.x, flat.y,
                (1 - beta * alpha * alpha * s) / (alpha * std::sqrt(inner) + 1 - alpha)};
        return Status::kOk;
      }
      default:
        break;
    }
    *ray = {flat.x, flat.y, 1};
    return Status::kOk;
  }

  // What the fisheye makes of an angle.
  double Bent(double angle) const {
    const double* k = camera_.distortion;
    const double s = angle * angle;
    return angle * (1 + s * (k[0] + s * (k[1] + s * (k[2] + s * k[3]))));
  }

  // Its inverse, between ends that close in on it.
  Status AngleAt(double bent, double* angle) const {
    const double* k = camera_.distortion;
    double low = 0, high = fisheye_limit_;
    *angle = kNan;
    if (bent > Bent(high)) return Status::kBeyondLens;
    double at = std::fmin(bent, high);
    for (int i = 0; i < 100; ++i) {
      const double miss = Bent(at) - bent;
      (miss < 0 ? low : high) = at;
      const double s = at * at;
      const double slope = 1 + s * (3 * k[0] + s * (5 * k[1] + s * (7 * k[2] + s * 9 * k[3])));
      double next = at - miss / slope;
      if (std::abs(next - at) <= 1e-16 * at) break;
      // The steps may lead out, or back and forth.
      if (!(next >= low && next <= high) || i % 4 == 3) next = low + (high - low) / 2;
      at = next;
    }
    if (!(std::abs(Bent(at) - bent) <= 1e-12 * (1 + bent))) return Status::kNotConverged;
    *angle = at;
    return Status::kOk;
  }

  static double Share(double alpha) {
    return alpha <= 0.5 ? alpha / (1 - alpha) : (1 - alpha) / alpha;
  }

  // A direction of length 1 can be projected if its z is above the negative of that.
  double Depth() const {
    const double xi = camera_.shape[0];
    switch (camera_.lens) {
      case Lens::kOmni:
        return xi <= 1 ? xi : 1 / xi;
      case Lens::kDoubleSphere: {
        // The second sphere's centre sees the ray's end at a cosine of -share.
        const double share = Share(camera_.shape[1]);
        const double rest = 1 - share * share;
        return xi * rest + share * std::sqrt(1 - xi * xi * rest);
      }
      case Lens::kExtendedUnified: {
        // z = -share sqrt(beta (1 - z^2) + z^2)
        const double share = Share(xi), beta = camera_.shape[1];
        return share * std::sqrt(beta / (1 + share * share * (beta - 1)));
      }
      default:
        return 0;
    }
  }

  // The angle that the mirror shows at a radius of its plane.
  double AngleOf(double radius) const {
    const double widest = std::acos(-Depth());
    Point ray;
    if (!std::isfinite(radius) || Raise({radius, 0}, &ray) != Status::kOk) return widest;
    return std::fmin(widest, std::atan2(ray.x, ray.z));
  }

  const Camera& camera_;
  bool valid_;
  Brown brown_;
  double fisheye_limit_;
};

// What makes the optics takes memory.
template <typename Use>
Status WithOptics(const Camera& camera, const Use& use) {
  try {
    use(Optics(camera));
    return Status::kOk;
  } catch (const std::bad_alloc&) {
    return Status::kNoMemory;
  }
}

}  // namespace

const char* Explain(Status status) noexcept {
  switch (status) {
    case Status::kOk:
      return "is as it should be";
    case Status::kNotACamera:
      return "is of a camera whose numbers no camera can have";
    case Status::kNotFinite:
      return "is not finite";
    case Status::kBehind:
      return "is behind the camera, or at its centre";
    case Status::kBeyondLens:
      return "is beyond the angle up to which the lens model is one to one";
    case Status::kNotConverged:
      return "has no direction that the inverse converges to";
    case Status::kNotARotation:
      return "is no rotation";
    case Status::kNoSolution:
      return "is not determined by the numbers";
    case Status::kNoMemory:
      return "takes more memory than there is";
  }
  return "is unknown";
}

Projected Project(const Camera& camera, const Point& point) noexcept {
  Projected projected;
  Project(camera, &point, 1, &projected);
  return projected;
}

void Project(const Camera& camera, const Point* points, size_t count,
             Projected* projected) noexcept {
  const Status status = WithOptics(camera, [&](const Optics& optics) {
    for (size_t i = 0; i < count; ++i) {
      projected[i].pixel = {kNan, kNan};
      projected[i].status = optics.Project(points[i], &projected[i].pixel);
    }
  });
  if (status == Status::kOk) return;
  for (size_t i = 0; i < count; ++i) projected[i] = {status, {kNan, kNan}};
}

Direction Unproject(const Camera& camera, const Pixel& pixel) noexcept {
  Direction direction;
  Unproject(camera, &pixel, 1, &direction);
  return direction;
}

void Unproject(const Camera& camera, const Pixel* pixels, size_t count,
               Direction* directions) noexcept {
  const Point none = {kNan, kNan, kNan};
  const Status status = WithOptics(camera, [&](const Optics& optics) {
    for (size_t i = 0; i < count; ++i) {
      directions[i].status = optics.Unproject(pixels[i], &directions[i].ray);
      if (directions[i].status != Status::kOk) directions[i].ray = none;
    }
  });
  if (status == Status::kOk) return;
  for (size_t i = 0; i < count; ++i) directions[i] = {status, none};
}

double LargestAngle(const Camera& camera) noexcept {
  double angle = kNan;
  WithOptics(camera, [&](const Optics& optics) { angle = optics.LargestAngle(); });
  return angle;
}

}  // namespace calibration_geometry
}  // namespace zarvo
