// Pieces of files that several formats write alike.
#ifndef CALIB_TOOLS_EXPORT_TEXT_H_
#define CALIB_TOOLS_EXPORT_TEXT_H_

#include <string>
#include <vector>

#include "calib/tools/export_rig.h"
#include "calib/tools/rigid_transform.h"

namespace calib {

// Numbers as YAML, JSON and Python read them, such as "458.654, 0.0".
std::string NumberList(const std::vector<double>& numbers, const std::string& separator = ", ");

// fx, fy and the principal point in the file's pixels.
std::vector<double> Projection(const ExportCamera& camera);
// The same with the distortion coefficients behind it.
std::vector<double> Parameters(const ExportCamera& camera);

// The four rows of a transform in brackets, a line for each that begins with `begin`.
std::string RowLines(const RigidTransform& transform, const std::string& begin,
                     const std::string& end);

// A name in double quotes, as JSON and YAML read it, with `end` behind it. What is not printable is
// replaced, which is told.
std::string QuotedName(const ExportCamera& camera, const std::string& end, ExportReport* report);

// What OpenCV's FileStorage begins with, and a matrix.
extern const char kFileStorageHeader[];
std::string FileStorageMatrix(const std::string& key, size_t rows, size_t columns,
                              const std::string& type, const std::vector<double>& data);

// Of what the others count from: the first camera.
RigidTransform RelativeTo(const ExportCamera& reference, const ExportCamera& camera);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORT_TEXT_H_
