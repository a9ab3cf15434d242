// Cap'n Proto, plain and packed. As its manual advises, a message is built into a first segment
// that is large enough and used again, a reader looks at the bytes in place, and a plain message
// counts as written once its segments stand in memory, from where a program hands them to writev().
#include <capnp/message.h>
#include <capnp/serialize-packed.h>
#include <capnp/serialize.h>
#include <kj/io.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "benchmarks/peers/peer_cells.h"
#include "calibration.capnp.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

namespace capn = ::peers::capnproto;

// --- Writing ---

void Copy(const std::vector<double>& values, ::capnp::List<double>::Builder list) {
  for (unsigned i = 0; i < list.size(); ++i) list.set(i, values[i]);
}

unsigned Size(size_t size) { return static_cast<unsigned>(size); }

void Build(const Extrinsics& values, capn::Extrinsics::Builder record) {
  Copy(values.a, record.initA(Size(values.a.size())));
}

void Build(const Intrinsics& values, capn::Intrinsics::Builder record) {
  record.setFx(values.fx);
  record.setFy(values.fy);
  record.setSkew(values.skew);
  record.setCx(values.cx);
  record.setCy(values.cy);
  Copy(values.k, record.initK(Size(values.k.size())));
  Copy(values.p, record.initP(Size(values.p.size())));
  record.setWidth(values.width);
  record.setHeight(values.height);
  record.setErrorPerPoint(values.error_per_point);
  record.setXBin(values.x_bin);
  record.setOffsetX(values.offset_x);
  record.setOffsetY(values.offset_y);
  auto points = record.initSamplePoints(Size(values.sample_points.size()));
  for (unsigned i = 0; i < points.size(); ++i) {
    auto point = points[i];
    point.setImgX(values.sample_points[i].img_x);
    point.setImgY(values.sample_points[i].img_y);
    point.setTgtX(values.sample_points[i].tgt_x);
    point.setTgtY(values.sample_points[i].tgt_y);
  }
  record.setTgtZ(values.tgt_z);
  record.setTgtWidth(values.tgt_width);
  record.setTgtHeight(values.tgt_height);
}

void Build(const Image& values, capn::Image::Builder record) {
  record.setWidth(values.width);
  record.setHeight(values.height);
  record.setStride(values.stride);
  record.setFormat(values.format);
  const std::string& octets = values.imgdata.data;
  record.setImgdata({reinterpret_cast<const ::kj::byte*>(octets.data()), octets.size()});
}

void Build(const Robot& values, capn::Robot::Builder record) {
  auto cameras = record.initCamera(Size(values.camera.size()));
  for (unsigned i = 0; i < cameras.size(); ++i) {
    const Camera& camera = values.camera[i];
    auto element = cameras[i];
    Build(camera.intrinsics, element.initIntrinsics());
    Build(camera.extrinsics, element.initExtrinsics());
    element.setName(camera.name);
    if (!camera.model.empty()) element.setModel(camera.model);
    if (!camera.serial.empty()) element.setSerial(camera.serial);
  }
}

void Build(const Metadata& values, capn::Metadata::Builder record) {
  record.setTime(values.time);
  record.setBaseSerial(values.base_serial);
  record.setAudioSerial(values.audio_serial);
  record.setTemperature(values.temperature);
}

void Build(const Base& values, capn::Base::Builder record) {
  record.setWheelBase(values.wheel_base);
  record.setBaseWidth(values.base_width);
  record.setBaseLength(values.base_length);
  auto transform = record.initGlobalTransform();
  Build(values.global_transform.params, transform.initParams());
  Build(values.global_transform.metadata, transform.initMetadata());
  auto gyroscope = record.initGyroscopeCal();
  gyroscope.setGyroscopeGain(values.gyroscope_cal.gyroscope_gain);
  Build(values.gyroscope_cal.metadata, gyroscope.initMetadata());
}

void Build(const PtzIntrinsics& values, capn::PtzIntrinsics::Builder record) {
  record.setZx(values.zx);
  record.setZy(values.zy);
  record.setWidth(values.width);
  record.setHeight(values.height);
  auto samples = record.initSamples(Size(values.samples.size()));
  for (unsigned i = 0; i < samples.size(); ++i) {
    const ZoomSample& sample = values.samples[i];
    auto element = samples[i];
    element.setZoom(sample.zoom);
    element.setFxy(sample.fxy);
    element.setCx(sample.cx);
    element.setCy(sample.cy);
    element.setK1(sample.k1);
    element.setK4(sample.k4);
    element.setP1(sample.p1);
    element.setP2(sample.p2);
    element.setErrorPerPoint(sample.error_per_point);
  }
  record.setSamplesZoom0(values.samples_zoom0);
  record.setSamplesZoomStep(values.samples_zoom_step);
  record.setZoomMin(values.zoom_min);
  record.setZoomMax(values.zoom_max);
}

void Build(const PanTilt& values, capn::PanTilt::Builder record) {
  Build(values.pan_ext, record.initPanExt());
  Build(values.tilt_ext, record.initTiltExt());
  Build(values.device_ext, record.initDeviceExt());
  record.setRadsPerPanUnit(values.rads_per_pan_unit);
  record.setRadsPerTiltUnit(values.rads_per_tilt_unit);
  record.setPanOffset(values.pan_offset);
  record.setTiltOffset(values.tilt_offset);
  record.setPanMin(values.pan_min);
  record.setPanMax(values.pan_max);
  record.setTiltMin(values.tilt_min);
  record.setTiltMax(values.tilt_max);
  record.setMaxPanSpeed(values.max_pan_speed);
  record.setMaxTiltSpeed(values.max_tilt_speed);
  record.setAvgModelError(values.avg_model_error);
  record.setMaxModelError(values.max_model_error);
}

void Build(const PtzSystem& values, capn::PtzSystem::Builder record) {
  auto camera = record.initPtzCamera();
  Build(values.ptz_camera.intrinsics, camera.initIntrinsics());
  Build(values.ptz_camera.pan_tilt, camera.initPanTilt());
  Build(values.laser, record.initLaser());
  Build(values.other_cameras, record.initOtherCameras());
}

// --- Reading: what is absent reads as zero or empty ---

template <class Sink>
void Hand(::capnp::Text::Reader text, Sink* sink) {
  sink->Text({text.cStr(), text.size()});
}

template <class Sink>
void Hand(::capnp::List<double>::Reader numbers, Sink* sink) {
  for (const double number : numbers) sink->Number(number);
}

template <class Sink>
void Hand(capn::Extrinsics::Reader record, Sink* sink) {
  Hand(record.getA(), sink);
}

template <class Sink>
void Hand(capn::Intrinsics::Reader record, Sink* sink) {
  sink->Number(record.getFx());
  sink->Number(record.getFy());
  sink->Number(record.getSkew());
  sink->Number(record.getCx());
  sink->Number(record.getCy());
  Hand(record.getK(), sink);
  Hand(record.getP(), sink);
  sink->Number(record.getWidth());
  sink->Number(record.getHeight());
  sink->Number(record.getErrorPerPoint());
  Hand(record.getXBin(), sink);
  sink->Number(record.getOffsetX());
  sink->Number(record.getOffsetY());
  for (const capn::SamplePoint::Reader point : record.getSamplePoints()) {
    sink->Number(point.getImgX());
    sink->Number(point.getImgY());
    sink->Number(point.getTgtX());
    sink->Number(point.getTgtY());
  }
  sink->Number(record.getTgtZ());
  sink->Number(record.getTgtWidth());
  sink->Number(record.getTgtHeight());
}

template <class Sink>
void Hand(capn::Image::Reader record, Sink* sink) {
  sink->Number(record.getWidth());
  sink->Number(record.getHeight());
  sink->Number(record.getStride());
  Hand(record.getFormat(), sink);
  const ::capnp::Data::Reader octets = record.getImgdata();
  sink->Octets({reinterpret_cast<const char*>(octets.begin()), octets.size()});
}

template <class Sink>
void Hand(capn::Robot::Reader record, Sink* sink) {
  for (const capn::Camera::Reader camera : record.getCamera()) {
    Hand(camera.getIntrinsics(), sink);
    Hand(camera.getExtrinsics(), sink);
    Hand(camera.getName(), sink);
    Hand(camera.getModel(), sink);
    Hand(camera.getSerial(), sink);
  }
}

template <class Sink>
void Hand(capn::Metadata::Reader record, Sink* sink) {
  sink->Number(record.getTime());
  Hand(record.getBaseSerial(), sink);
  Hand(record.getAudioSerial(), sink);
  sink->Number(record.getTemperature());
}

template <class Sink>
void Hand(capn::Base::Reader record, Sink* sink) {
  sink->Number(record.getWheelBase());
  sink->Number(record.getBaseWidth());
  const auto transform = record.getGlobalTransform();
  Hand(transform.getParams(), sink);
  Hand(transform.getMetadata(), sink);
  const auto gyroscope = record.getGyroscopeCal();
  sink->Number(gyroscope.getGyroscopeGain());
  Hand(gyroscope.getMetadata(), sink);
  sink->Number(record.getBaseLength());
}

template <class Sink>
void Hand(capn::PtzIntrinsics::Reader record, Sink* sink) {
  sink->Number(record.getZx());
  sink->Number(record.getZy());
  sink->Number(record.getWidth());
  sink->Number(record.getHeight());
  for (const capn::ZoomSample::Reader sample : record.getSamples()) {
    sink->Number(sample.getZoom());
    sink->Number(sample.getFxy());
    sink->Number(sample.getCx());
    sink->Number(sample.getCy());
    sink->Number(sample.getK1());
    sink->Number(sample.getK4());
    sink->Number(sample.getP1());
    sink->Number(sample.getP2());
    sink->Number(sample.getErrorPerPoint());
  }
  sink->Number(record.getSamplesZoom0());
  sink->Number(record.getSamplesZoomStep());
  sink->Number(record.getZoomMin());
  sink->Number(record.getZoomMax());
}

template <class Sink>
void Hand(capn::PanTilt::Reader record, Sink* sink) {
  Hand(record.getPanExt(), sink);
  Hand(record.getTiltExt(), sink);
  Hand(record.getDeviceExt(), sink);
  sink->Number(record.getRadsPerPanUnit());
  sink->Number(record.getRadsPerTiltUnit());
  sink->Number(record.getPanOffset());
  sink->Number(record.getTiltOffset());
  sink->Number(record.getPanMin());
  sink->Number(record.getPanMax());
  sink->Number(record.getTiltMin());
  sink->Number(record.getTiltMax());
  sink->Number(record.getMaxPanSpeed());
  sink->Number(record.getMaxTiltSpeed());
  sink->Number(record.getAvgModelError());
  sink->Number(record.getMaxModelError());
}

template <class Sink>
void Hand(capn::PtzSystem::Reader record, Sink* sink) {
  const auto camera = record.getPtzCamera();
  Hand(camera.getIntrinsics(), sink);
  Hand(camera.getPanTilt(), sink);
  Hand(record.getLaser(), sink);
  Hand(record.getOtherCameras(), sink);
}

double OneOf(capn::Robot::Reader record) { return record.getCamera()[3].getIntrinsics().getFx(); }
double OneOf(capn::Base::Reader record) {
  return record.getGyroscopeCal().getMetadata().getTemperature();
}
double OneOf(capn::PtzSystem::Reader record) {
  return record.getPtzCamera().getIntrinsics().getSamples()[32].getFxy();
}
double OneOf(capn::Image::Reader record) { return record.getHeight(); }

// The type that a structure is written as.
template <class R>
struct Type;
template <>
struct Type<Robot> {
  using For = capn::Robot;
};
template <>
struct Type<Base> {
  using For = capn::Base;
};
template <>
struct Type<PtzSystem> {
  using For = capn::PtzSystem;
};
template <>
struct Type<Image> {
  using For = capn::Image;
};
template <class R>
using TypeFor = typename Type<R>::For;

constexpr size_t kFirstWords = 4096;

// Room that is used again and grows to what was needed before. It holds zeros when a message begins
// in it: the end of the message before sees to that.
class Room {
 public:
  ::kj::ArrayPtr<::capnp::word> ForWords(size_t count) {
    if (count > words_.size()) {
      words_ = ::kj::heapArray<::capnp::word>(count);
      std::memset(words_.begin(), 0, words_.asBytes().size());
    }
    return words_;
  }

 private:
  ::kj::Array<::capnp::word> words_;
};

template <class R>
class PlainStore {
 public:
  void Write(const R& values) {
    message_.reset();
    message_ = std::make_unique<::capnp::MallocMessageBuilder>(segment_.ForWords(words_));
    Build(values, message_->template initRoot<TypeFor<R>>());
    words_ = std::max(words_, message_->sizeInWords());
    Keep(message_->getSegmentsForOutput());
  }
  std::string_view Written() {
    flat_ = ::capnp::messageToFlatArray(*message_);
    const auto bytes = flat_.asChars();
    return {bytes.begin(), bytes.size()};
  }

  void Load(std::string_view bytes) {
    kept_ = bytes;
    Keep(kept_);
  }

  template <class Sink>
  void Read(std::string_view bytes, Sink* sink) {
    ::capnp::FlatArrayMessageReader reader(Words(bytes));
    Hand(reader.getRoot<TypeFor<R>>(), sink);
  }

  double ReadOne(std::string_view bytes) {
    ::capnp::FlatArrayMessageReader reader(Words(bytes));
    return OneOf(reader.getRoot<TypeFor<R>>());
  }

 private:
  static ::kj::ArrayPtr<const ::capnp::word> Words(std::string_view bytes) {
    return {reinterpret_cast<const ::capnp::word*>(bytes.data()),
            bytes.size() / sizeof(::capnp::word)};
  }

  Room segment_;
  size_t words_ = kFirstWords;  // the most that a message had
  std::unique_ptr<::capnp::MallocMessageBuilder> message_;
  ::kj::Array<::capnp::word> flat_;
  std::string kept_;
};

template <class R>
class PackedStore {
 public:
  void Write(const R& values) {
    ::capnp::MallocMessageBuilder message(segment_.ForWords(words_));
    Build(values, message.template initRoot<TypeFor<R>>());
    words_ = std::max(words_, message.sizeInWords());
    // A word takes ten bytes at most: its own, a tag and a count.
    packed_.resize(std::max(packed_.size(), 10 * message.sizeInWords() + 32));
    ::kj::ArrayOutputStream stream({packed_.data(), packed_.size()});
    ::capnp::writePackedMessage(stream, message);
    written_ = stream.getArray().size();
  }
  std::string_view Written() const {
    return {reinterpret_cast<const char*>(packed_.data()), written_};
  }

  void Load(std::string_view bytes) {
    reader_.reset();
    stream_ = std::make_unique<::kj::ArrayInputStream>(Bytes(bytes));
    reader_ = std::make_unique<::capnp::PackedMessageReader>(*stream_, ::capnp::ReaderOptions(),
                                                             scratch_.ForWords(words_));
  }

  template <class Sink>
  void Read(std::string_view bytes, Sink* sink) {
    ::kj::ArrayInputStream stream(Bytes(bytes));
    ::capnp::PackedMessageReader reader(stream, ::capnp::ReaderOptions(),
                                        scratch_.ForWords(words_));
    Hand(reader.getRoot<TypeFor<R>>(), sink);
  }

  double ReadOne(std::string_view bytes) {
    ::kj::ArrayInputStream stream(Bytes(bytes));
    ::capnp::PackedMessageReader reader(stream, ::capnp::ReaderOptions(),
                                        scratch_.ForWords(words_));
    return OneOf(reader.getRoot<TypeFor<R>>());
  }

 private:
  static ::kj::ArrayPtr<const ::kj::byte> Bytes(std::string_view bytes) {
    return {reinterpret_cast<const ::kj::byte*>(bytes.data()), bytes.size()};
  }

  Room segment_;
  size_t words_ = kFirstWords;  // the most that a message had
  std::vector<::kj::byte> packed_;
  size_t written_ = 0;  // of packed_
  Room scratch_;
  std::unique_ptr<::kj::ArrayInputStream> stream_;
  std::unique_ptr<::capnp::PackedMessageReader> reader_;
};

struct Plain {
  template <class R>
  using Store = PlainStore<R>;
};

struct Packed {
  template <class R>
  using Store = PackedStore<R>;
};

}  // namespace

void AddCapnProto(PeerCatalogue* catalogue) {
  AddPeer<Plain>("capnproto", catalogue);
  AddPeer<Packed>("capnproto packed", catalogue);
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
