// FlatBuffers: verified before it is read, read in place. As its manual advises, builders begin
// with room enough and are used again, lists of numbers and structs are made in one piece, and what
// is inside is built before what it is inside of.
#include <flatbuffers/flatbuffers.h>

#include "benchmarks/peers/peer_cells.h"
#include "calibration_generated.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

namespace flat = ::peers::flat;
using ::flatbuffers::Offset;

struct Builder : ::flatbuffers::FlatBufferBuilder {
  explicit Builder(bool tables) : FlatBufferBuilder(size_t{32} * 1024), points_as_tables(tables) {}
  bool points_as_tables;
};

// --- Writing ---

Offset<flat::Extrinsics> Build(const Extrinsics& values, Builder* builder) {
  return flat::CreateExtrinsics(*builder, builder->CreateVector(values.a));
}

Offset<flat::Intrinsics> Build(const Intrinsics& values, Builder* builder) {
  const auto k = builder->CreateVector(values.k);
  const auto p = builder->CreateVector(values.p);
  const auto x_bin = builder->CreateString(values.x_bin);
  Offset<::flatbuffers::Vector<const flat::SamplePoint*>> structs;
  Offset<::flatbuffers::Vector<Offset<flat::SampleTable>>> tables;
  if (builder->points_as_tables) {
    std::vector<Offset<flat::SampleTable>> points;
    points.reserve(values.sample_points.size());
    for (const SamplePoint& point : values.sample_points) {
      points.push_back(
          flat::CreateSampleTable(*builder, point.img_x, point.img_y, point.tgt_x, point.tgt_y));
    }
    tables = builder->CreateVector(points);
  } else {
    flat::SamplePoint* points;
    structs = builder->CreateUninitializedVectorOfStructs(values.sample_points.size(), &points);
    for (const SamplePoint& point : values.sample_points) {
      *points++ = flat::SamplePoint(point.img_x, point.img_y, point.tgt_x, point.tgt_y);
    }
  }
  return flat::CreateIntrinsics(*builder, values.fx, values.fy, values.skew, values.cx, values.cy,
                                k, p, values.width, values.height, values.error_per_point, x_bin,
                                values.offset_x, values.offset_y, 0, 0, structs, values.tgt_z,
                                values.tgt_width, values.tgt_height, tables);
}

Offset<flat::Image> Build(const Image& values, Builder* builder) {
  const auto format = builder->CreateString(values.format);
  const std::string& octets = values.imgdata.data;
  const auto imgdata =
      builder->CreateVector(reinterpret_cast<const uint8_t*>(octets.data()), octets.size());
  return flat::CreateImage(*builder, values.width, values.height, values.stride, format, imgdata);
}

Offset<flat::Robot> Build(const Robot& values, Builder* builder) {
  std::vector<Offset<flat::Camera>> cameras;
  cameras.reserve(values.camera.size());
  for (const Camera& camera : values.camera) {
    const auto text = [builder](const std::string& value) {
      return value.empty() ? Offset<::flatbuffers::String>() : builder->CreateString(value);
    };
    const auto intrinsics = Build(camera.intrinsics, builder);
    const auto extrinsics = Build(camera.extrinsics, builder);
    const auto name = text(camera.name), model = text(camera.model), serial = text(camera.serial);
    cameras.push_back(
        flat::CreateCamera(*builder, intrinsics, 0, extrinsics, 0, name, model, serial));
  }
  return flat::CreateRobot(*builder, builder->CreateVector(cameras));
}

Offset<flat::Metadata> Build(const Metadata& values, Builder* builder) {
  const auto base_serial = builder->CreateString(values.base_serial);
  const auto audio_serial = builder->CreateString(values.audio_serial);
  return flat::CreateMetadata(*builder, values.time, base_serial, audio_serial, values.temperature);
}

Offset<flat::Base> Build(const Base& values, Builder* builder) {
  const auto params = Build(values.global_transform.params, builder);
  const auto transform_metadata = Build(values.global_transform.metadata, builder);
  const auto transform = flat::CreateAdjustment(*builder, params, transform_metadata);
  const auto gyroscope_metadata = Build(values.gyroscope_cal.metadata, builder);
  const auto gyroscope =
      flat::CreateGyroscope(*builder, values.gyroscope_cal.gyroscope_gain, gyroscope_metadata);
  return flat::CreateBase(*builder, values.wheel_base, values.base_width, values.base_length,
                          transform, gyroscope);
}

Offset<flat::PtzIntrinsics> Build(const PtzIntrinsics& values, Builder* builder) {
  std::vector<Offset<flat::ZoomSample>> samples;
  samples.reserve(values.samples.size());
  for (const ZoomSample& sample : values.samples) {
    samples.push_back(flat::CreateZoomSample(*builder, sample.zoom, sample.fxy, sample.cx,
                                             sample.cy, sample.k1, sample.k4, sample.p1, sample.p2,
                                             sample.error_per_point));
  }
  return flat::CreatePtzIntrinsics(*builder, values.zx, values.zy, values.width, values.height,
                                   builder->CreateVector(samples), values.samples_zoom0,
                                   values.samples_zoom_step, values.zoom_min, values.zoom_max);
}

Offset<flat::PanTilt> Build(const PanTilt& values, Builder* builder) {
  const auto pan = Build(values.pan_ext, builder);
  const auto tilt = Build(values.tilt_ext, builder);
  const auto device = Build(values.device_ext, builder);
  return flat::CreatePanTilt(*builder, pan, tilt, device, values.rads_per_pan_unit,
                             values.rads_per_tilt_unit, values.pan_offset, values.tilt_offset,
                             values.pan_min, values.pan_max, values.tilt_min, values.tilt_max,
                             values.max_pan_speed, values.max_tilt_speed, values.avg_model_error,
                             values.max_model_error);
}

Offset<flat::PtzSystem> Build(const PtzSystem& values, Builder* builder) {
  const auto intrinsics = Build(values.ptz_camera.intrinsics, builder);
  const auto pan_tilt = Build(values.ptz_camera.pan_tilt, builder);
  const auto camera = flat::CreatePtzCamera(*builder, intrinsics, pan_tilt);
  const auto laser = Build(values.laser, builder);
  const auto cameras = Build(values.other_cameras, builder);
  return flat::CreatePtzSystem(*builder, camera, laser, cameras);
}

// --- Reading: whatever is a table or a list may be absent, and is a null pointer then ---

template <class Sink>
void Hand(const ::flatbuffers::String* text, Sink* sink) {
  if (text != nullptr) sink->Text({text->c_str(), text->size()});
}

template <class Sink>
void Hand(const ::flatbuffers::Vector<double>* numbers, Sink* sink) {
  if (numbers == nullptr) return;
  for (const double number : *numbers) sink->Number(number);
}

template <class Sink>
void Hand(const flat::Extrinsics* record, Sink* sink) {
  if (record != nullptr) Hand(record->a(), sink);
}

template <class Points, class Sink>
void HandPoints(const Points* points, Sink* sink) {
  if (points == nullptr) return;
  for (const auto* point : *points) {
    sink->Number(point->img_x());
    sink->Number(point->img_y());
    sink->Number(point->tgt_x());
    sink->Number(point->tgt_y());
  }
}

template <class Sink>
void Hand(const flat::Intrinsics* record, Sink* sink) {
  if (record == nullptr) return;
  sink->Number(record->fx());
  sink->Number(record->fy());
  sink->Number(record->skew());
  sink->Number(record->cx());
  sink->Number(record->cy());
  Hand(record->k(), sink);
  Hand(record->p(), sink);
  sink->Number(record->width());
  sink->Number(record->height());
  sink->Number(record->error_per_point());
  Hand(record->x_bin(), sink);
  sink->Number(record->offset_x());
  sink->Number(record->offset_y());
  HandPoints(record->sample_points(), sink);
  HandPoints(record->sample_tables(), sink);
  sink->Number(record->tgt_z());
  sink->Number(record->tgt_width());
  sink->Number(record->tgt_height());
}

template <class Sink>
void Hand(const flat::Image* record, Sink* sink) {
  if (record == nullptr) return;
  sink->Number(record->width());
  sink->Number(record->height());
  sink->Number(record->stride());
  Hand(record->format(), sink);
  if (record->imgdata() != nullptr) {
    sink->Octets(
        {reinterpret_cast<const char*>(record->imgdata()->data()), record->imgdata()->size()});
  }
}

template <class Sink>
void Hand(const flat::Robot* record, Sink* sink) {
  if (record == nullptr || record->camera() == nullptr) return;
  for (const flat::Camera* camera : *record->camera()) {
    Hand(camera->intrinsics(), sink);
    Hand(camera->extrinsics(), sink);
    Hand(camera->name(), sink);
    Hand(camera->model(), sink);
    Hand(camera->serial(), sink);
  }
}

template <class Sink>
void Hand(const flat::Metadata* record, Sink* sink) {
  if (record == nullptr) return;
  sink->Number(record->time());
  Hand(record->base_serial(), sink);
  Hand(record->audio_serial(), sink);
  sink->Number(record->temperature());
}

template <class Sink>
void Hand(const flat::Base* record, Sink* sink) {
  sink->Number(record->wheel_base());
  sink->Number(record->base_width());
  if (record->global_transform() != nullptr) {
    Hand(record->global_transform()->params(), sink);
    Hand(record->global_transform()->metadata(), sink);
  }
  if (record->gyroscope_cal() != nullptr) {
    sink->Number(record->gyroscope_cal()->gyroscope_gain());
    Hand(record->gyroscope_cal()->metadata(), sink);
  }
  sink->Number(record->base_length());
}

template <class Sink>
void Hand(const flat::PtzIntrinsics* record, Sink* sink) {
  if (record == nullptr) return;
  sink->Number(record->zx());
  sink->Number(record->zy());
  sink->Number(record->width());
  sink->Number(record->height());
  if (record->samples() != nullptr) {
    for (const flat::ZoomSample* sample : *record->samples()) {
      sink->Number(sample->zoom());
      sink->Number(sample->fxy());
      sink->Number(sample->cx());
      sink->Number(sample->cy());
      sink->Number(sample->k1());
      sink->Number(sample->k4());
      sink->Number(sample->p1());
      sink->Number(sample->p2());
      sink->Number(sample->error_per_point());
    }
  }
  sink->Number(record->samples_zoom0());
  sink->Number(record->samples_zoom_step());
  sink->Number(record->zoom_min());
  sink->Number(record->zoom_max());
}

template <class Sink>
void Hand(const flat::PanTilt* record, Sink* sink) {
  if (record == nullptr) return;
  Hand(record->pan_ext(), sink);
  Hand(record->tilt_ext(), sink);
  Hand(record->device_ext(), sink);
  sink->Number(record->rads_per_pan_unit());
  sink->Number(record->rads_per_tilt_unit());
  sink->Number(record->pan_offset());
  sink->Number(record->tilt_offset());
  sink->Number(record->pan_min());
  sink->Number(record->pan_max());
  sink->Number(record->tilt_min());
  sink->Number(record->tilt_max());
  sink->Number(record->max_pan_speed());
  sink->Number(record->max_tilt_speed());
  sink->Number(record->avg_model_error());
  sink->Number(record->max_model_error());
}

template <class Sink>
void Hand(const flat::PtzSystem* record, Sink* sink) {
  if (record->ptz_camera() != nullptr) {
    Hand(record->ptz_camera()->intrinsics(), sink);
    Hand(record->ptz_camera()->pan_tilt(), sink);
  }
  Hand(record->laser(), sink);
  Hand(record->other_cameras(), sink);
}

double OneOf(const flat::Robot* record) { return record->camera()->Get(3)->intrinsics()->fx(); }
double OneOf(const flat::Base* record) {
  return record->gyroscope_cal()->metadata()->temperature();
}
double OneOf(const flat::PtzSystem* record) {
  return record->ptz_camera()->intrinsics()->samples()->Get(32)->fxy();
}
double OneOf(const flat::Image* record) { return record->height(); }

template <class R, bool kPointsAsTables>
class FlatBuffersStore {
 public:
  void Write(const R& values) {
    builder_.Clear();
    builder_.Finish(Build(values, &builder_));
  }
  std::string_view Written() const {
    return {reinterpret_cast<const char*>(builder_.GetBufferPointer()), builder_.GetSize()};
  }

  void Load(std::string_view bytes) {
    kept_ = bytes;
    Root(kept_);
  }

  template <class Sink>
  void Read(std::string_view bytes, Sink* sink) {
    Hand(Root(bytes), sink);
  }

  double ReadOne(std::string_view bytes) { return OneOf(Root(bytes)); }

 private:
  // What Build() returns an offset of.
  template <class T>
  static T* PointerTo(Offset<T>);
  using Table = std::remove_pointer_t<decltype(PointerTo(
      Build(std::declval<const R&>(), std::declval<Builder*>())))>;

  static const Table* Root(std::string_view bytes) {
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    ::flatbuffers::Verifier verifier(data, bytes.size());
    Require(verifier.VerifyBuffer<Table>());
    return ::flatbuffers::GetRoot<Table>(data);
  }

  Builder builder_{kPointsAsTables};
  std::string kept_;
};

struct Structs {
  template <class R>
  using Store = FlatBuffersStore<R, false>;
};

struct Tables {
  template <class R>
  using Store = FlatBuffersStore<R, true>;
};

}  // namespace

void AddFlatBuffers(PeerCatalogue* catalogue) {
  AddPeer<Structs>("flatbuffers", catalogue);
  AddPeer<Tables>("flatbuffers tables", catalogue);
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
