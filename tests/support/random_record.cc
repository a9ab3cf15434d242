#include "tests/support/random_record.h"

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "tests/support/random_numbers.h"
#include "tests/support/records.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Descriptor;
using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::UnknownFieldSet;

constexpr int kMaxFieldNumber = (1 << 29) - 1;
constexpr int kMaxUnknownGroupDepth = 3;

bool Chance(std::mt19937* random, int percent) { return Below(random, 100) < percent; }

template <class T>
T OneOf(std::mt19937* random, const std::vector<T>& values) {
  return values[Below(random, static_cast<int>(values.size()))];
}

std::string RandomString(std::mt19937* random, bool only_text) {
  int length = Below(random, 20);
  const int choice = Below(random, 100);
  if (choice < 25) {
    length = 0;
  } else if (choice < 40) {
    length = 127 + Below(random, 2);
  } else if (choice < 45) {
    length = 280 + Below(random, 40);
  } else if (choice == 45) {
    length = 16383 + Below(random, 2);
  }
  const bool text = only_text || Chance(random, 80);
  std::string bytes;
  for (int i = 0; i < length; ++i) {
    bytes.push_back(static_cast<char>(text ? ' ' + Below(random, 95) : Below(random, 256)));
  }
  return bytes;
}

void SetRandomly(std::mt19937* random, const RandomOptions& options, const FieldDescriptor* f,
                 Message* m) {
  const Reflection* r = m->GetReflection();
  const bool add = f->is_repeated();
  const bool boundary = Chance(random, 60);
  switch (f->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE: {
      const double value =
          DoubleOf(boundary ? OneOf(random, BoundaryDoubleBits()) : Random64(random));
      return add ? r->AddDouble(m, f, value) : r->SetDouble(m, f, value);
    }
    case FieldDescriptor::CPPTYPE_FLOAT: {
      const float value = FloatOf(boundary ? OneOf(random, BoundaryFloatBits())
                                           : static_cast<uint32_t>((*random)()));
      return add ? r->AddFloat(m, f, value) : r->SetFloat(m, f, value);
    }
    case FieldDescriptor::CPPTYPE_INT32: {
      const int32_t value =
          boundary ? OneOf(random, BoundaryInt32()) : static_cast<int32_t>((*random)());
      return add ? r->AddInt32(m, f, value) : r->SetInt32(m, f, value);
    }
    case FieldDescriptor::CPPTYPE_INT64: {
      const int64_t value =
          boundary ? OneOf(random, BoundaryInt64()) : static_cast<int64_t>(Random64(random));
      return add ? r->AddInt64(m, f, value) : r->SetInt64(m, f, value);
    }
    case FieldDescriptor::CPPTYPE_BOOL: {
      const bool value = Chance(random, 50);
      return add ? r->AddBool(m, f, value) : r->SetBool(m, f, value);
    }
    case FieldDescriptor::CPPTYPE_STRING: {
      const bool only_text = options.only_text && f->type() == FieldDescriptor::TYPE_STRING;
      const std::string value = RandomString(random, only_text);
      return add ? r->AddString(m, f, value) : r->SetString(m, f, value);
    }
    case FieldDescriptor::CPPTYPE_MESSAGE:
      return FillRandomly(random, options, add ? r->AddMessage(m, f) : r->MutableMessage(m, f));
    default:
      ADD_FAILURE() << f->full_name() << ": a field of type " << f->cpp_type_name()
                    << " is not served here";
  }
}

int UnknownNumber(std::mt19937* random, const Descriptor* descriptor) {
  static const std::vector<int> kNumbers = {10,  15,   16,   20,     21,
                                            200, 2047, 2048, 262143, kMaxFieldNumber};
  for (;;) {
    const int number = OneOf(random, kNumbers);
    if (descriptor->FindFieldByNumber(number) == nullptr) return number;
  }
}

void AddUnknownField(std::mt19937* random, int number, int depth, UnknownFieldSet* fields) {
  switch (Below(random, depth < kMaxUnknownGroupDepth ? 5 : 4)) {
    case 0:
      fields->AddVarint(number, Chance(random, 50)
                                    ? static_cast<uint64_t>(OneOf(random, BoundaryInt64()))
                                    : Random64(random));
      return;
    case 1:
      fields->AddFixed32(number, static_cast<uint32_t>((*random)()));
      return;
    case 2:
      fields->AddFixed64(number, Random64(random));
      return;
    case 3:
      fields->AddLengthDelimited(number, RandomString(random, false));
      return;
    default: {
      UnknownFieldSet* group = fields->AddGroup(number);
      const int count = Below(random, 3);
      // Inside an unknown group every number is unknown.
      for (int i = 0; i < count; ++i) {
        AddUnknownField(random, 1 + Below(random, 20), depth + 1, group);
      }
    }
  }
}

void FillFullyFrom(int* counter, Message* m) {
  const Descriptor* descriptor = m->GetDescriptor();
  const Reflection* r = m->GetReflection();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* f = descriptor->field(i);
    const bool add = f->is_repeated();
    const int elements = add ? 2 + f->number() % 2 : 1;
    for (int element = 0; element < elements; ++element) {
      const int n = ++*counter;
      switch (f->cpp_type()) {
        case FieldDescriptor::CPPTYPE_DOUBLE:
          add ? r->AddDouble(m, f, n + 0.125) : r->SetDouble(m, f, n + 0.125);
          break;
        case FieldDescriptor::CPPTYPE_FLOAT:
          add ? r->AddFloat(m, f, static_cast<float>(n) + 0.5f)
              : r->SetFloat(m, f, static_cast<float>(n) + 0.5f);
          break;
        case FieldDescriptor::CPPTYPE_INT32:
          add ? r->AddInt32(m, f, n % 2 == 0 ? n * 1001 : -n)
              : r->SetInt32(m, f, n % 2 == 0 ? n * 1001 : -n);
          break;
        case FieldDescriptor::CPPTYPE_INT64:
          add ? r->AddInt64(m, f, n * int64_t{10000000000})
              : r->SetInt64(m, f, n * int64_t{10000000000});
          break;
        case FieldDescriptor::CPPTYPE_BOOL:
          add ? r->AddBool(m, f, true) : r->SetBool(m, f, true);
          break;
        case FieldDescriptor::CPPTYPE_STRING: {
          const std::string value = f->name() + "-" + std::to_string(n);
          add ? r->AddString(m, f, value) : r->SetString(m, f, value);
          break;
        }
        case FieldDescriptor::CPPTYPE_MESSAGE:
          FillFullyFrom(counter, add ? r->AddMessage(m, f) : r->MutableMessage(m, f));
          break;
        default:
          ADD_FAILURE() << f->full_name() << ": a field of type " << f->cpp_type_name()
                        << " is not served here";
      }
    }
  }
}

}  // namespace

void FillRandomly(std::mt19937* random, const RandomOptions& options, Message* message) {
  const Descriptor* descriptor = message->GetDescriptor();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* f = descriptor->field(i);
    const bool set = Chance(random, options.percent_set);
    if (!set && !(f->is_required() && options.always_required)) continue;
    const int elements = f->is_repeated() ? 1 + Below(random, 3) : 1;
    for (int element = 0; element < elements; ++element) SetRandomly(random, options, f, message);
  }
  if (options.unknown_fields && Chance(random, 30)) AddRandomUnknown(random, message);
}

void AddRandomUnknown(std::mt19937* random, Message* message) {
  UnknownFieldSet* fields = message->GetReflection()->MutableUnknownFields(message);
  const int count = 1 + Below(random, 3);
  for (int i = 0; i < count; ++i) {
    AddUnknownField(random, UnknownNumber(random, message->GetDescriptor()), 0, fields);
  }
}

void FillFully(Message* message) {
  int counter = 0;
  FillFullyFrom(&counter, message);
}

std::unique_ptr<Message> FullRecord(const std::string& name) {
  std::unique_ptr<Message> record = NewRecord(name);
  FillFully(record.get());
  return record;
}

const std::vector<int32_t>& BoundaryInt32() {
  static const std::vector<int32_t> values = {
      std::numeric_limits<int32_t>::min(), -1, 0, 1, 127, 128, 16383, 16384,
      std::numeric_limits<int32_t>::max()};
  return values;
}

const std::vector<int64_t>& BoundaryInt64() {
  static const std::vector<int64_t> values = {std::numeric_limits<int64_t>::min(),
                                              std::numeric_limits<int32_t>::min(),
                                              -1,
                                              0,
                                              1,
                                              127,
                                              128,
                                              16383,
                                              16384,
                                              (int64_t{1} << 35) - 1,
                                              int64_t{1} << 35,
                                              (int64_t{1} << 56) - 1,
                                              int64_t{1} << 56,
                                              std::numeric_limits<int64_t>::max()};
  return values;
}

// Where numbers pass through registers of the x87 (i386), a signalling NaN becomes a quiet one on
// the way, as docs/run-times.md tells: it is no sample there.
const std::vector<uint32_t>& BoundaryFloatBits() {
  static const std::vector<uint32_t> values = {
      0x00000000, 0x80000000,              // 0.0, -0.0
      0x00000001, 0x807FFFFF, 0x00800000,  // denormals, the smallest normal
      0x3F800000, 0xBF800000,              // 1, -1
      0x7F7FFFFF, 0x7F800000, 0xFF800000,  // the largest, infinities
      0x7FC00000, 0xFFC00000, 0x7FC12345,  // quiet NaNs
#ifndef __i386__
      0x7F800001, 0xFFABCDEF,  // signalling NaNs
#endif
  };
  return values;
}

const std::vector<uint64_t>& BoundaryDoubleBits() {
  static const std::vector<uint64_t> values = {
      0x0000000000000000, 0x8000000000000000,                      // 0.0, -0.0
      0x0000000000000001, 0x800FFFFFFFFFFFFF, 0x0010000000000000,  // denormals, smallest normal
      0x3FF0000000000000, 0xBFF0000000000000,                      // 1, -1
      0x7FEFFFFFFFFFFFFF, 0x7FF0000000000000, 0xFFF0000000000000,  // largest, infinities
      0x7FF8000000000000, 0xFFF8000000000000, 0x7FF8123456789ABC,  // quiet NaNs
#ifndef __i386__
      0x7FF0000000000001, 0xFFF123456789ABCD,  // signalling NaNs
#endif
  };
  return values;
}

const std::vector<int>& BoundaryLengths() {
  static const std::vector<int> values = {0, 1, 127, 128, 16383, 16384};
  return values;
}

uint32_t FloatBits(uint32_t bits) {
#ifdef __i386__
  if ((bits & 0x7FFFFFFF) > 0x7F800000) bits |= 0x00400000;
#endif
  return bits;
}

uint64_t DoubleBits(uint64_t bits) {
#ifdef __i386__
  if ((bits & 0x7FFFFFFFFFFFFFFF) > 0x7FF0000000000000) bits |= 0x0008000000000000;
#endif
  return bits;
}

float FloatOf(uint32_t bits) {
  bits = FloatBits(bits);
  float value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

double DoubleOf(uint64_t bits) {
  bits = DoubleBits(bits);
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
