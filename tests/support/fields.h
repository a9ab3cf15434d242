// Every accessor of every one of the 111 fields, as a table: one line a field.
//
//   ForEachText([](auto field) {                    // all string and bytes fields
//     typename decltype(field)::Record record;
//     field.Set(&record, "a");
//     EXPECT_TRUE(field.Has(record));
//   });
//
// A row holds pointers to the accessors' members and so is a check in itself: it compiles only if
// each accessor has exactly the parameter types, the return type and the constness that its kind of
// field promises.
#ifndef CALIBRATION_TESTS_SUPPORT_FIELDS_H_
#define CALIBRATION_TESTS_SUPPORT_FIELDS_H_

#include <google/protobuf/message.h>
#include <google/protobuf/repeated_field.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "calibration_common/calibration.pb.h"
#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {

template <class R>
struct Field {
  using Record = R;

  const char* record_name;
  const char* name;

  const FieldRow& row() const { return *FindField(FindMessage(record_name), std::string(name)); }
  uint32_t has_bit() const { return uint32_t{1} << row().has_bit; }
  const ::google::protobuf::FieldDescriptor* descriptor() const {
    return R::descriptor()->FindFieldByName(name);
  }
};

// A singular number or bool.
template <class R, class T>
struct NumberField : Field<R> {
  using Value = T;

  bool (R::*has)() const;
  T (R::*get)() const;
  void (R::*set)(T);
  void (R::*clear)();

  bool Has(const R& record) const { return (record.*has)(); }
  T Get(const R& record) const { return (record.*get)(); }
  void Set(R* record, T value) const { (record->*set)(value); }
  void Clear(R* record) const { (record->*clear)(); }
};

// A singular string (C is char) or bytes field (C is void).
template <class R, class C>
struct TextField : Field<R> {
  bool (R::*has)() const;
  const std::string& (R::*get)() const;
  void (R::*set)(const std::string&);
  void (R::*set_moved)(std::string&&);
  void (R::*set_terminated)(const char*);
  void (R::*set_counted)(const C*, size_t);
  std::string* (R::*mutable_)();
  void (R::*clear)();
  std::string* (R::*release)();
  void (R::*set_allocated)(std::string*);

  bool Has(const R& record) const { return (record.*has)(); }
  const std::string& Get(const R& record) const { return (record.*get)(); }
  void Set(R* record, const std::string& value) const { (record->*set)(value); }
  void SetMoved(R* record, std::string value) const { (record->*set_moved)(std::move(value)); }
  void SetTerminated(R* record, const char* value) const { (record->*set_terminated)(value); }
  void SetCounted(R* record, const C* value, size_t size) const {
    (record->*set_counted)(value, size);
  }
  std::string* Mutable(R* record) const { return (record->*mutable_)(); }
  void Clear(R* record) const { (record->*clear)(); }
  std::string* Release(R* record) const { return (record->*release)(); }
  void SetAllocated(R* record, std::string* value) const { (record->*set_allocated)(value); }
};

// A singular sub-message.
template <class R, class M>
struct MessageField : Field<R> {
  using SubMessage = M;

  bool (R::*has)() const;
  const M& (R::*get)() const;
  M* (R::*mutable_)();
  void (R::*clear)();
  M* (R::*release)();
  void (R::*set_allocated)(M*);

  bool Has(const R& record) const { return (record.*has)(); }
  const M& Get(const R& record) const { return (record.*get)(); }
  M* Mutable(R* record) const { return (record->*mutable_)(); }
  void Clear(R* record) const { (record->*clear)(); }
  M* Release(R* record) const { return (record->*release)(); }
  void SetAllocated(R* record, M* value) const { (record->*set_allocated)(value); }
};

// Repeated numbers.
template <class R, class T>
struct NumbersField : Field<R> {
  using Value = T;
  using Container = ::google::protobuf::RepeatedField<T>;

  int (R::*size)() const;
  T (R::*get)(int) const;
  void (R::*set)(int, T);
  void (R::*add)(T);
  const Container& (R::*all)() const;
  Container* (R::*mutable_all)();
  void (R::*clear)();

  int Size(const R& record) const { return (record.*size)(); }
  T Get(const R& record, int index) const { return (record.*get)(index); }
  void Set(R* record, int index, T value) const { (record->*set)(index, value); }
  void Add(R* record, T value) const { (record->*add)(value); }
  const Container& All(const R& record) const { return (record.*all)(); }
  Container* MutableAll(R* record) const { return (record->*mutable_all)(); }
  void Clear(R* record) const { (record->*clear)(); }
};

// Repeated sub-messages.
template <class R, class M>
struct MessagesField : Field<R> {
  using SubMessage = M;
  using Container = ::google::protobuf::RepeatedPtrField<M>;

  int (R::*size)() const;
  const M& (R::*get)(int) const;
  M* (R::*mutable_)(int);
  M* (R::*add)();
  const Container& (R::*all)() const;
  Container* (R::*mutable_all)();
  void (R::*clear)();

  int Size(const R& record) const { return (record.*size)(); }
  const M& Get(const R& record, int index) const { return (record.*get)(index); }
  M* Mutable(R* record, int index) const { return (record->*mutable_)(index); }
  M* Add(R* record) const { return (record->*add)(); }
  const Container& All(const R& record) const { return (record.*all)(); }
  Container* MutableAll(R* record) const { return (record->*mutable_all)(); }
  void Clear(R* record) const { (record->*clear)(); }
};

// Stands for a kind of field that is not asked for.
struct IgnoreField {};

// Calls on_number, on_text... with each field of that kind, in file order. A failure inside tells
// the field.
template <class OnNumber, class OnText, class OnMessage, class OnNumbers, class OnMessages>
void ForEachField(OnNumber on_number, OnText on_text, OnMessage on_message, OnNumbers on_numbers,
                  OnMessages on_messages) {
  using ::google::protobuf::int32;
  using ::google::protobuf::int64;
  const auto visit = [](const auto& visitor, const auto& field) {
    if constexpr (!std::is_same<std::decay_t<decltype(visitor)>, IgnoreField>::value) {
      SCOPED_TRACE(std::string(field.record_name) + "." + field.name);
      visitor(field);
    }
  };

#define CALIBRATION_TEST_NUMBER(R, x, T) \
  visit(on_number, NumberField<R, T>{{#R, #x}, &R::has_##x, &R::x, &R::set_##x, &R::clear_##x});
#define CALIBRATION_TEST_TEXT(R, x, C)            \
  visit(on_text, TextField<R, C>{{#R, #x},        \
                                 &R::has_##x,     \
                                 &R::x,           \
                                 &R::set_##x,     \
                                 &R::set_##x,     \
                                 &R::set_##x,     \
                                 &R::set_##x,     \
                                 &R::mutable_##x, \
                                 &R::clear_##x,   \
                                 &R::release_##x, \
                                 &R::set_allocated_##x});
#define CALIBRATION_TEST_MESSAGE(R, x, M)               \
  visit(on_message, MessageField<R, M>{{#R, #x},        \
                                       &R::has_##x,     \
                                       &R::x,           \
                                       &R::mutable_##x, \
                                       &R::clear_##x,   \
                                       &R::release_##x, \
                                       &R::set_allocated_##x});
#define CALIBRATION_TEST_NUMBERS(R, x, T)               \
  visit(on_numbers, NumbersField<R, T>{{#R, #x},        \
                                       &R::x##_size,    \
                                       &R::x,           \
                                       &R::set_##x,     \
                                       &R::add_##x,     \
                                       &R::x,           \
                                       &R::mutable_##x, \
                                       &R::clear_##x});
#define CALIBRATION_TEST_MESSAGES(R, x, M)                \
  visit(on_messages, MessagesField<R, M>{{#R, #x},        \
                                         &R::x##_size,    \
                                         &R::x,           \
                                         &R::mutable_##x, \
                                         &R::add_##x,     \
                                         &R::x,           \
                                         &R::mutable_##x, \
                                         &R::clear_##x});

  // clang-format off
  CALIBRATION_TEST_NUMBER(MarkerPositionInfo, x, float)
  CALIBRATION_TEST_NUMBER(MarkerPositionInfo, y, float)
  CALIBRATION_TEST_NUMBER(MarkerPositionInfo, z, float)
  CALIBRATION_TEST_NUMBER(MarkerPositionInfo, marker_id, int32)

  CALIBRATION_TEST_MESSAGES(MarkerPositionSet, pos, MarkerPositionInfo)
  CALIBRATION_TEST_NUMBERS(MarkerPositionSet, head_center, double)
  CALIBRATION_TEST_NUMBERS(MarkerPositionSet, nav_center, double)

  CALIBRATION_TEST_NUMBER(CameraIntrinsicsSamplePoints, img_x, float)
  CALIBRATION_TEST_NUMBER(CameraIntrinsicsSamplePoints, img_y, float)
  CALIBRATION_TEST_NUMBER(CameraIntrinsicsSamplePoints, tgt_x, float)
  CALIBRATION_TEST_NUMBER(CameraIntrinsicsSamplePoints, tgt_y, float)

  CALIBRATION_TEST_NUMBER(CameraIntrinsics, fx, double)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, fy, double)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, skew, double)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, cx, double)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, cy, double)
  CALIBRATION_TEST_NUMBERS(CameraIntrinsics, k, double)
  CALIBRATION_TEST_NUMBERS(CameraIntrinsics, p, double)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, width, int32)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, height, int32)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, error_per_point, double)
  CALIBRATION_TEST_TEXT(CameraIntrinsics, x_bin, char)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, offset_x, float)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, offset_y, float)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, bin_center, float)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, bin_size, float)
  CALIBRATION_TEST_MESSAGES(CameraIntrinsics, sample_points, CameraIntrinsicsSamplePoints)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, tgt_z, float)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, tgt_width, int32)
  CALIBRATION_TEST_NUMBER(CameraIntrinsics, tgt_height, int32)

  CALIBRATION_TEST_NUMBER(CalibrationImage, width, int32)
  CALIBRATION_TEST_NUMBER(CalibrationImage, height, int32)
  CALIBRATION_TEST_NUMBER(CalibrationImage, stride, int32)
  CALIBRATION_TEST_TEXT(CalibrationImage, format, char)
  CALIBRATION_TEST_TEXT(CalibrationImage, imgdata, void)

  CALIBRATION_TEST_NUMBER(FocusInfoItem, target_id, int32)
  CALIBRATION_TEST_NUMBER(FocusInfoItem, target_code, int32)
  CALIBRATION_TEST_NUMBER(FocusInfoItem, cutoff_threshold, float)
  CALIBRATION_TEST_NUMBER(FocusInfoItem, cutoff_cycles_per_pix, float)
  CALIBRATION_TEST_NUMBER(FocusInfoItem, cutoff_cycles_per_mm, float)
  CALIBRATION_TEST_NUMBER(FocusInfoItem, pix_per_mm, float)
  CALIBRATION_TEST_NUMBERS(FocusInfoItem, transfer_function, float)
  CALIBRATION_TEST_NUMBER(FocusInfoItem, valid_min, int32)
  CALIBRATION_TEST_NUMBER(FocusInfoItem, valid_max, int32)

  CALIBRATION_TEST_MESSAGES(FocusInfo, focus, FocusInfoItem)

  CALIBRATION_TEST_NUMBERS(CameraExtrinsics, a, double)

  CALIBRATION_TEST_MESSAGE(CameraCalibration, intrinsics, CameraIntrinsics)
  CALIBRATION_TEST_MESSAGE(CameraCalibration, intrinsics_image, CalibrationImage)
  CALIBRATION_TEST_MESSAGE(CameraCalibration, extrinsics, CameraExtrinsics)
  CALIBRATION_TEST_MESSAGE(CameraCalibration, extrinsics_image, CalibrationImage)
  CALIBRATION_TEST_TEXT(CameraCalibration, name, char)
  CALIBRATION_TEST_TEXT(CameraCalibration, model, char)
  CALIBRATION_TEST_TEXT(CameraCalibration, serial, char)

  CALIBRATION_TEST_MESSAGES(RobotCalibration, camera, CameraCalibration)

  CALIBRATION_TEST_NUMBER(CalibrationMetadataProto, time, int64)
  CALIBRATION_TEST_TEXT(CalibrationMetadataProto, base_serial, char)
  CALIBRATION_TEST_TEXT(CalibrationMetadataProto, audio_serial, char)
  CALIBRATION_TEST_NUMBER(CalibrationMetadataProto, temperature, float)

  CALIBRATION_TEST_NUMBER(GyroscopeCalibrationProto, gyroscope_gain, float)
  CALIBRATION_TEST_MESSAGE(GyroscopeCalibrationProto, metadata, CalibrationMetadataProto)

  CALIBRATION_TEST_MESSAGE(CameraCalibrationAdjustmentProto, params, CameraExtrinsics)
  CALIBRATION_TEST_MESSAGE(CameraCalibrationAdjustmentProto, metadata, CalibrationMetadataProto)

  CALIBRATION_TEST_NUMBER(BaseCalibrationProto, wheel_base, float)
  CALIBRATION_TEST_NUMBER(BaseCalibrationProto, base_width, float)
  CALIBRATION_TEST_NUMBER(BaseCalibrationProto, base_length, float)
  CALIBRATION_TEST_MESSAGE(BaseCalibrationProto, global_transform, CameraCalibrationAdjustmentProto)
  CALIBRATION_TEST_MESSAGE(BaseCalibrationProto, gyroscope_cal, GyroscopeCalibrationProto)

  CALIBRATION_TEST_NUMBER(FocusCheckProto, value_at_cutoff, float)
  CALIBRATION_TEST_NUMBER(FocusCheckProto, cutoff, float)
  CALIBRATION_TEST_NUMBERS(FocusCheckProto, bins, float)
  CALIBRATION_TEST_TEXT(FocusCheckProto, name, char)
  CALIBRATION_TEST_NUMBER(FocusCheckProto, ok, bool)

  CALIBRATION_TEST_MESSAGES(FocusCheckSetProto, spots, FocusCheckProto)

  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, zoom, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, fxy, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, cx, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, cy, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, k1, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, k4, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, p1, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, p2, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsicsItem, error_per_point, double)

  CALIBRATION_TEST_NUMBER(PTZIntrinsics, zx, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsics, zy, double)
  CALIBRATION_TEST_NUMBER(PTZIntrinsics, width, int32)
  CALIBRATION_TEST_NUMBER(PTZIntrinsics, height, int32)
  CALIBRATION_TEST_MESSAGES(PTZIntrinsics, samples, PTZIntrinsicsItem)
  CALIBRATION_TEST_NUMBER(PTZIntrinsics, samples_zoom0, int32)
  CALIBRATION_TEST_NUMBER(PTZIntrinsics, samples_zoom_step, int32)
  CALIBRATION_TEST_NUMBER(PTZIntrinsics, zoom_min, int32)
  CALIBRATION_TEST_NUMBER(PTZIntrinsics, zoom_max, int32)

  CALIBRATION_TEST_MESSAGE(PanTiltSystemParameters, pan_ext, CameraExtrinsics)
  CALIBRATION_TEST_MESSAGE(PanTiltSystemParameters, tilt_ext, CameraExtrinsics)
  CALIBRATION_TEST_MESSAGE(PanTiltSystemParameters, device_ext, CameraExtrinsics)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, rads_per_pan_unit, float)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, rads_per_tilt_unit, float)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, pan_offset, float)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, tilt_offset, float)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, pan_min, int32)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, pan_max, int32)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, tilt_min, int32)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, tilt_max, int32)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, max_pan_speed, int32)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, max_tilt_speed, int32)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, avg_model_error, float)
  CALIBRATION_TEST_NUMBER(PanTiltSystemParameters, max_model_error, float)

  CALIBRATION_TEST_MESSAGE(PTZCameraParameters, intrinsics, PTZIntrinsics)
  CALIBRATION_TEST_MESSAGE(PTZCameraParameters, pan_tilt, PanTiltSystemParameters)

  CALIBRATION_TEST_MESSAGE(PTZSystemCalibration, ptz_camera, PTZCameraParameters)
  CALIBRATION_TEST_MESSAGE(PTZSystemCalibration, laser, PanTiltSystemParameters)
  CALIBRATION_TEST_MESSAGE(PTZSystemCalibration, other_cameras, RobotCalibration)
  // clang-format on

#undef CALIBRATION_TEST_NUMBER
#undef CALIBRATION_TEST_TEXT
#undef CALIBRATION_TEST_MESSAGE
#undef CALIBRATION_TEST_NUMBERS
#undef CALIBRATION_TEST_MESSAGES
}

template <class F>
void ForEachNumber(F f) {
  const IgnoreField ignore;
  ForEachField(f, ignore, ignore, ignore, ignore);
}
template <class F>
void ForEachText(F f) {
  const IgnoreField ignore;
  ForEachField(ignore, f, ignore, ignore, ignore);
}
template <class F>
void ForEachMessage(F f) {
  const IgnoreField ignore;
  ForEachField(ignore, ignore, f, ignore, ignore);
}
template <class F>
void ForEachNumbers(F f) {
  const IgnoreField ignore;
  ForEachField(ignore, ignore, ignore, f, ignore);
}
template <class F>
void ForEachMessages(F f) {
  const IgnoreField ignore;
  ForEachField(ignore, ignore, ignore, ignore, f);
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_FIELDS_H_
