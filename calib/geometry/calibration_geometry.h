// The arithmetic of cameras: where points land in an image and where pixels look, rigid transforms,
// rectified pairs, lenses of one model as another. Functions take values and return values: they
// keep no state, read no files, know no records, and throw nothing.
//
// Pixels: the centre of the first one is (0, 0), u goes right and v down. Cameras look along z,
// with x to the right and y down. Angles are radians; lengths have the unit that the caller gives
// them in.
#ifndef CALIB_GEOMETRY_CALIBRATION_GEOMETRY_H_
#define CALIB_GEOMETRY_CALIBRATION_GEOMETRY_H_

#include <cstddef>

namespace zarvo {
namespace calibration_geometry {

// --- Cameras -------------------------------------------------------------------------------------

struct Pixel {
  double u, v;
};

struct Point {
  double x, y, z;
};

enum class Lens {
  kPinhole,          // no distortion
  kBrown,            // radial, tangential, thin prism and tilt: plumb_bob, rational_polynomial
  kFisheye,          // a polynomial of the angle: equidistant, Kannala-Brandt
  kOmni,             // the unified model of Mei, with the distortion of kBrown behind the mirror
  kDoubleSphere,     // of Usenko and others
  kExtendedUnified,  // of Khomutenko and others
  kFieldOfView       // of Devernay and Faugeras
};

struct Camera {
  Lens lens = Lens::kPinhole;
  double fx = 1, fy = 1, skew = 0, cx = 0, cy = 0;  // u = fx x + skew y + cx, v = fy y + cy
  // kBrown and kOmni: k1 k2 p1 p2 k3 k4 k5 k6 s1 s2 s3 s4 tx ty; kFisheye: k1 k2 k3 k4;
  // kFieldOfView: w. What is not used is 0.
  double distortion[14] = {};
  // kOmni: xi; kDoubleSphere: xi, alpha; kExtendedUnified: alpha, beta.
  double shape[2] = {};
  int width = 0, height = 0;  // of the image; 0 if not known
};

enum class Status {
  kOk,
  kNotACamera,  // a number of the camera is not finite or a focal length not above 0
  kNotFinite,   // the point or the pixel is not
  kBehind,      // the point is where the model cannot project: behind the camera, or at its centre
  kBeyondLens,  // beyond the angle up to which the model maps angles one to one
  kNotConverged,  // no direction was found that lands on the pixel
  kNotARotation,  // a matrix that was to be one
  kNoSolution     // the numbers do not determine what was asked for
};

// A sentence's end, such as "is behind the camera".
const char* Explain(Status status);

struct Projected {
  Status status;
  Pixel pixel;  // not a number unless status is kOk
};
struct Direction {
  Status status;
  Point ray;  // of length 1; not a number unless status is kOk
};

// Where points land. A point that lands in the image only because the polynomial folds back behind
// its last extremum is kBeyondLens.
Projected Project(const Camera& camera, const Point& point);
void Project(const Camera& camera, const Point* points, size_t count, Projected* projected);

// Where pixels look: the direction that lands on the pixel to 1e-12 of a focal length (a billionth
// of a pixel at 1000), or a status that says why there is none.
Direction Unproject(const Camera& camera, const Pixel& pixel);
void Unproject(const Camera& camera, const Pixel* pixels, size_t count, Direction* directions);

// The largest angle to the optical axis at which a camera without tangential distortion maps angles
// one to one; pi if there is none.
double LargestAngle(const Camera& camera);

// --- Rigid transforms ----------------------------------------------------------------------------

// A 4x4 matrix by rows: its upper left 3x3 is a rotation, its last row 0 0 0 1. It maps a point p
// of one frame to m p in the other; T_ab maps from frame b to frame a.
struct Transform {
  double m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};
// A rotation, w + x i + y j + z k, of length 1 with w >= 0.
struct Quaternion {
  double w, x, y, z;
};
// Rotates about the fixed axes x by roll, then y by pitch, then z by yaw: Rz(yaw) Ry(pitch)
// Rx(roll).
struct RollPitchYaw {
  double roll, pitch, yaw;
};

Transform Invert(const Transform& transform);
// `first`, then `second`: the matrix product second first.
Transform Compose(const Transform& second, const Transform& first);
Point Apply(const Transform& transform, const Point& point);

// How far the upper left 3x3 is from a rotation: the largest element of R^T R - I; infinite where
// it mirrors, where a number is not finite or the last row is not 0 0 0 1.
double RotationDefect(const Transform& transform);
// With the rotation that is nearest (in the sum of squared differences). False if there is none.
bool Orthonormalize(Transform* transform);

Quaternion QuaternionOf(const Transform& transform);
RollPitchYaw RollPitchYawOf(const Transform& transform);
// The axis of the rotation, as long as its angle.
Point RotationVectorOf(const Transform& transform);
// The rotation that they mean, and that translation. The quaternion may have any length but 0.
Transform FromQuaternion(const Quaternion& rotation, const Point& translation);
Transform FromRollPitchYaw(const RollPitchYaw& rotation, const Point& translation);
Transform FromRotationVector(const Point& rotation, const Point& translation);

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIB_GEOMETRY_CALIBRATION_GEOMETRY_H_
