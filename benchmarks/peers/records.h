// Message classes as a peer: this library's, and those that a schema compiler makes.
//
// A class set is a struct with a function Class() for each payload, which returns that payload's
// record. Writing sizes the record and writes it with the sizes that are cached then.
#ifndef CALIBRATION_BENCHMARKS_PEERS_RECORDS_H_
#define CALIBRATION_BENCHMARKS_PEERS_RECORDS_H_

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "benchmarks/operations.h"
#include "benchmarks/peers/values.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {

// --- From a program's own values ---

template <class Record>
void Build(const Extrinsics& values, Record* record) {
  record->mutable_a()->Reserve(static_cast<int>(values.a.size()));
  for (const double number : values.a) record->add_a(number);
}

template <class Record>
void Build(const Intrinsics& values, Record* record) {
  record->set_fx(values.fx);
  record->set_fy(values.fy);
  record->set_skew(values.skew);
  record->set_cx(values.cx);
  record->set_cy(values.cy);
  record->mutable_k()->Reserve(static_cast<int>(values.k.size()));
  for (const double number : values.k) record->add_k(number);
  record->mutable_p()->Reserve(static_cast<int>(values.p.size()));
  for (const double number : values.p) record->add_p(number);
  record->set_width(values.width);
  record->set_height(values.height);
  record->set_error_per_point(values.error_per_point);
  record->set_x_bin(values.x_bin);
  record->set_offset_x(values.offset_x);
  record->set_offset_y(values.offset_y);
  record->mutable_sample_points()->Reserve(static_cast<int>(values.sample_points.size()));
  for (const SamplePoint& point : values.sample_points) {
    auto* element = record->add_sample_points();
    element->set_img_x(point.img_x);
    element->set_img_y(point.img_y);
    element->set_tgt_x(point.tgt_x);
    element->set_tgt_y(point.tgt_y);
  }
  record->set_tgt_z(values.tgt_z);
  record->set_tgt_width(values.tgt_width);
  record->set_tgt_height(values.tgt_height);
}

template <class Record>
void Build(const Image& values, Record* record) {
  record->set_width(values.width);
  record->set_height(values.height);
  record->set_stride(values.stride);
  record->set_format(values.format);
  record->set_imgdata(values.imgdata.data);
}

template <class Record>
void Build(const Robot& values, Record* record) {
  record->mutable_camera()->Reserve(static_cast<int>(values.camera.size()));
  for (const Camera& camera : values.camera) {
    auto* element = record->add_camera();
    Build(camera.intrinsics, element->mutable_intrinsics());
    Build(camera.extrinsics, element->mutable_extrinsics());
    element->set_name(camera.name);
    if (!camera.model.empty()) element->set_model(camera.model);
    if (!camera.serial.empty()) element->set_serial(camera.serial);
  }
}

template <class Record>
void Build(const Metadata& values, Record* record) {
  record->set_time(values.time);
  record->set_base_serial(values.base_serial);
  record->set_audio_serial(values.audio_serial);
  record->set_temperature(values.temperature);
}

template <class Record>
void Build(const Base& values, Record* record) {
  record->set_wheel_base(values.wheel_base);
  record->set_base_width(values.base_width);
  record->set_base_length(values.base_length);
  Build(values.global_transform.params, record->mutable_global_transform()->mutable_params());
  Build(values.global_transform.metadata, record->mutable_global_transform()->mutable_metadata());
  record->mutable_gyroscope_cal()->set_gyroscope_gain(values.gyroscope_cal.gyroscope_gain);
  Build(values.gyroscope_cal.metadata, record->mutable_gyroscope_cal()->mutable_metadata());
}

template <class Record>
void Build(const PtzIntrinsics& values, Record* record) {
  record->set_zx(values.zx);
  record->set_zy(values.zy);
  record->set_width(values.width);
  record->set_height(values.height);
  record->mutable_samples()->Reserve(static_cast<int>(values.samples.size()));
  for (const ZoomSample& sample : values.samples) {
    auto* element = record->add_samples();
    element->set_zoom(sample.zoom);
    element->set_fxy(sample.fxy);
    element->set_cx(sample.cx);
    element->set_cy(sample.cy);
    element->set_k1(sample.k1);
    element->set_k4(sample.k4);
    element->set_p1(sample.p1);
    element->set_p2(sample.p2);
    element->set_error_per_point(sample.error_per_point);
  }
  record->set_samples_zoom0(values.samples_zoom0);
  record->set_samples_zoom_step(values.samples_zoom_step);
  record->set_zoom_min(values.zoom_min);
  record->set_zoom_max(values.zoom_max);
}

template <class Record>
void Build(const PanTilt& values, Record* record) {
  Build(values.pan_ext, record->mutable_pan_ext());
  Build(values.tilt_ext, record->mutable_tilt_ext());
  Build(values.device_ext, record->mutable_device_ext());
  record->set_rads_per_pan_unit(values.rads_per_pan_unit);
  record->set_rads_per_tilt_unit(values.rads_per_tilt_unit);
  record->set_pan_offset(values.pan_offset);
  record->set_tilt_offset(values.tilt_offset);
  record->set_pan_min(values.pan_min);
  record->set_pan_max(values.pan_max);
  record->set_tilt_min(values.tilt_min);
  record->set_tilt_max(values.tilt_max);
  record->set_max_pan_speed(values.max_pan_speed);
  record->set_max_tilt_speed(values.max_tilt_speed);
  record->set_avg_model_error(values.avg_model_error);
  record->set_max_model_error(values.max_model_error);
}

template <class Record>
void Build(const PtzSystem& values, Record* record) {
  Build(values.ptz_camera.intrinsics, record->mutable_ptz_camera()->mutable_intrinsics());
  Build(values.ptz_camera.pan_tilt, record->mutable_ptz_camera()->mutable_pan_tilt());
  Build(values.laser, record->mutable_laser());
  Build(values.other_cameras, record->mutable_other_cameras());
}

// --- To a sink; the last argument only says which structure the record stands for ---

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const Extrinsics*) {
  for (const double number : record.a()) sink->Number(number);
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const Intrinsics*) {
  sink->Number(record.fx());
  sink->Number(record.fy());
  sink->Number(record.skew());
  sink->Number(record.cx());
  sink->Number(record.cy());
  for (const double number : record.k()) sink->Number(number);
  for (const double number : record.p()) sink->Number(number);
  sink->Number(record.width());
  sink->Number(record.height());
  sink->Number(record.error_per_point());
  sink->Text(record.x_bin());
  sink->Number(record.offset_x());
  sink->Number(record.offset_y());
  for (const auto& point : record.sample_points()) {
    sink->Number(point.img_x());
    sink->Number(point.img_y());
    sink->Number(point.tgt_x());
    sink->Number(point.tgt_y());
  }
  sink->Number(record.tgt_z());
  sink->Number(record.tgt_width());
  sink->Number(record.tgt_height());
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const Image*) {
  sink->Number(record.width());
  sink->Number(record.height());
  sink->Number(record.stride());
  sink->Text(record.format());
  sink->Octets(record.imgdata());
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const Robot*) {
  const Intrinsics* intrinsics = nullptr;
  const Extrinsics* extrinsics = nullptr;
  for (const auto& camera : record.camera()) {
    Hand(camera.intrinsics(), sink, intrinsics);
    Hand(camera.extrinsics(), sink, extrinsics);
    sink->Text(camera.name());
    sink->Text(camera.model());
    sink->Text(camera.serial());
  }
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const Metadata*) {
  sink->Number(static_cast<int64_t>(record.time()));
  sink->Text(record.base_serial());
  sink->Text(record.audio_serial());
  sink->Number(record.temperature());
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const Base*) {
  const Extrinsics* extrinsics = nullptr;
  const Metadata* metadata = nullptr;
  sink->Number(record.wheel_base());
  sink->Number(record.base_width());
  Hand(record.global_transform().params(), sink, extrinsics);
  Hand(record.global_transform().metadata(), sink, metadata);
  sink->Number(record.gyroscope_cal().gyroscope_gain());
  Hand(record.gyroscope_cal().metadata(), sink, metadata);
  sink->Number(record.base_length());
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const PtzIntrinsics*) {
  sink->Number(record.zx());
  sink->Number(record.zy());
  sink->Number(record.width());
  sink->Number(record.height());
  for (const auto& sample : record.samples()) {
    sink->Number(sample.zoom());
    sink->Number(sample.fxy());
    sink->Number(sample.cx());
    sink->Number(sample.cy());
    sink->Number(sample.k1());
    sink->Number(sample.k4());
    sink->Number(sample.p1());
    sink->Number(sample.p2());
    sink->Number(sample.error_per_point());
  }
  sink->Number(record.samples_zoom0());
  sink->Number(record.samples_zoom_step());
  sink->Number(record.zoom_min());
  sink->Number(record.zoom_max());
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const PanTilt*) {
  const Extrinsics* extrinsics = nullptr;
  Hand(record.pan_ext(), sink, extrinsics);
  Hand(record.tilt_ext(), sink, extrinsics);
  Hand(record.device_ext(), sink, extrinsics);
  sink->Number(record.rads_per_pan_unit());
  sink->Number(record.rads_per_tilt_unit());
  sink->Number(record.pan_offset());
  sink->Number(record.tilt_offset());
  sink->Number(record.pan_min());
  sink->Number(record.pan_max());
  sink->Number(record.tilt_min());
  sink->Number(record.tilt_max());
  sink->Number(record.max_pan_speed());
  sink->Number(record.max_tilt_speed());
  sink->Number(record.avg_model_error());
  sink->Number(record.max_model_error());
}

template <class Record, class Sink>
void Hand(const Record& record, Sink* sink, const PtzSystem*) {
  const PtzIntrinsics* intrinsics = nullptr;
  const PanTilt* mount = nullptr;
  const Robot* cameras = nullptr;
  Hand(record.ptz_camera().intrinsics(), sink, intrinsics);
  Hand(record.ptz_camera().pan_tilt(), sink, mount);
  Hand(record.laser(), sink, mount);
  Hand(record.other_cameras(), sink, cameras);
}

// --- The one number ---

template <class Record>
double OneOf(const Record& record, const Robot*) {
  return record.camera(3).intrinsics().fx();
}
template <class Record>
double OneOf(const Record& record, const Base*) {
  return record.gyroscope_cal().metadata().temperature();
}
template <class Record>
double OneOf(const Record& record, const PtzSystem*) {
  return record.ptz_camera().intrinsics().samples(32).fxy();
}
template <class Record>
double OneOf(const Record& record, const Image*) {
  return record.height();
}

template <class ClassSet, class R>
class RecordStore {
 public:
  void Write(const R& values) {
    record_.Clear();
    Build(values, &record_);
    WriteSized();
  }
  std::string_view Written() const { return written_; }

  void Load(std::string_view bytes) {
    Require(record_.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())));
  }

  template <class Sink>
  void Read(std::string_view bytes, Sink* sink) {
    Load(bytes);
    Hand(record_, sink, kValues);
  }

  double ReadOne(std::string_view bytes) {
    Load(bytes);
    return OneOf(record_, kValues);
  }

  void WriteSized() {
    written_.resize(static_cast<size_t>(EncodedSize(record_, 0)));
    WriteCached();
  }
  void WriteCached() {
    Keep(record_.SerializeWithCachedSizesToArray(reinterpret_cast<uint8_t*>(&written_[0])));
  }

 private:
  static constexpr const R* kValues = nullptr;

  decltype(ClassSet::Class(kValues)) record_;
  std::string written_;
};

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_PEERS_RECORDS_H_
