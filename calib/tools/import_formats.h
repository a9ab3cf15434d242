// The formats that can be imported, and how a file tells by its content which it is of.
#ifndef CALIB_TOOLS_IMPORT_FORMATS_H_
#define CALIB_TOOLS_IMPORT_FORMATS_H_

#include <string>
#include <vector>

#include "calib/tools/importers.h"

namespace calib {

struct ImportFormat {
  const char* name;
  const char* files;  // what people call them
  void (*import)(const std::vector<Foreign>& files, const LensModel* lens,
                 zarvo::calibration::RobotCalibration* robot);
  IsFile* is_file;
  bool several_cameras;  // even if the file at hand has one
};

const std::vector<ImportFormat>& ImportFormats();

// The one that all of the files have what it takes of. Throws Failure if there is none, or more
// than one. `name` is what messages call the files.
const ImportFormat& FormatOf(const std::string& name, const std::vector<Foreign>& files);

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_FORMATS_H_
