// The arithmetic of cameras: where points land in an image and where pixels look, rigid transforms,
// rectified pairs, lenses of one model as another. Functions take values and return values: they
// keep no state, read no files, know no records, and throw nothing.
//
// It is a shared library of its own: calibration_protolib::geometry of the CMake package,
// calibration_geometry of pkg-config. calibration_geometry_c.h has the same for C.
//
// Pixels: the centre of the first one is (0, 0), u goes right and v down. Cameras look along z,
// with x to the right and y down. Angles are radians; lengths have the unit that the caller gives
// them in.
#ifndef ZARVO_CALIBRATION_GEOMETRY_H_
#define ZARVO_CALIBRATION_GEOMETRY_H_

#include <cstddef>
#include <vector>

// What the shared library exports.
#pragma GCC visibility push(default)

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
  kPinhole,           // no distortion
  kBrown,             // radial, tangential, thin prism and tilt: plumb_bob, rational_polynomial
  kFisheye,           // a polynomial of the angle: equidistant, Kannala-Brandt
  kOmni,              // the unified model of Mei, with the distortion of kBrown behind the mirror
  kDoubleSphere,      // of Usenko and others
  kExtendedUnified,   // of Khomutenko and others
  kFieldOfView,       // of Devernay and Faugeras
  kThinPrismFisheye,  // the angle to the axis, bent as by kBrown: radial, tangential, thin prism
  kDivision           // of Fitzgibbon
};

struct Camera {
  Lens lens = Lens::kPinhole;
  double fx = 1, fy = 1, skew = 0, cx = 0, cy = 0;  // u = fx x + skew y + cx, v = fy y + cy
  // kBrown and kOmni: k1 k2 p1 p2 k3 k4 k5 k6 s1 s2 s3 s4 tx ty; kFisheye: k1 k2 k3 k4;
  // kFieldOfView: w; kDivision: lambda. kThinPrismFisheye: as kBrown, but that k4 is the fourth of
  // the radial polynomial, and there is no k5 and k6. What is not used is 0.
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
  kNoSolution,    // the numbers do not determine what was asked for
  kNoMemory       // there was not enough to find out
};

// A sentence's end, such as "is behind the camera".
const char* Explain(Status status) noexcept;

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
Projected Project(const Camera& camera, const Point& point) noexcept;
void Project(const Camera& camera, const Point* points, size_t count,
             Projected* projected) noexcept;

// Where pixels look: the direction that lands on the pixel to 1e-12 of a focal length (a billionth
// of a pixel at 1000), or a status that says why there is none.
Direction Unproject(const Camera& camera, const Pixel& pixel) noexcept;
void Unproject(const Camera& camera, const Pixel* pixels, size_t count,
               Direction* directions) noexcept;

// The largest angle to the optical axis at which a camera without tangential distortion maps angles
// one to one; pi if there is none.
double LargestAngle(const Camera& camera) noexcept;

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

Transform Invert(const Transform& transform) noexcept;
// `first`, then `second`: the matrix product second first.
Transform Compose(const Transform& second, const Transform& first) noexcept;
Point Apply(const Transform& transform, const Point& point) noexcept;

// How far the upper left 3x3 is from a rotation: the largest element of R^T R - I; infinite where
// it mirrors, where a number is not finite or the last row is not 0 0 0 1.
double RotationDefect(const Transform& transform) noexcept;
// With the rotation that is nearest (in the sum of squared differences). False if there is none.
bool Orthonormalize(Transform* transform) noexcept;

Quaternion QuaternionOf(const Transform& transform) noexcept;
RollPitchYaw RollPitchYawOf(const Transform& transform) noexcept;
// The axis of the rotation, as long as its angle.
Point RotationVectorOf(const Transform& transform) noexcept;
// The rotation that they mean, and that translation. The quaternion may have any length but 0.
Transform FromQuaternion(const Quaternion& rotation, const Point& translation) noexcept;
Transform FromRollPitchYaw(const RollPitchYaw& rotation, const Point& translation) noexcept;
Transform FromRotationVector(const Point& rotation, const Point& translation) noexcept;

// --- Rectified pairs -----------------------------------------------------------------------------

struct RectifyOptions {
  // From 0, where all pixels of the rectified images show something, to 1, where they show all that
  // the cameras see; below 0, the scale stays as it is (with a fisheye as 0).
  double alpha = -1;
  // Both principal points the same, so that points at infinity have no disparity.
  bool zero_disparity = true;
};

struct Rectified {
  Status status =
      Status::kNoSolution;          // which it is if the baseline is along the optical axis, or 0
  bool vertical = false;            // the pair stands one above the other: columns are the same
  bool swapped = false;             // the second camera is left of, or above, the first
  double baseline = 0;              // between the cameras, in the transform's unit
  double r1[9] = {}, r2[9] = {};    // by rows: from each camera to the rectified one
  double p1[12] = {}, p2[12] = {};  // by rows: from the first rectified camera to pixels of each
  double q[16] = {};                // by rows: from u, v, disparity, 1 to homogeneous points
};

// The cameras must have images of one size.
Rectified Rectify(const Camera& first, const Camera& second, const Transform& second_from_first,
                  const RectifyOptions& options) noexcept;

// --- Two calibrations of one camera --------------------------------------------------------------

struct DifferenceOptions {
  // Take out the rotation (at a distance, the rigid transform) that explains most of the
  // difference.
  bool fit = true;
  double distance = 0;  // of the points that are compared; 0: at infinity
  int columns = 60;     // of the grid of pixels, which spans the image; from 2 to 10000
};

struct Displacement {
  Status status;   // of the pixel in `before`, or of where it goes
  Pixel from, by;  // where it is in `before`, and how much further it is in `after`
};

struct Difference {
  Status status = Status::kNoSolution;
  Transform after_from_before;       // what was taken out
  double largest = 0, mean = 0;      // pixels
  Pixel where = {0, 0};              // the largest is there
  size_t compared = 0;               // pixels that both cameras see
  std::vector<Displacement> pixels;  // of the grid, row by row
};

// Where `after` sees what `before` sees. The cameras must have images of one size.
Difference Compare(const Camera& before, const Camera& after,
                   const DifferenceOptions& options) noexcept;

// --- A lens of one model as another --------------------------------------------------------------

struct FitOptions {
  double max_error = 0.5;    // pixels; what FittedLens::angle goes by
  double largest_angle = 4;  // leave out what is further from the axis
};

struct FittedLens {
  Status status = Status::kNoSolution;
  Camera camera;
  double rms = 0, largest = 0;  // pixels, over all of the image that was not left out
  Pixel where = {0, 0};         // the largest is there
  double angle = 0;             // up to it no error is above max_error
  double reach = 0;             // the largest angle in the image that was not left out
  size_t unseen = 0;            // pixels of the grid that the fitted camera does not see at all
};

// The camera of the lens `target` (kPinhole, kBrown or kFisheye) with `coefficients` coefficients
// that sees the image most like `source` does: with the least sum of squared distances.
FittedLens FitLens(const Camera& source, Lens target, int coefficients,
                   const FitOptions& options) noexcept;

// --- The same camera with another image ----------------------------------------------------------

struct Resized {
  Status status = Status::kNoSolution;
  Camera camera;
  // Where a pixel of the image is in the new one: u' = m[0] u + m[1] v + m[2], v' = m[3] u + ...
  double pixel_map[6] = {1, 0, 0, 0, 1, 0};
  Transform new_from_old;  // of the camera's frame, which turns with the image
};

// As an image that is resized, with the corners where they were: the first pixel's centre is at
// half a pixel from them, before and after.
Resized Scale(const Camera& camera, int width, int height) noexcept;
// What is within the rectangle, whose first pixel is that of u and v.
Resized Crop(const Camera& camera, int u, int v, int width, int height) noexcept;
// The mean of so many pixels as one or, decimated, the first of them.
Resized Bin(const Camera& camera, int columns, int rows, bool decimate) noexcept;
// Turned clockwise by that many quarters. kNoSolution if the size is not known or no such camera
// has these parameters: with skew but for half a turn, and with tilt.
Resized Rotate(const Camera& camera, int quarters) noexcept;

// --- Poses of a flat target ----------------------------------------------------------------------

struct TargetPoint {
  double x, y;  // on the target
  Pixel pixel;  // that shows it
};

struct Pose {
  Status status = Status::kNoSolution;
  Transform camera_from_target;
  double rms = 0;  // distance between what is seen and what was measured, in pixels
};

// From where a camera sees the target so: the least sum of squared distances. The target is at z.
Pose FitPose(const Camera& camera, double z, const std::vector<TargetPoint>& points) noexcept;

}  // namespace calibration_geometry
}  // namespace zarvo

#pragma GCC visibility pop

#endif  // ZARVO_CALIBRATION_GEOMETRY_H_
