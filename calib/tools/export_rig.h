// The cameras that are to be written, checked and converted as far as all formats want it alike:
// the lens in a form that the file has, the principal point in its pixels, the extrinsics as rigid
// transforms; and what is not kept.
#ifndef CALIB_TOOLS_EXPORT_RIG_H_
#define CALIB_TOOLS_EXPORT_RIG_H_

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "calib/tools/conventions.h"
#include "calib/tools/export_lens.h"
#include "calib/tools/leftovers.h"
#include "calib/tools/rigid_transform.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

// What the user says beside the record.
struct ExportOptions {
  const LensModel* lens = nullptr;  // nullptr: by the numbers of coefficients
  int width = 0, height = 0;        // where the record has none; 0 if not said
  std::string name;                 // likewise
  bool from_camera = false;         // that extrinsics map from the camera to the reference
  bool folder = false;              // that there may be several files
  std::string frame;                // what that of reference is called; empty: rig
  // Rectification and projection of an earlier camera_info, by rows.
  std::vector<double> rectification, projection;
};

// A camera of a record. For messages, `place` and `intrinsics_place` are where it and its
// intrinsics are, such as "rig.json: camera[0]", or "rig.json:" for the record itself.
struct CameraInRecord {
  const zarvo::calibration::CameraCalibration* camera;
  std::string place, intrinsics_place;
};

struct ExportCamera {
  std::string place, intrinsics_place;
  zarvo::calibration::CameraCalibration camera;         // without its images
  const zarvo::calibration::CameraCalibration* record;  // as it was
  std::string name;                                     // or cam0, cam1, ... of one without
  const LensForm* form;                                 // nullptr where files hold no lens
  std::vector<double> coefficients;                     // in the form's order
  double cx, cy;                                        // in the file's pixels
  bool has_pose;
  RigidTransform pose;  // from the frame of reference to it; the identity if it has none

  const zarvo::calibration::CameraIntrinsics& intrinsics() const { return camera.intrinsics(); }
};

struct ExportRig {
  std::vector<ExportCamera> cameras;
  const Conventions* conventions;
  ExportOptions options;
  // What is exported, for a file that holds it beside its own messages; nullptr if it is not there.
  const google::protobuf::Message* record = nullptr;
};

struct ExportedFile {
  std::string name;  // in a folder
  std::string text;
};

// What the user should know of it: what is not kept, and what has been made of the rest.
struct ExportReport {
  std::vector<Leftover> leftovers;
  std::vector<std::string> notes;
};

// What a file holds, and how it is written.
struct Exporter {
  enum class Poses {
    kNone,      // the file has no place for them
    kOptional,  // it has one
    kNeeded,    // of all cameras but one on its own
    kApart      // they stand in a file of their own, if several may be written
  };

  std::string format;            // in the table of conventions
  std::vector<LensForm> lenses;  // none: nothing of intrinsics at all
  // The fields that it has a place for, beside the projection and k and p; "skew" is one of them.
  std::set<std::string> keeps;
  std::set<std::string> needs;  // width, height
  Poses poses = Poses::kNone;
  bool one_lens = false;        // all its cameras have the same kind of lens
  bool one_size = false;        // and images of the same size
  size_t least = 1, most = 0;   // cameras that are written together; 0: any number
  bool file_a_camera = false;   // else all are in one file, or in the files of a rig
  bool numbered = false;        // cameras are called cam0, cam1, ...
  bool holds_record = false;    // the file has the record itself, so that nothing is lost
  bool has_projection = false;  // there is a place for those of --projection-from
  std::vector<ExportedFile> (*write)(const ExportRig& rig, ExportReport* report);
};

// Throws Failure if files are not of that many cameras. `record` is what messages call that which
// has them.
void CheckCameraCount(const Exporter& exporter, const std::string& record, size_t cameras);

// Throws Failure if the record lacks what the file must have, has numbers that no camera can have,
// or extrinsics that are no rigid transform where the file wants one. Adds what is not kept, and
// what the user should know of the conversion.
ExportRig PrepareRig(const Exporter& exporter, const std::vector<CameraInRecord>& cameras,
                     const ExportOptions& options, ExportReport* report);

// Adds what became of the extrinsics.
void TellTransforms(const ExportRig& rig, const std::vector<ExportedFile>& files,
                    ExportReport* report);

// The name of a camera's file: what may not stand in one is replaced.
std::string CameraFileName(const ExportCamera& camera, const std::string& extension);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORT_RIG_H_
