// The payloads' values, taken from this library's records of them, so that these are the payloads
// of the other tables.
#include "benchmarks/peers/values.h"

#include "benchmarks/payloads.h"
#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

Extrinsics From(const CameraExtrinsics& record) { return {{record.a().begin(), record.a().end()}}; }

Intrinsics From(const CameraIntrinsics& record) {
  Intrinsics values;
  values.fx = record.fx();
  values.fy = record.fy();
  values.skew = record.skew();
  values.cx = record.cx();
  values.cy = record.cy();
  values.k.assign(record.k().begin(), record.k().end());
  values.p.assign(record.p().begin(), record.p().end());
  values.width = record.width();
  values.height = record.height();
  values.error_per_point = record.error_per_point();
  values.x_bin = record.x_bin();
  values.offset_x = record.offset_x();
  values.offset_y = record.offset_y();
  for (const CameraIntrinsicsSamplePoints& point : record.sample_points()) {
    values.sample_points.push_back({point.img_x(), point.img_y(), point.tgt_x(), point.tgt_y()});
  }
  values.tgt_z = record.tgt_z();
  values.tgt_width = record.tgt_width();
  values.tgt_height = record.tgt_height();
  return values;
}

Robot From(const RobotCalibration& record) {
  Robot values;
  for (const CameraCalibration& camera : record.camera()) {
    values.camera.push_back({From(camera.intrinsics()), From(camera.extrinsics()), camera.name(),
                             camera.model(), camera.serial()});
  }
  return values;
}

Metadata From(const CalibrationMetadataProto& record) {
  return {record.time(), record.base_serial(), record.audio_serial(), record.temperature()};
}

PanTilt From(const PanTiltSystemParameters& record) {
  return {From(record.pan_ext()),
          From(record.tilt_ext()),
          From(record.device_ext()),
          record.rads_per_pan_unit(),
          record.rads_per_tilt_unit(),
          record.pan_offset(),
          record.tilt_offset(),
          record.pan_min(),
          record.pan_max(),
          record.tilt_min(),
          record.tilt_max(),
          record.max_pan_speed(),
          record.max_tilt_speed(),
          record.avg_model_error(),
          record.max_model_error()};
}

PtzIntrinsics From(const PTZIntrinsics& record) {
  PtzIntrinsics values;
  values.zx = record.zx();
  values.zy = record.zy();
  values.width = record.width();
  values.height = record.height();
  for (const PTZIntrinsicsItem& item : record.samples()) {
    // FlatBuffers does not keep the sign of a zero, and one of these is -0.
    values.samples.push_back({item.zoom(), item.fxy(), item.cx(), item.cy(), item.k1(), item.k4(),
                              item.p1(), item.p2() + 0.0, item.error_per_point()});
  }
  values.samples_zoom0 = record.samples_zoom0();
  values.samples_zoom_step = record.samples_zoom_step();
  values.zoom_min = record.zoom_min();
  values.zoom_max = record.zoom_max();
  return values;
}

}  // namespace

const Robot& PayloadA() {
  static const Robot values = [] {
    RobotCalibration record;
    FillRobot(false, &record);
    return From(record);
  }();
  return values;
}

const Base& PayloadC() {
  static const Base values = [] {
    BaseCalibrationProto record;
    FillBase(&record);
    return Base{
        record.wheel_base(),
        record.base_width(),
        record.base_length(),
        {From(record.global_transform().params()), From(record.global_transform().metadata())},
        {record.gyroscope_cal().gyroscope_gain(), From(record.gyroscope_cal().metadata())}};
  }();
  return values;
}

const PtzSystem& PayloadE() {
  static const PtzSystem values = [] {
    PTZSystemCalibration record;
    FillPtzSystem(&record);
    return PtzSystem{{From(record.ptz_camera().intrinsics()), From(record.ptz_camera().pan_tilt())},
                     From(record.laser()),
                     From(record.other_cameras())};
  }();
  return values;
}

const Image& PayloadI() {
  static const Image values = [] {
    CalibrationImage record;
    FillImage(&record);
    return Image{
        record.width(), record.height(), record.stride(), record.format(), {record.imgdata()}};
  }();
  return values;
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
