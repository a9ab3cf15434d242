// What project, unproject and undistort have in common: a camera, a table of points that comes in,
// and one that goes out.
#ifndef CALIB_COMMANDS_POINT_FLAGS_H_
#define CALIB_COMMANDS_POINT_FLAGS_H_

#include <functional>
#include <string>
#include <vector>

#include "calib/console/command_line.h"
#include "calib/formats/record_reader.h"
#include "calib/tools/camera_geometry.h"
#include "calib/tools/lens_flag.h"

namespace calib {

struct PointFlags {
  std::string path, points = "-", output = "-";
  InputFlags input;
  CameraFlag camera;
  LensFlag lens;

  void AddTo(Command* command, const std::string& points_description);

  // What a row becomes; `numbers` has the output's columns.
  using RowMap =
      std::function<geometry::Status(const std::vector<double>& row, std::vector<double>* numbers)>;

  // Writes the table that `map` makes of the points. A row that cannot be had is written as nan,
  // and told with the reason. Returns the exit status: kFinding if there was one.
  int Run(const std::vector<std::string>& columns, const RowMap& map) const;
};

}  // namespace calib

#endif  // CALIB_COMMANDS_POINT_FLAGS_H_
