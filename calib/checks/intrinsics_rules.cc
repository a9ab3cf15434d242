// Rules for focal lengths, principal points, coefficients and sample points.
#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "calib/checks/radial_curve.h"
#include "calib/checks/rules.h"
#include "calib/console/number.h"
#include "calib/fields/field_path.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/pose_difference.h"

namespace calib {

using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::CameraIntrinsicsSamplePoints;
using zarvo::calibration::PTZIntrinsics;
using zarvo::calibration::PTZIntrinsicsItem;

namespace {

// "[-0.28, 0.07]"
std::string Listed(const google::protobuf::RepeatedField<double>& values) {
  std::string list;
  for (const double value : values) list += (list.empty() ? "" : ", ") + Shortest(value);
  return "[" + list + "]";
}

struct Checker {
  const std::string& path;
  Findings* findings;

  void Finite(const std::string& field, double value) const {
    if (std::isfinite(value)) return;
    AddWrong("finite", JoinPath(path, field), Shortest(value), "a finite number", findings);
  }
  void FocalLength(const std::string& field, double value) const {
    if (std::isfinite(value) && value > 0) return;
    AddWrong("focal-length", JoinPath(path, field), Shortest(value),
             "a finite focal length above 0", findings);
  }
  // `size` is what the field of that name, `of`, holds.
  void PrincipalPoint(const std::string& field, double value, const char* of, int size) const {
    Finite(field, value);
    if (!std::isfinite(value) || IsWithin(value, size)) return;
    AddOutside("principal-point", JoinPath(path, field), Shortest(value), of, size);
  }
  void SamplePoint(int index, const char* field, float value, const char* of, int size) const {
    if (IsWithin(value, size)) return;
    AddOutside("sample-point",
               JoinPath(path, "sample_points[" + std::to_string(index) + "]." + field),
               Shortest(value), of, size);
  }

 private:
  // A size that none has is a finding of its own.
  static bool IsWithin(double value, int size) { return size <= 0 || (value >= 0 && value < size); }
  void AddOutside(const std::string& rule, const std::string& place, const std::string& value,
                  const std::string& of, int size) const {
    AddWrong(rule, place, value, "from 0 to below the " + of + ", " + std::to_string(size),
             findings);
  }
};

// Which lens the coefficients are of is told by how many there are: four radial and no tangential
// ones are of a fisheye.
std::optional<RadialCurve> CurveOf(const CameraIntrinsics& in) {
  const auto& k = in.k();
  for (const double value : k) {
    if (!std::isfinite(value)) return std::nullopt;
  }
  if (k.size() == 4 && in.p_size() == 0)
    return RadialCurve{{k.begin(), k.end()}, {}, zarvo::calibration_geometry::kPi};
  if (k.size() > 6 || in.p_size() > 2) return std::nullopt;
  const auto half = k.begin() + std::min(3, k.size());
  return RadialCurve{{k.begin(), half}, {half, k.end()}, 1e6};
}

// The distance from the principal point to the farthest corner, for a focal length of 1.
double FarthestCorner(const CameraIntrinsics& in) {
  double farthest = 0;
  for (const double u : {0.0, static_cast<double>(in.width())}) {
    for (const double v : {0.0, static_cast<double>(in.height())}) {
      const double y = (v - in.cy()) / in.fy();
      const double x = (u - in.cx() - in.skew() * y) / in.fx();
      farthest = std::max(farthest, std::hypot(x, y));
    }
  }
  return farthest;
}

void CheckCurve(const CameraIntrinsics& in, const std::string& path, Findings* findings) {
  const bool known = in.IsInitialized() && in.fx() > 0 && in.fy() > 0 && in.width() > 0 &&
                     in.height() > 0 && std::isfinite(FarthestCorner(in));
  if (!known) return;
  const std::optional<RadialCurve> curve = CurveOf(in);
  const std::optional<double> highest = curve ? HighestLanding(*curve) : std::nullopt;
  const double corner = FarthestCorner(in);
  if (!highest || *highest >= corner) return;
  findings->push_back({"radial-curve", JoinPath(path, "k"), Listed(in.k()),
                       "is " + Listed(in.k()) + ", which folds the image over " +
                           Shortest(std::round(*highest * in.fx())) +
                           " pixels from the principal point, expected a curve that rises to the "
                           "farthest corner, at " +
                           Shortest(std::round(corner * in.fx()))});
}

}  // namespace

void CheckIntrinsics(const CameraIntrinsics& in, const std::string& path, Findings* findings) {
  const Checker check = {path, findings};
  if (in.has_fx()) check.FocalLength("fx", in.fx());
  if (in.has_fy()) check.FocalLength("fy", in.fy());
  if (in.has_skew()) check.Finite("skew", in.skew());
  if (in.has_cx()) check.PrincipalPoint("cx", in.cx(), "width", in.width());
  if (in.has_cy()) check.PrincipalPoint("cy", in.cy(), "height", in.height());
  if (in.has_width()) CheckSize(in.width(), JoinPath(path, "width"), findings);
  if (in.has_height()) CheckSize(in.height(), JoinPath(path, "height"), findings);
  if (in.has_tgt_width()) CheckSize(in.tgt_width(), JoinPath(path, "tgt_width"), findings);
  if (in.has_tgt_height()) CheckSize(in.tgt_height(), JoinPath(path, "tgt_height"), findings);
  for (int i = 0; i < in.k_size(); ++i) check.Finite("k[" + std::to_string(i) + "]", in.k(i));
  for (int i = 0; i < in.p_size(); ++i) check.Finite("p[" + std::to_string(i) + "]", in.p(i));
  CheckCurve(in, path, findings);
  for (int i = 0; i < in.sample_points_size(); ++i) {
    const CameraIntrinsicsSamplePoints& point = in.sample_points(i);
    if (point.has_img_x()) check.SamplePoint(i, "img_x", point.img_x(), "width", in.width());
    if (point.has_img_y()) check.SamplePoint(i, "img_y", point.img_y(), "height", in.height());
  }
}

void CheckZoomIntrinsics(const PTZIntrinsics& in, const std::string& path, Findings* findings) {
  if (in.has_width()) CheckSize(in.width(), JoinPath(path, "width"), findings);
  if (in.has_height()) CheckSize(in.height(), JoinPath(path, "height"), findings);
  for (int i = 0; i < in.samples_size(); ++i) {
    const PTZIntrinsicsItem& item = in.samples(i);
    const std::string place = JoinPath(path, "samples[" + std::to_string(i) + "]");
    const Checker check = {place, findings};
    if (item.has_fxy()) check.FocalLength("fxy", item.fxy());
    if (item.has_cx()) check.PrincipalPoint("cx", item.cx(), "width", in.width());
    if (item.has_cy()) check.PrincipalPoint("cy", item.cy(), "height", in.height());
    check.Finite("k1", item.k1());
    check.Finite("k4", item.k4());
    check.Finite("p1", item.p1());
    check.Finite("p2", item.p2());
  }
}

}  // namespace calib
