// The payloads: the records that the operations work on.
//
//   A   a robot of 6 cameras with 200 sample points each, 28 KB
//   B   the same with an image of 640 x 480 octets for each camera
//   C   the calibration of a drive base
//   D   five required doubles
//   E   a pan-tilt-zoom system with 64 zoom samples
//   F   a focus set: 50 items with transfer functions of 256 floats, unpacked on the wire
//   Fp  the same, packed on the wire
//   G   A, with all fields of every message in the opposite order
//   H   a robot that is rich in unknown fields
//   I   one image record
//
// A to F are filled through setters, by templates that any class set instantiates: the same values
// in each. The others exist as bytes only. Every value depends on its place in the record alone.
#ifndef CALIBRATION_BENCHMARKS_PAYLOADS_H_
#define CALIBRATION_BENCHMARKS_PAYLOADS_H_

#include <cstdint>
#include <string>
#include <utility>

namespace zarvo {
namespace calibration {
namespace benchmarks {

constexpr int kImageWidth = 640;
constexpr int kImageHeight = 480;

// One image's octets.
const std::string& ImageOctets();

std::string PackedFocusSet();
std::string ReorderedRobot();
std::string RobotRichInUnknownFields();
std::string ImageRecord();

template <class Extrinsics>
void FillExtrinsics(int seed, Extrinsics* extrinsics) {
  for (int i = 0; i < 12; ++i) extrinsics->add_a(0.25 * i - 0.5 * seed);
}

template <class Intrinsics>
void FillRequiredDoubles(Intrinsics* intrinsics) {
  intrinsics->set_fx(458.654);
  intrinsics->set_fy(457.296);
  intrinsics->set_skew(0.0);
  intrinsics->set_cx(367.215);
  intrinsics->set_cy(248.375);
}

template <class Intrinsics>
void FillIntrinsics(int sample_points, Intrinsics* intrinsics) {
  FillRequiredDoubles(intrinsics);
  for (int i = 0; i < 4; ++i) intrinsics->add_k(0.01 * i - 0.28);
  for (int i = 0; i < 2; ++i) intrinsics->add_p(0.0001 * i);
  intrinsics->set_width(kImageWidth);
  intrinsics->set_height(kImageHeight);
  intrinsics->set_error_per_point(0.125);
  intrinsics->set_x_bin("none");
  intrinsics->set_offset_x(1.5f);
  intrinsics->set_offset_y(-1.5f);
  for (int i = 0; i < sample_points; ++i) {
    auto* point = intrinsics->add_sample_points();
    const int column = i % 20, row = i / 20;
    point->set_img_x(3.25f * static_cast<float>(column));
    point->set_img_y(2.75f * static_cast<float>(row));
    point->set_tgt_x(0.03f * static_cast<float>(column));
    point->set_tgt_y(0.03f * static_cast<float>(row));
  }
  intrinsics->set_tgt_z(1.25f);
  intrinsics->set_tgt_width(20);
  intrinsics->set_tgt_height(10);
}

template <class Image>
void FillImage(Image* image) {
  image->set_width(kImageWidth);
  image->set_height(kImageHeight);
  image->set_stride(kImageWidth);
  image->set_format("grey8");
  image->set_imgdata(std::string(ImageOctets()));
}

template <class Robot>
void FillRobot(bool with_images, Robot* robot) {
  static const char* const kNames[] = {"front-left", "front-right", "rear-left",
                                       "rear-right", "mast-top",    "arm"};
  for (int i = 0; i < 6; ++i) {
    auto* camera = robot->add_camera();
    FillIntrinsics(200, camera->mutable_intrinsics());
    if (with_images) FillImage(camera->mutable_intrinsics_image());
    FillExtrinsics(i, camera->mutable_extrinsics());
    camera->set_name(kNames[i]);
    camera->set_model("global shutter, monochrome, 6 mm lens");
    camera->set_serial("SN-0001-7734");
  }
}

template <class Metadata>
void FillMetadata(Metadata* metadata) {
  metadata->set_time(1403636579763555584);
  metadata->set_base_serial("base-17");
  metadata->set_audio_serial("audio-with-a-longer-serial-number-4");
  metadata->set_temperature(21.5f);
}

template <class Base>
void FillBase(Base* base) {
  base->set_wheel_base(0.41f);
  base->set_base_width(0.46f);
  base->set_base_length(0.71f);
  auto* adjustment = base->mutable_global_transform();
  FillExtrinsics(1, adjustment->mutable_params());
  FillMetadata(adjustment->mutable_metadata());
  auto* gyroscope = base->mutable_gyroscope_cal();
  gyroscope->set_gyroscope_gain(1.0625f);
  FillMetadata(gyroscope->mutable_metadata());
}

template <class PanTilt>
void FillPanTilt(int seed, PanTilt* mount) {
  FillExtrinsics(seed, mount->mutable_pan_ext());
  FillExtrinsics(seed + 1, mount->mutable_tilt_ext());
  FillExtrinsics(seed + 2, mount->mutable_device_ext());
  mount->set_rads_per_pan_unit(0.0009f);
  mount->set_rads_per_tilt_unit(0.0008f);
  mount->set_pan_offset(0.01f);
  mount->set_tilt_offset(-0.02f);
  mount->set_pan_min(-3000);
  mount->set_pan_max(3000);
  mount->set_tilt_min(-900);
  mount->set_tilt_max(600);
  mount->set_max_pan_speed(1200);
  mount->set_max_tilt_speed(800);
  mount->set_avg_model_error(0.25f);
  mount->set_max_model_error(0.75f);
}

template <class System>
void FillPtzSystem(System* system) {
  auto* intrinsics = system->mutable_ptz_camera()->mutable_intrinsics();
  intrinsics->set_zx(320.5);
  intrinsics->set_zy(240.5);
  intrinsics->set_width(kImageWidth);
  intrinsics->set_height(kImageHeight);
  for (int i = 0; i < 64; ++i) {
    auto* sample = intrinsics->add_samples();
    sample->set_zoom(100.0 * i);
    sample->set_fxy(600.0 + 40.0 * i);
    sample->set_cx(320.0 + 0.125 * i);
    sample->set_cy(240.0 - 0.125 * i);
    sample->set_k1(-0.25 + 0.001 * i);
    sample->set_k4(0.001 * i);
    sample->set_p1(0.0001 * i);
    sample->set_p2(-0.0001 * i);
    sample->set_error_per_point(0.25);
  }
  intrinsics->set_samples_zoom0(0);
  intrinsics->set_samples_zoom_step(100);
  intrinsics->set_zoom_min(0);
  intrinsics->set_zoom_max(6300);
  FillPanTilt(1, system->mutable_ptz_camera()->mutable_pan_tilt());
  FillPanTilt(4, system->mutable_laser());
  auto* camera = system->mutable_other_cameras()->add_camera();
  FillIntrinsics(8, camera->mutable_intrinsics());
  FillExtrinsics(7, camera->mutable_extrinsics());
  camera->set_name("overview");
}

template <class FocusSet>
void FillFocusSet(FocusSet* set) {
  for (int i = 0; i < 50; ++i) {
    auto* item = set->add_focus();
    item->set_target_id(i);
    item->set_cutoff_threshold(0.5f);
    item->set_cutoff_cycles_per_pix(0.25f);
    item->set_cutoff_cycles_per_mm(12.5f);
    item->set_pix_per_mm(50.0f);
    for (int j = 0; j < 256; ++j) {
      item->add_transfer_function(1.0f - static_cast<float>(i + j) / 512.0f);
    }
    item->set_valid_min(3);
    item->set_valid_max(250);
    item->set_target_code(1000 + i);
  }
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_PAYLOADS_H_
