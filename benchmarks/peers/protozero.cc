// Protozero: encoder and decoder written by hand for this schema, into and out of a program's own
// structures. As its manual advises, fields are told apart by one switch over number and wire type,
// and a message whose size is known is written without moving it. What is written is the encoding
// of this library's records.
#include <protozero/pbf_reader.hpp>
#include <protozero/pbf_writer.hpp>

#include "benchmarks/peers/peer_cells.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

using ::protozero::pbf_reader;
using ::protozero::pbf_writer;
using ::protozero::tag_and_type;

constexpr auto kVarint = ::protozero::pbf_wire_type::varint;
constexpr auto kFixed64 = ::protozero::pbf_wire_type::fixed64;
constexpr auto kFixed32 = ::protozero::pbf_wire_type::fixed32;
constexpr auto kLength = ::protozero::pbf_wire_type::length_delimited;

// --- Writing ---

// A sub-message.
template <class T>
void Add(::protozero::pbf_tag_type tag, const T& values, pbf_writer* parent);

void Build(const Extrinsics& values, pbf_writer* record) {
  for (const double number : values.a) record->add_double(1, number);
}

void Build(const Intrinsics& values, pbf_writer* record) {
  record->add_double(1, values.fx);
  record->add_double(2, values.fy);
  record->add_double(3, values.skew);
  record->add_double(4, values.cx);
  record->add_double(5, values.cy);
  for (const double number : values.k) record->add_double(6, number);
  for (const double number : values.p) record->add_double(7, number);
  record->add_int32(8, values.width);
  record->add_int32(9, values.height);
  record->add_double(10, values.error_per_point);
  record->add_string(11, values.x_bin);
  record->add_float(12, values.offset_x);
  record->add_float(13, values.offset_y);
  for (const SamplePoint& point : values.sample_points) {
    pbf_writer element(*record, 16, 4 * (1 + sizeof(float)));
    element.add_float(1, point.img_x);
    element.add_float(2, point.img_y);
    element.add_float(3, point.tgt_x);
    element.add_float(4, point.tgt_y);
  }
  record->add_float(17, values.tgt_z);
  record->add_int32(18, values.tgt_width);
  record->add_int32(19, values.tgt_height);
}

void Build(const Image& values, pbf_writer* record) {
  record->add_int32(1, values.width);
  record->add_int32(2, values.height);
  record->add_int32(3, values.stride);
  record->add_string(4, values.format);
  record->add_bytes(5, values.imgdata.data);
}

void Build(const Camera& values, pbf_writer* record) {
  Add(1, values.intrinsics, record);
  Add(3, values.extrinsics, record);
  record->add_string(5, values.name);
  if (!values.model.empty()) record->add_string(6, values.model);
  if (!values.serial.empty()) record->add_string(7, values.serial);
}

void Build(const Robot& values, pbf_writer* record) {
  for (const Camera& camera : values.camera) Add(1, camera, record);
}

void Build(const Metadata& values, pbf_writer* record) {
  record->add_int64(1, values.time);
  record->add_string(2, values.base_serial);
  record->add_string(3, values.audio_serial);
  record->add_float(4, values.temperature);
}

void Build(const Adjustment& values, pbf_writer* record) {
  Add(1, values.params, record);
  Add(2, values.metadata, record);
}

void Build(const Gyroscope& values, pbf_writer* record) {
  record->add_float(1, values.gyroscope_gain);
  Add(2, values.metadata, record);
}

void Build(const Base& values, pbf_writer* record) {
  record->add_float(1, values.wheel_base);
  record->add_float(2, values.base_width);
  Add(3, values.global_transform, record);
  Add(4, values.gyroscope_cal, record);
  record->add_float(5, values.base_length);
}

void Build(const ZoomSample& values, pbf_writer* record) {
  record->add_double(1, values.zoom);
  record->add_double(2, values.fxy);
  record->add_double(3, values.cx);
  record->add_double(4, values.cy);
  record->add_double(5, values.k1);
  record->add_double(6, values.k4);
  record->add_double(7, values.p1);
  record->add_double(8, values.p2);
  record->add_double(9, values.error_per_point);
}

void Build(const PtzIntrinsics& values, pbf_writer* record) {
  record->add_double(1, values.zx);
  record->add_double(2, values.zy);
  record->add_int32(3, values.width);
  record->add_int32(4, values.height);
  for (const ZoomSample& sample : values.samples) {
    pbf_writer element(*record, 5, 9 * (1 + sizeof(double)));
    Build(sample, &element);
  }
  record->add_int32(6, values.samples_zoom0);
  record->add_int32(7, values.samples_zoom_step);
  record->add_int32(8, values.zoom_min);
  record->add_int32(9, values.zoom_max);
}

void Build(const PanTilt& values, pbf_writer* record) {
  Add(1, values.pan_ext, record);
  Add(2, values.tilt_ext, record);
  Add(3, values.device_ext, record);
  record->add_float(4, values.rads_per_pan_unit);
  record->add_float(5, values.rads_per_tilt_unit);
  record->add_float(6, values.pan_offset);
  record->add_float(7, values.tilt_offset);
  record->add_int32(8, values.pan_min);
  record->add_int32(9, values.pan_max);
  record->add_int32(10, values.tilt_min);
  record->add_int32(11, values.tilt_max);
  record->add_int32(12, values.max_pan_speed);
  record->add_int32(13, values.max_tilt_speed);
  record->add_float(14, values.avg_model_error);
  record->add_float(15, values.max_model_error);
}

void Build(const PtzCamera& values, pbf_writer* record) {
  Add(1, values.intrinsics, record);
  Add(2, values.pan_tilt, record);
}

void Build(const PtzSystem& values, pbf_writer* record) {
  Add(1, values.ptz_camera, record);
  Add(2, values.laser, record);
  Add(3, values.other_cameras, record);
}

template <class T>
void Add(::protozero::pbf_tag_type tag, const T& values, pbf_writer* parent) {
  pbf_writer record(*parent, tag);
  Build(values, &record);
}

// --- Reading ---

void Parse(pbf_reader record, Extrinsics* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kFixed64):
        values->a.push_back(record.get_double());
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, SamplePoint* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kFixed32):
        values->img_x = record.get_float();
        break;
      case tag_and_type(2, kFixed32):
        values->img_y = record.get_float();
        break;
      case tag_and_type(3, kFixed32):
        values->tgt_x = record.get_float();
        break;
      case tag_and_type(4, kFixed32):
        values->tgt_y = record.get_float();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Intrinsics* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kFixed64):
        values->fx = record.get_double();
        break;
      case tag_and_type(2, kFixed64):
        values->fy = record.get_double();
        break;
      case tag_and_type(3, kFixed64):
        values->skew = record.get_double();
        break;
      case tag_and_type(4, kFixed64):
        values->cx = record.get_double();
        break;
      case tag_and_type(5, kFixed64):
        values->cy = record.get_double();
        break;
      case tag_and_type(6, kFixed64):
        values->k.push_back(record.get_double());
        break;
      case tag_and_type(7, kFixed64):
        values->p.push_back(record.get_double());
        break;
      case tag_and_type(8, kVarint):
        values->width = record.get_int32();
        break;
      case tag_and_type(9, kVarint):
        values->height = record.get_int32();
        break;
      case tag_and_type(10, kFixed64):
        values->error_per_point = record.get_double();
        break;
      case tag_and_type(11, kLength):
        values->x_bin = record.get_string();
        break;
      case tag_and_type(12, kFixed32):
        values->offset_x = record.get_float();
        break;
      case tag_and_type(13, kFixed32):
        values->offset_y = record.get_float();
        break;
      case tag_and_type(16, kLength):
        Parse(record.get_message(), &values->sample_points.emplace_back());
        break;
      case tag_and_type(17, kFixed32):
        values->tgt_z = record.get_float();
        break;
      case tag_and_type(18, kVarint):
        values->tgt_width = record.get_int32();
        break;
      case tag_and_type(19, kVarint):
        values->tgt_height = record.get_int32();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Image* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kVarint):
        values->width = record.get_int32();
        break;
      case tag_and_type(2, kVarint):
        values->height = record.get_int32();
        break;
      case tag_and_type(3, kVarint):
        values->stride = record.get_int32();
        break;
      case tag_and_type(4, kLength):
        values->format = record.get_string();
        break;
      case tag_and_type(5, kLength):
        values->imgdata.data = record.get_string();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Camera* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kLength):
        Parse(record.get_message(), &values->intrinsics);
        break;
      case tag_and_type(3, kLength):
        Parse(record.get_message(), &values->extrinsics);
        break;
      case tag_and_type(5, kLength):
        values->name = record.get_string();
        break;
      case tag_and_type(6, kLength):
        values->model = record.get_string();
        break;
      case tag_and_type(7, kLength):
        values->serial = record.get_string();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Robot* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kLength):
        Parse(record.get_message(), &values->camera.emplace_back());
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Metadata* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kVarint):
        values->time = record.get_int64();
        break;
      case tag_and_type(2, kLength):
        values->base_serial = record.get_string();
        break;
      case tag_and_type(3, kLength):
        values->audio_serial = record.get_string();
        break;
      case tag_and_type(4, kFixed32):
        values->temperature = record.get_float();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Adjustment* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kLength):
        Parse(record.get_message(), &values->params);
        break;
      case tag_and_type(2, kLength):
        Parse(record.get_message(), &values->metadata);
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Gyroscope* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kFixed32):
        values->gyroscope_gain = record.get_float();
        break;
      case tag_and_type(2, kLength):
        Parse(record.get_message(), &values->metadata);
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, Base* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kFixed32):
        values->wheel_base = record.get_float();
        break;
      case tag_and_type(2, kFixed32):
        values->base_width = record.get_float();
        break;
      case tag_and_type(3, kLength):
        Parse(record.get_message(), &values->global_transform);
        break;
      case tag_and_type(4, kLength):
        Parse(record.get_message(), &values->gyroscope_cal);
        break;
      case tag_and_type(5, kFixed32):
        values->base_length = record.get_float();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, ZoomSample* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kFixed64):
        values->zoom = record.get_double();
        break;
      case tag_and_type(2, kFixed64):
        values->fxy = record.get_double();
        break;
      case tag_and_type(3, kFixed64):
        values->cx = record.get_double();
        break;
      case tag_and_type(4, kFixed64):
        values->cy = record.get_double();
        break;
      case tag_and_type(5, kFixed64):
        values->k1 = record.get_double();
        break;
      case tag_and_type(6, kFixed64):
        values->k4 = record.get_double();
        break;
      case tag_and_type(7, kFixed64):
        values->p1 = record.get_double();
        break;
      case tag_and_type(8, kFixed64):
        values->p2 = record.get_double();
        break;
      case tag_and_type(9, kFixed64):
        values->error_per_point = record.get_double();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, PtzIntrinsics* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kFixed64):
        values->zx = record.get_double();
        break;
      case tag_and_type(2, kFixed64):
        values->zy = record.get_double();
        break;
      case tag_and_type(3, kVarint):
        values->width = record.get_int32();
        break;
      case tag_and_type(4, kVarint):
        values->height = record.get_int32();
        break;
      case tag_and_type(5, kLength):
        Parse(record.get_message(), &values->samples.emplace_back());
        break;
      case tag_and_type(6, kVarint):
        values->samples_zoom0 = record.get_int32();
        break;
      case tag_and_type(7, kVarint):
        values->samples_zoom_step = record.get_int32();
        break;
      case tag_and_type(8, kVarint):
        values->zoom_min = record.get_int32();
        break;
      case tag_and_type(9, kVarint):
        values->zoom_max = record.get_int32();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, PanTilt* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kLength):
        Parse(record.get_message(), &values->pan_ext);
        break;
      case tag_and_type(2, kLength):
        Parse(record.get_message(), &values->tilt_ext);
        break;
      case tag_and_type(3, kLength):
        Parse(record.get_message(), &values->device_ext);
        break;
      case tag_and_type(4, kFixed32):
        values->rads_per_pan_unit = record.get_float();
        break;
      case tag_and_type(5, kFixed32):
        values->rads_per_tilt_unit = record.get_float();
        break;
      case tag_and_type(6, kFixed32):
        values->pan_offset = record.get_float();
        break;
      case tag_and_type(7, kFixed32):
        values->tilt_offset = record.get_float();
        break;
      case tag_and_type(8, kVarint):
        values->pan_min = record.get_int32();
        break;
      case tag_and_type(9, kVarint):
        values->pan_max = record.get_int32();
        break;
      case tag_and_type(10, kVarint):
        values->tilt_min = record.get_int32();
        break;
      case tag_and_type(11, kVarint):
        values->tilt_max = record.get_int32();
        break;
      case tag_and_type(12, kVarint):
        values->max_pan_speed = record.get_int32();
        break;
      case tag_and_type(13, kVarint):
        values->max_tilt_speed = record.get_int32();
        break;
      case tag_and_type(14, kFixed32):
        values->avg_model_error = record.get_float();
        break;
      case tag_and_type(15, kFixed32):
        values->max_model_error = record.get_float();
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, PtzCamera* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kLength):
        Parse(record.get_message(), &values->intrinsics);
        break;
      case tag_and_type(2, kLength):
        Parse(record.get_message(), &values->pan_tilt);
        break;
      default:
        record.skip();
    }
  }
}

void Parse(pbf_reader record, PtzSystem* values) {
  while (record.next()) {
    switch (record.tag_and_type()) {
      case tag_and_type(1, kLength):
        Parse(record.get_message(), &values->ptz_camera);
        break;
      case tag_and_type(2, kLength):
        Parse(record.get_message(), &values->laser);
        break;
      case tag_and_type(3, kLength):
        Parse(record.get_message(), &values->other_cameras);
        break;
      default:
        record.skip();
    }
  }
}

// --- The one number: whatever is beside the way to it is skipped ---

// The contents of the index-th sub-message of that number; fails if there is none.
pbf_reader Child(pbf_reader record, ::protozero::pbf_tag_type tag, int index = 0) {
  while (record.next(tag, kLength)) {
    if (index-- == 0) return record.get_message();
    record.skip();
  }
  Require(false);
  return record;
}

double OneOf(pbf_reader record, const Robot*) {
  pbf_reader intrinsics = Child(Child(record, 1, 3), 1);
  return intrinsics.next(1, kFixed64) ? intrinsics.get_double() : 0;
}

double OneOf(pbf_reader record, const Base*) {
  pbf_reader metadata = Child(Child(record, 4), 2);
  return metadata.next(4, kFixed32) ? metadata.get_float() : 0;
}

double OneOf(pbf_reader record, const PtzSystem*) {
  pbf_reader sample = Child(Child(Child(record, 1), 1), 5, 32);
  return sample.next(2, kFixed64) ? sample.get_double() : 0;
}

double OneOf(pbf_reader record, const Image*) {
  return record.next(2, kVarint) ? record.get_int32() : 0;
}

template <class R>
class ProtozeroStore {
 public:
  void Write(const R& values) {
    written_.clear();
    pbf_writer record(written_);
    Build(values, &record);
  }
  std::string_view Written() const { return written_; }

  void Load(std::string_view bytes) {
    values_ = R();
    Parse(pbf_reader(bytes.data(), bytes.size()), &values_);
  }

  template <class Sink>
  void Read(std::string_view bytes, Sink* sink) {
    Load(bytes);
    Visit(values_, sink);
  }

  double ReadOne(std::string_view bytes) {
    return OneOf(pbf_reader(bytes.data(), bytes.size()), static_cast<const R*>(nullptr));
  }

 private:
  R values_;
  std::string written_;
};

struct Protozero {
  template <class R>
  using Store = ProtozeroStore<R>;
};

}  // namespace

void AddProtozero(PeerCatalogue* catalogue) { AddPeer<Protozero>("protozero", catalogue); }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
