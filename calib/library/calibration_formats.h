// Cameras in the files of other tools, read into records and written from them, for programs: what
// the commands `calib import` and `calib export` do, of texts in memory.
//
//   zarvo::calibration::RobotCalibration robot;
//   const Outcome outcome = ReadText("", text, &robot);  // the format is told by the content
//   if (outcome.status != Status::kOk) std::cerr << outcome.error << "\n";
//
// Functions keep no state, read no files, print nothing, throw nothing, and may be called by
// several threads at once. What they change in the terms of one tool's convention or another's, and
// what they do not keep, they tell; docs/calib-import.md and docs/calib-export.md say what goes
// where, docs/conventions.md what the numbers then mean.
//
// It is a shared library of its own: calibration_protolib::formats of the CMake package,
// calibration_formats of pkg-config.
#ifndef ZARVO_CALIBRATION_FORMATS_H_
#define ZARVO_CALIBRATION_FORMATS_H_

#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"

// What the shared library exports.
#pragma GCC visibility push(default)

namespace zarvo {
namespace calibration_formats {

struct File {
  std::string name;  // of one that is read, what errors and notes call it
  std::string text;  // its bytes, of one that is no text
};

enum class Status {
  kOk,
  kRefused,  // Outcome::error says what is wrong, and where
  kNoMemory
};

struct Note {
  enum class Kind {
    kNotKept,    // what has no place in the record or the file
    kConverted,  // kept, in the terms of another convention
    kLost,       // not kept of a lens: points land elsewhere
    kRemark      // what has been made of the rest
  };
  Kind kind;
  std::string text;  // with its place ahead, such as "camchain.yaml:6:15: cam0.rostopic: ..."
};

struct Outcome {
  Status status = Status::kNoMemory;
  std::string error;   // empty unless status is kRefused
  std::string format;  // that was read or written
  std::vector<Note> notes;
};

// --- Reading -------------------------------------------------------------------------------------

struct ReadOptions {
  std::string format;  // of ReadableFormats(); empty: by the content
  // What the coefficients mean where a file does not tell, such as "plumb_bob" or "equidistant";
  // empty: by their number.
  std::string lens;
  bool lossy = false;  // take what a record can hold of a lens that it cannot, and tell
};

// "ros", "kalibr", ...: what `calib import --from` takes.
std::vector<std::string> ReadableFormats() noexcept;

// The cameras of one file (of OpenCV's stereo calibration and of camodocal, of several). `robot` is
// what they are, or, unless the outcome is kOk, what it was.
Outcome Read(const std::vector<File>& files, const ReadOptions& options,
             calibration::RobotCalibration* robot) noexcept;

// The same of one text. The format may be empty.
Outcome ReadText(const char* format, const std::string& text,
                 calibration::RobotCalibration* robot) noexcept;

inline Outcome ReadRos(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("ros", text, robot);
}
inline Outcome ReadKalibr(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("kalibr", text, robot);
}
inline Outcome ReadOpenCv(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("opencv", text, robot);
}
inline Outcome ReadEuroc(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("euroc", text, robot);
}
inline Outcome ReadMrcal(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("mrcal", text, robot);
}
inline Outcome ReadBasalt(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("basalt", text, robot);
}
inline Outcome ReadColmap(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("colmap", text, robot);
}
inline Outcome ReadCamodocal(const std::string& text,
                             calibration::RobotCalibration* robot) noexcept {
  return ReadText("camodocal", text, robot);
}
inline Outcome ReadDepthAi(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("depthai", text, robot);
}
inline Outcome ReadOrbSlam(const std::string& text, calibration::RobotCalibration* robot) noexcept {
  return ReadText("orbslam3", text, robot);
}
inline Outcome ReadNerfstudio(const std::string& text,
                              calibration::RobotCalibration* robot) noexcept {
  return ReadText("nerfstudio", text, robot);
}
inline Outcome ReadMcap(const std::string& bytes, calibration::RobotCalibration* robot) noexcept {
  return ReadText("mcap", bytes, robot);
}

// --- Writing -------------------------------------------------------------------------------------

struct WriteOptions {
  std::string lens;           // what k and p mean, as in ReadOptions; empty: by their numbers
  bool lossy = false;         // write what the file can hold of a lens that it cannot, and tell
  bool from_camera = false;   // that extrinsics map from the camera to the frame of reference
  int width = 0, height = 0;  // in pixels, where the record has none; 0: not said
  std::string name;           // of the camera, where it has none and is the only one
  std::string frame;  // of "tf" and "urdf": what the frame of reference is called; empty: rig
  // Of "ros" and "mcap", and of a single camera: R, 3x4 P behind it, by rows; empty: those of a
  // camera alone.
  std::vector<double> rectification, projection;
};

// "ros", "kalibr", ...: what `calib export --to` takes.
std::vector<std::string> WritableFormats() noexcept;

// All files of the record's cameras, named as they would be in a folder. `files` is what they are,
// or, unless the outcome is kOk, what it was.
Outcome Write(const calibration::RobotCalibration& robot, const std::string& format,
              const WriteOptions& options, std::vector<File>* files) noexcept;

// The text of the only file; refused if there would be several.
Outcome WriteText(const char* format, const calibration::RobotCalibration& robot,
                  const WriteOptions& options, std::string* text) noexcept;

// ROS camera_info of one camera.
Outcome WriteCameraInfo(const calibration::CameraCalibration& camera, const WriteOptions& options,
                        std::string* text) noexcept;

}  // namespace calibration_formats
}  // namespace zarvo

#pragma GCC visibility pop

#endif  // ZARVO_CALIBRATION_FORMATS_H_
