// Writes what the robots of a fleet keep in half a year: for each a folder with four logs, the same
// bytes at every run. docs/fleet.md asks questions of them.
//
//   make_fleet FOLDER ROBOTS
//
//   FOLDER/0001/cameras.RobotCalibration.binpb.log               the first of each month
//   FOLDER/0001/cameras.RobotCalibration.binpb.log.times         when each was appended
//   FOLDER/0001/focus.FocusCheckSetProto.binpb.log, .times       the fifteenth of each month
//   FOLDER/0001/mount.CameraCalibrationAdjustmentProto.binpb.log whenever a camera was mounted
//   FOLDER/0001/base.BaseCalibrationProto.binpb.log              in January, and after repairs

#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <string>

#include "calibration_common/calibration.pb.h"
#include "calibration_common/record_log.h"

namespace {

using zarvo::calibration::BaseCalibrationProto;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraCalibrationAdjustmentProto;
using zarvo::calibration::FocusCheckProto;
using zarvo::calibration::FocusCheckSetProto;
using zarvo::calibration::RecordLogWriter;
using zarvo::calibration::RobotCalibration;

constexpr int kMonths = 6;
constexpr std::int64_t kFirstOfMonth[kMonths] = {1767225600, 1769904000, 1772323200,
                                                 1775001600, 1777593600, 1780272000};  // of 2026
constexpr std::int64_t kDay = 86400;

// Without the distributions of the standard library, which differ between its makers.
class Dice {
 public:
  explicit Dice(unsigned seed) : bits_(seed) {}

  // From -1 to 1.
  double Around() { return static_cast<double>(bits_()) / 2147483648.0 - 1; }
  bool OnceIn(unsigned times) { return bits_() % times == 0; }
  int Below(unsigned end) { return static_cast<int>(bits_() % end); }

 private:
  std::mt19937 bits_;
};

std::string Digits(const char* format, int number) {
  char text[32];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

// A log that is written from its beginning, with the times of appending beside it if it has any.
class Log {
 public:
  explicit Log(const std::string& path) : path_(path), file_(path, std::ios::binary) {}

  void Append(const google::protobuf::Message& record) {
    google::protobuf::io::OstreamOutputStream stream(&file_);
    good_ = RecordLogWriter(&stream).Write(record) == RecordLogWriter::Result::kWritten && good_;
    ++records_;
  }
  void Append(const google::protobuf::Message& record, int month, int day) {
    times_ += std::to_string(records_) + Digits(" 2026-%02d-", month + 1) +
              Digits("%02dT00:00:00Z\n", day);
    Append(record);
  }
  bool Close() {
    file_.flush();
    if (!times_.empty()) {
      std::ofstream times(path_ + ".times", std::ios::binary);
      good_ = times << times_ && times.flush() && good_;
    }
    return good_ && file_;
  }

 private:
  const std::string path_;
  std::ofstream file_;
  std::string times_;
  int records_ = 0;
  bool good_ = true;
};

// A robot's life, month by month.
class Robot {
 public:
  explicit Robot(int number) : number_(number), dice_(static_cast<unsigned>(number)) {
    static const char* const kNames[] = {"front", "left", "right"};
    for (int i = 0; i < 3; ++i) MakeCamera(kNames[i], i, cameras_.add_camera());
    for (const char* name : {"top left", "top right", "centre", "bottom left", "bottom right"}) {
      focus_.add_spots()->set_name(name);
    }
    // A belt that wears makes the base another one; most bases have the declared dimensions.
    if (dice_.OnceIn(4)) base_.set_wheel_base(0.4064f + 0.002f * Around());
    drifting_ = dice_.OnceIn(40) ? dice_.Below(3) : -1;
  }

  bool Write(const std::string& folder) {
    Log cameras(folder + "/cameras.RobotCalibration.binpb.log");
    Log focus(folder + "/focus.FocusCheckSetProto.binpb.log");
    Log mount(folder + "/mount.CameraCalibrationAdjustmentProto.binpb.log");
    Log base(folder + "/base.BaseCalibrationProto.binpb.log");
    for (int month = 0; month < kMonths; ++month) {
      if (month == 0 || dice_.OnceIn(12)) mount.Append(Mounted(kFirstOfMonth[month] + 9 * kDay));
      if (month == 0 || dice_.OnceIn(20)) base.Append(Measured(kFirstOfMonth[month] + 11 * kDay));
      Calibrate();
      cameras.Append(cameras_, month, 1);
      CheckFocus();
      focus.Append(focus_, month, 15);
    }
    return cameras.Close() && focus.Close() && mount.Close() && base.Close();
  }

 private:
  float Around() { return static_cast<float>(dice_.Around()); }

  void MakeCamera(const char* name, int index, CameraCalibration* camera) {
    camera->set_name(name);
    camera->set_model(index == 0 ? "wide" : "side");
    if (!dice_.OnceIn(150)) camera->set_serial(Digits("C-%05d", 3 * number_ + index));
    auto* intrinsics = camera->mutable_intrinsics();
    intrinsics->set_fx((index == 0 ? 460 : 610) + 3 * dice_.Around());
    intrinsics->set_fy(intrinsics->fx() + 0.5 * dice_.Around());
    intrinsics->set_skew(0);
    intrinsics->set_cx(376 + 8 * dice_.Around());
    intrinsics->set_cy(240 + 8 * dice_.Around());
    intrinsics->set_width(752);
    intrinsics->set_height(480);
    intrinsics->add_k(-0.283 + 0.002 * dice_.Around());
    intrinsics->add_k(0.074 + 0.001 * dice_.Around());
    intrinsics->add_p(0.0002 * dice_.Around());
    intrinsics->add_p(0.0002 * dice_.Around());
    for (const double number : {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}) {
      camera->mutable_extrinsics()->add_a(number);
    }
    camera->mutable_extrinsics()->set_a(3, 0.11 * (index - 1) + 0.001 * dice_.Around());
  }

  // What the month has made of the cameras.
  void Calibrate() {
    for (int i = 0; i < cameras_.camera_size(); ++i) {
      auto* intrinsics = cameras_.mutable_camera(i)->mutable_intrinsics();
      const double drift = 0.05 * dice_.Around() + (i == drifting_ ? 0.6 : 0);
      intrinsics->set_fx(intrinsics->fx() + drift);
      intrinsics->set_fy(intrinsics->fy() + drift);
      intrinsics->set_error_per_point((i == 0 ? 0.21 : 0.16) + 0.03 * dice_.Around());
    }
  }

  // A lens that has come loose fails the check of one spot until the camera is mounted anew.
  void CheckFocus() {
    if (loose_spot_ < 0 && dice_.OnceIn(80)) loose_spot_ = dice_.Below(5);
    for (int i = 0; i < focus_.spots_size(); ++i) {
      FocusCheckProto* spot = focus_.mutable_spots(i);
      spot->set_cutoff(0.25f);
      spot->set_value_at_cutoff((i == loose_spot_ ? 0.12f : 0.31f) + 0.04f * Around());
      spot->set_ok(i != loose_spot_);
    }
  }

  const CameraCalibrationAdjustmentProto& Mounted(std::int64_t time) {
    loose_spot_ = -1;
    mounted_.mutable_metadata()->set_time(time);
    mounted_.mutable_metadata()->set_base_serial(Digits("B-%04d", number_));
    return mounted_;
  }

  const BaseCalibrationProto& Measured(std::int64_t time) {
    if (base_.has_global_transform()) base_.set_wheel_base(0.4064f + 0.002f * Around());
    auto* metadata = base_.mutable_global_transform()->mutable_metadata();
    metadata->set_time(time);
    metadata->set_base_serial(Digits("B-%04d", number_));
    metadata->set_temperature(21 + 4 * Around());
    return base_;
  }

  const int number_;
  Dice dice_;
  RobotCalibration cameras_;
  FocusCheckSetProto focus_;
  CameraCalibrationAdjustmentProto mounted_;
  BaseCalibrationProto base_;
  int drifting_ = -1, loose_spot_ = -1;
};

}  // namespace

int main(int argc, char** argv) {
  const int robots = argc == 3 ? std::atoi(argv[2]) : 0;
  if (robots <= 0) {
    std::cerr << "usage: make_fleet FOLDER ROBOTS\n";
    return 2;
  }
  const std::string fleet = argv[1];
  mkdir(fleet.c_str(), 0777);
  for (int number = 1; number <= robots; ++number) {
    const std::string folder = fleet + Digits("/%04d", number);
    mkdir(folder.c_str(), 0777);
    if (!Robot(number).Write(folder)) {
      std::cerr << "make_fleet: " << folder << ": cannot be written\n";
      return 1;
    }
  }
  std::cout << robots << " robots in " << fleet << "\n";
}
