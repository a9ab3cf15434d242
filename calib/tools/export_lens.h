// The lenses that a file of another tool can hold, and which of them is a record's.
#ifndef CALIB_TOOLS_EXPORT_LENS_H_
#define CALIB_TOOLS_EXPORT_LENS_H_

#include <string>
#include <vector>

#include "calib/tools/leftovers.h"
#include "calib/tools/lens_models.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// A lens as a file writes it.
struct LensForm {
  std::string lens;                       // its name in the table of lens models
  std::string word;                       // what the file calls it; empty if it does not
  std::vector<std::string> coefficients;  // in the file's order, such as k1, k2, p1, p2
};

// The coefficients of Brown's lenses in OpenCV's order, and those of a fisheye.
LensForm BrownForm(const std::string& lens, const std::string& word, size_t coefficients);
LensForm FisheyeForm(const std::string& word);

// The lens of the coefficients: `chosen` or, if that is nullptr, the one that their numbers tell.
// Throws Failure if they cannot be its coefficients.
const LensModel& LensOf(const zarvo::calibration::CameraIntrinsics& intrinsics,
                        const std::string& place, const LensModel* chosen);

// The form, of those that `files` have, to write them in: one that has room for all of them, or
// that leaves out nothing but zeros; else one that leaves out others. Throws Failure if none is of
// that lens.
const LensForm& FormOf(const zarvo::calibration::CameraIntrinsics& intrinsics,
                       const std::string& place, const LensModel* chosen,
                       const std::vector<LensForm>& forms, const std::string& files);

// The coefficients in the order of the form, with 0 for those that the record does not have.
std::vector<double> CoefficientsIn(const LensForm& form,
                                   const zarvo::calibration::CameraIntrinsics& intrinsics);
// Visits those that are not 0 and that the form does not have.
void VisitLostCoefficients(const LensForm& form,
                           const zarvo::calibration::CameraIntrinsics& intrinsics,
                           const std::string& place, const std::string& files,
                           const LeftoverVisitor& visit);

// How many there are, such as "2 k and 2 p".
std::string CoefficientCounts(const zarvo::calibration::CameraIntrinsics& intrinsics);

// A field in a message on a place, such as "rig.json: camera[0]", or "rig.json:" for the record.
std::string Below(const std::string& place, const std::string& field);

// Such a place ahead of what is said of it.
std::string WithColon(const std::string& place);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORT_LENS_H_
