// A program's own values: the content of the payloads A, C, E and I in plain structures, from which
// every peer writes and into which those peers read that have no classes of their own.
//
// Names are those of the schema. Two fields that no payload sets (bin_center, bin_size) are left
// out. Fields() of a structure names its members, in the order of their field numbers.
#ifndef CALIBRATION_BENCHMARKS_PEERS_VALUES_H_
#define CALIBRATION_BENCHMARKS_PEERS_VALUES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace zarvo {
namespace calibration {
namespace benchmarks {

struct SamplePoint {
  float img_x = 0, img_y = 0, tgt_x = 0, tgt_y = 0;
};

// Octets that are no text.
struct Octets {
  std::string data;
};

struct Intrinsics {
  double fx = 0, fy = 0, skew = 0, cx = 0, cy = 0;
  std::vector<double> k, p;
  int32_t width = 0, height = 0;
  double error_per_point = 0;
  std::string x_bin;
  float offset_x = 0, offset_y = 0;
  std::vector<SamplePoint> sample_points;
  float tgt_z = 0;
  int32_t tgt_width = 0, tgt_height = 0;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("fx", self.fx);
    visit("fy", self.fy);
    visit("skew", self.skew);
    visit("cx", self.cx);
    visit("cy", self.cy);
    visit("k", self.k);
    visit("p", self.p);
    visit("width", self.width);
    visit("height", self.height);
    visit("error_per_point", self.error_per_point);
    visit("x_bin", self.x_bin);
    visit("offset_x", self.offset_x);
    visit("offset_y", self.offset_y);
    visit("sample_points", self.sample_points);
    visit("tgt_z", self.tgt_z);
    visit("tgt_width", self.tgt_width);
    visit("tgt_height", self.tgt_height);
  }
};

struct Image {
  int32_t width = 0, height = 0, stride = 0;
  std::string format;
  Octets imgdata;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("width", self.width);
    visit("height", self.height);
    visit("stride", self.stride);
    visit("format", self.format);
    visit("imgdata", self.imgdata);
  }
};

struct Extrinsics {
  std::vector<double> a;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("a", self.a);
  }
};

struct Camera {
  Intrinsics intrinsics;
  Extrinsics extrinsics;
  std::string name, model, serial;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("intrinsics", self.intrinsics);
    visit("extrinsics", self.extrinsics);
    visit("name", self.name);
    visit("model", self.model);
    visit("serial", self.serial);
  }
};

struct Robot {
  std::vector<Camera> camera;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("camera", self.camera);
  }
};

struct Metadata {
  int64_t time = 0;
  std::string base_serial, audio_serial;
  float temperature = 0;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("time", self.time);
    visit("base_serial", self.base_serial);
    visit("audio_serial", self.audio_serial);
    visit("temperature", self.temperature);
  }
};

struct Adjustment {
  Extrinsics params;
  Metadata metadata;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("params", self.params);
    visit("metadata", self.metadata);
  }
};

struct Gyroscope {
  float gyroscope_gain = 0;
  Metadata metadata;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("gyroscope_gain", self.gyroscope_gain);
    visit("metadata", self.metadata);
  }
};

struct Base {
  float wheel_base = 0, base_width = 0, base_length = 0;
  Adjustment global_transform;
  Gyroscope gyroscope_cal;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("wheel_base", self.wheel_base);
    visit("base_width", self.base_width);
    visit("global_transform", self.global_transform);
    visit("gyroscope_cal", self.gyroscope_cal);
    visit("base_length", self.base_length);
  }
};

struct ZoomSample {
  double zoom = 0, fxy = 0, cx = 0, cy = 0, k1 = 0, k4 = 0, p1 = 0, p2 = 0, error_per_point = 0;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("zoom", self.zoom);
    visit("fxy", self.fxy);
    visit("cx", self.cx);
    visit("cy", self.cy);
    visit("k1", self.k1);
    visit("k4", self.k4);
    visit("p1", self.p1);
    visit("p2", self.p2);
    visit("error_per_point", self.error_per_point);
  }
};

struct PtzIntrinsics {
  double zx = 0, zy = 0;
  int32_t width = 0, height = 0;
  std::vector<ZoomSample> samples;
  int32_t samples_zoom0 = 0, samples_zoom_step = 0, zoom_min = 0, zoom_max = 0;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("zx", self.zx);
    visit("zy", self.zy);
    visit("width", self.width);
    visit("height", self.height);
    visit("samples", self.samples);
    visit("samples_zoom0", self.samples_zoom0);
    visit("samples_zoom_step", self.samples_zoom_step);
    visit("zoom_min", self.zoom_min);
    visit("zoom_max", self.zoom_max);
  }
};

struct PanTilt {
  Extrinsics pan_ext, tilt_ext, device_ext;
  float rads_per_pan_unit = 0, rads_per_tilt_unit = 0, pan_offset = 0, tilt_offset = 0;
  int32_t pan_min = 0, pan_max = 0, tilt_min = 0, tilt_max = 0;
  int32_t max_pan_speed = 0, max_tilt_speed = 0;
  float avg_model_error = 0, max_model_error = 0;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("pan_ext", self.pan_ext);
    visit("tilt_ext", self.tilt_ext);
    visit("device_ext", self.device_ext);
    visit("rads_per_pan_unit", self.rads_per_pan_unit);
    visit("rads_per_tilt_unit", self.rads_per_tilt_unit);
    visit("pan_offset", self.pan_offset);
    visit("tilt_offset", self.tilt_offset);
    visit("pan_min", self.pan_min);
    visit("pan_max", self.pan_max);
    visit("tilt_min", self.tilt_min);
    visit("tilt_max", self.tilt_max);
    visit("max_pan_speed", self.max_pan_speed);
    visit("max_tilt_speed", self.max_tilt_speed);
    visit("avg_model_error", self.avg_model_error);
    visit("max_model_error", self.max_model_error);
  }
};

struct PtzCamera {
  PtzIntrinsics intrinsics;
  PanTilt pan_tilt;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("intrinsics", self.intrinsics);
    visit("pan_tilt", self.pan_tilt);
  }
};

struct PtzSystem {
  PtzCamera ptz_camera;
  PanTilt laser;
  Robot other_cameras;

  template <class Self, class Visit>
  static void Fields(Self& self, Visit&& visit) {
    visit("ptz_camera", self.ptz_camera);
    visit("laser", self.laser);
    visit("other_cameras", self.other_cameras);
  }
};

// The payloads' own values.
const Robot& PayloadA();
const Base& PayloadC();
const PtzSystem& PayloadE();
const Image& PayloadI();

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_PEERS_VALUES_H_
