// The cameras of a rig in space, as lines and names: where they sit, by their extrinsics, and where
// they look, by their intrinsics. The format records neither the layout of a transform nor what it
// maps; taken are 16 or 12 numbers by rows, of a rotation and a translation.
#ifndef CALIB_VIEWS_RIG_H_
#define CALIB_VIEWS_RIG_H_

#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/fields/parts.h"
#include "calib/geometry/calibration_geometry.h"

namespace calib {

enum class Extrinsics {
  kAssumed,         // as kCameraFromBody, and the drawing says so
  kCameraFromBody,  // maps a point of the body's frame to the camera's
  kBodyFromCamera
};
// By their names on the command line; "" is kAssumed.
Extrinsics ExtrinsicsByName(const std::string& name);
std::vector<std::string> ExtrinsicsNames();

using Point3 = zarvo::calibration_geometry::Point;

// All in the body's frame.
struct RigLine {
  std::vector<Point3> points;
  int color;
  bool dashed;
};
struct RigName {
  Point3 place;
  std::string text;
};

struct Rig {
  std::vector<RigLine> lines;      // the body's axes, the cameras' axes and frusta
  std::vector<RigName> names;      // of the cameras and the body's axes
  std::vector<std::string> notes;  // the assumption, and what is not drawn, with the reason
  std::vector<ChartPose> poses;    // of the cameras that are drawn, to the body
  // Axes of the body, x, y and z being 0, 1 and 2: the one that most cameras have above them, and
  // the one that they look along on the whole, each with its sign.
  int up = 2, up_sign = 1, forward = 0, forward_sign = 1;
};

// Of parts that are CameraCalibrations. No lines if none of them has extrinsics.
Rig RigOf(const std::vector<Part>& cameras, Extrinsics reading);

}  // namespace calib

#endif  // CALIB_VIEWS_RIG_H_
