// Every accessor of every field of the table (schema.def).
//
//   ForEachText([](auto field) {                    // all string and bytes fields
//     typename decltype(field)::Record record;
//     field.Set(&record, "a");
//     EXPECT_TRUE(field.Has(record));
//   });
//
// A field here holds pointers to the accessors' members and so is a check in itself: it compiles
// only if each accessor has exactly the parameter types, the return type and the constness that its
// kind of field promises.
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

  // What a text is handed over as, by pointer and size.
  using string = char;
  using bytes = void;

#define MESSAGE(Class) \
  {                    \
    using R = Class;   \
    const char* const record = #Class;
#define END_MESSAGE }
#define NUMBER(label, T, x, Constant, number) \
  visit(on_number, NumberField<R, T>{{record, #x}, &R::has_##x, &R::x, &R::set_##x, &R::clear_##x});
#define TEXT(label, C, x, Constant, number)       \
  visit(on_text, TextField<R, C>{{record, #x},    \
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
#define SUB_MESSAGE(label, M, x, Constant, number)      \
  visit(on_message, MessageField<R, M>{{record, #x},    \
                                       &R::has_##x,     \
                                       &R::x,           \
                                       &R::mutable_##x, \
                                       &R::clear_##x,   \
                                       &R::release_##x, \
                                       &R::set_allocated_##x});
#define NUMBERS(label, T, x, Constant, number)          \
  visit(on_numbers, NumbersField<R, T>{{record, #x},    \
                                       &R::x##_size,    \
                                       &R::x,           \
                                       &R::set_##x,     \
                                       &R::add_##x,     \
                                       &R::x,           \
                                       &R::mutable_##x, \
                                       &R::clear_##x});
#define SUB_MESSAGES(label, M, x, Constant, number)       \
  visit(on_messages, MessagesField<R, M>{{record, #x},    \
                                         &R::x##_size,    \
                                         &R::x,           \
                                         &R::mutable_##x, \
                                         &R::add_##x,     \
                                         &R::x,           \
                                         &R::mutable_##x, \
                                         &R::clear_##x});
#include "tests/support/schema.def"
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
