// Classes that the generator makes from shapes.proto: what holds for the records of
// calibration.proto must hold for any schema that the generator serves.
//
// The run-time's own dynamic messages of the same descriptors are the judge. Every test runs over
// all messages of the schema.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <cstring>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/protogen/shapes.pb.h"
#include "tests/support/entrances.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::LogSilencer;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::io::CodedInputStream;

using MessagePtr = std::unique_ptr<Message>;

// A class, with the calls that only a concrete class has.
struct Shape {
  std::string name;
  MessagePtr (*make)();
  const Message& (*default_instance)();
  void (*swap)(Message*, Message*);
  std::vector<Entrance> readers;  // partial ones
  std::vector<Exit> writers;
};

template <class T>
Shape ShapeOf() {
  Shape shape;
  shape.name = T::descriptor()->name();
  shape.make = []() -> MessagePtr { return MessagePtr(new T); };
  shape.default_instance = []() -> const Message& { return T::default_instance(); };
  shape.swap = [](Message* a, Message* b) { static_cast<T*>(a)->Swap(static_cast<T*>(b)); };
  for (const Entrance& entrance : GenericEntrances()) {
    if (entrance.partial) shape.readers.push_back(entrance);
  }
  shape.readers.push_back({"ParsePartialFromString, concrete", Source::kMemory, true, false,
                           [](Message* to, const std::string& bytes) {
                             return static_cast<T*>(to)->ParsePartialFromString(bytes);
                           }});
  shape.readers.push_back({"MergePartialFromCodedStream, concrete", Source::kStream, true, true,
                           [](Message* to, const std::string& bytes) {
                             CodedInputStream input(reinterpret_cast<const uint8_t*>(bytes.data()),
                                                    static_cast<int>(bytes.size()));
                             return static_cast<T*>(to)->MergePartialFromCodedStream(&input) &&
                                    input.ConsumedEntireMessage();
                           }});
  for (const Exit& exit : GenericExits()) {
    if (exit.partial) shape.writers.push_back(exit);
  }
  shape.writers.push_back(
      {"SerializePartialToString, concrete", true, [](const Message& from, std::string* bytes) {
         return static_cast<const T&>(from).SerializePartialToString(bytes);
       }});
  shape.writers.push_back(
      {"SerializeWithCachedSizes, concrete", true, [](const Message& from, std::string* bytes) {
         const T& record = static_cast<const T&>(from);
         const int size = record.ByteSize();
         bytes->clear();
         {
           ::google::protobuf::io::StringOutputStream stream(bytes);
           ::google::protobuf::io::CodedOutputStream output(&stream);
           record.SerializeWithCachedSizes(&output);
         }
         return bytes->size() == static_cast<size_t>(size);
       }});
  shape.writers.push_back({"SerializeWithCachedSizesToArray, concrete", true,
                           [](const Message& from, std::string* bytes) {
                             const T& record = static_cast<const T&>(from);
                             const int size = record.ByteSize();
                             bytes->assign(static_cast<size_t>(size) + 1, '\x5A');
                             uint8_t* begin = reinterpret_cast<uint8_t*>(&(*bytes)[0]);
                             const bool fits =
                                 record.SerializeWithCachedSizesToArray(begin) == begin + size;
                             const bool untouched = bytes->back() == '\x5A';
                             bytes->pop_back();
                             return fits && untouched;
                           }});
  return shape;
}

template <class... T>
std::vector<Shape> ShapesOf(::testing::Types<T...>) {
  return {ShapeOf<T>()...};
}

using LongName =
    shapes::AMessageWhoseNameIsSoLongThatHardlyAnyLineOfCodeInWhichItStandsCanBeKeptWithinItsLimit;

// In the order of the file.
const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> all = ShapesOf(
      ::testing::Types<
          shapes::OneFloat, shapes::OneBool, shapes::OneText, shapes::OneRepeated,
          shapes::OneSubMessage, shapes::OneElementList, shapes::Defaults, shapes::AllRequired,
          shapes::SomeRequired, shapes::Bools, shapes::Wide, shapes::Runs,
          shapes::GapsBetweenNumbers, shapes::OneRun, shapes::ManyNeighbours, shapes::TwoByteTags,
          shapes::NumbersFirst, shapes::PartsFirst, shapes::OnlyRepeated, shapes::OnlyTexts,
          shapes::Reaching, shapes::Far, LongName, shapes::LongNames, shapes::Comments>());
  return all;
}

// What all writers write, or a failure where they do not agree.
std::string Written(const Shape& shape, const Message& record) {
  std::string first;
  for (const Exit& writer : shape.writers) {
    std::string bytes;
    EXPECT_TRUE(writer.write(record, &bytes)) << writer.name;
    if (&writer == &shape.writers.front()) first = bytes;
    EXPECT_TRUE(bytes == first) << writer.name << " and " << shape.writers.front().name
                                << " write different bytes";
  }
  return first;
}

// Checks that all readers take the bytes for `expected`.
void CheckRead(const Shape& shape, const std::string& bytes, const Message& expected) {
  const LogSilencer silencer;
  for (const Entrance& reader : shape.readers) {
    const MessagePtr record = shape.make();
    EXPECT_TRUE(reader.parse(record.get(), bytes)) << reader.name;
    EXPECT_TRUE(EqualByReflection(*record, expected)) << reader.name;
  }
}

// Writes a record with all writers, compares with what a dynamic message writes, reads it back.
std::string CheckRoundTrip(const Shape& shape, const Message& record) {
  const LogSilencer silencer;
  std::string bytes = Written(shape, record);
  EXPECT_TRUE(bytes == DynamicTwin(record)->SerializePartialAsString())
      << "a dynamic message writes other bytes";
  CheckRead(shape, bytes, record);
  const MessagePtr dynamic = NewDynamic(record.GetDescriptor());
  EXPECT_TRUE(dynamic->ParsePartialFromString(bytes));
  EXPECT_TRUE(EqualByReflection(*dynamic, record)) << "a dynamic message reads something else";
  return bytes;
}

template <class F>
void ForEachField(const Message& record, F f) {
  for (int i = 0; i < record.GetDescriptor()->field_count(); ++i) {
    const FieldDescriptor* field = record.GetDescriptor()->field(i);
    SCOPED_TRACE(field->full_name());
    f(field);
  }
}

class ShapesTest : public ::testing::TestWithParam<const Shape*> {
 protected:
  const Shape& shape() const { return *GetParam(); }
  MessagePtr New() const { return shape().make(); }
};

std::vector<const Shape*> Pointers() {
  std::vector<const Shape*> pointers;
  for (const Shape& shape : Shapes()) pointers.push_back(&shape);
  return pointers;
}

INSTANTIATE_TEST_SUITE_P(All, ShapesTest, ::testing::ValuesIn(Pointers()),
                         [](const ::testing::TestParamInfo<const Shape*>& info) {
                           return info.param->name;
                         });

TEST(ShapesFileTest, EveryMessageIsTested) {
  const ::google::protobuf::FileDescriptor* file = shapes::OneFloat::descriptor()->file();
  EXPECT_EQ(file->name(), "tests/protogen/shapes.proto");
  EXPECT_EQ(file->package(), "zarvo.calibration.shapes");
  ASSERT_EQ(static_cast<size_t>(file->message_type_count()), Shapes().size());
  for (int i = 0; i < file->message_type_count(); ++i) {
    EXPECT_EQ(file->message_type(i)->name(), Shapes()[i].name);
  }
}

// Of two floating-point numbers, which may be NaNs or zeros of either sign.
template <class T>
bool SameBits(T a, T b) {
  return std::memcmp(&a, &b, sizeof a) == 0;  // NOLINT(bugprone-suspicious-memory-comparison)
}

// Scalars of an empty record hold what the schema declares, in the object itself.
void CheckDefaults(const Message& record) {
  ForEachField(record, [&](const FieldDescriptor* f) {
    const Reflection* r = record.GetReflection();
    if (f->is_repeated()) {
      EXPECT_EQ(r->FieldSize(record, f), 0);
      return;
    }
    EXPECT_FALSE(r->HasField(record, f));
    switch (f->cpp_type()) {
      case FieldDescriptor::CPPTYPE_DOUBLE: {
        const double value = r->GetDouble(record, f);
        EXPECT_TRUE(SameBits(value, f->default_value_double())) << value;
        break;
      }
      case FieldDescriptor::CPPTYPE_FLOAT: {
        const float value = r->GetFloat(record, f);
        EXPECT_TRUE(SameBits(value, f->default_value_float())) << value;
        break;
      }
      case FieldDescriptor::CPPTYPE_INT32:
        EXPECT_EQ(r->GetInt32(record, f), f->default_value_int32());
        break;
      case FieldDescriptor::CPPTYPE_INT64:
        EXPECT_EQ(r->GetInt64(record, f), f->default_value_int64());
        break;
      case FieldDescriptor::CPPTYPE_BOOL:
        EXPECT_EQ(r->GetBool(record, f), f->default_value_bool());
        break;
      case FieldDescriptor::CPPTYPE_STRING:
        EXPECT_EQ(r->GetString(record, f), "");
        break;
      default:
        EXPECT_EQ(r->GetMessage(record, f).SerializePartialAsString(), "");
    }
  });
}

TEST_P(ShapesTest, StartsEmptyAndIsEmptyWhenCleared) {
  const MessagePtr record = New();
  CheckDefaults(*record);
  CheckDefaults(shape().default_instance());
  EXPECT_EQ(HasBits(*record), 0u);
  EXPECT_EQ(CheckRoundTrip(shape(), *record), "");
  FillFully(record.get());
  EXPECT_FALSE(Written(shape(), *record).empty());
  record->Clear();
  CheckDefaults(*record);
  EXPECT_EQ(HasBits(*record), 0u);
  EXPECT_EQ(CheckRoundTrip(shape(), *record), "");
}

// The values that a field is tried with; each is set, or added, by one function.
std::vector<std::function<void(Message*)>> ValuesOf(const FieldDescriptor* f) {
  std::vector<std::function<void(Message*)>> values;
  const bool add = f->is_repeated();
  const auto put = [&](auto set, auto add_one, auto value) {
    values.push_back([=](Message* m) {
      add ? (m->GetReflection()->*add_one)(m, f, value) : (m->GetReflection()->*set)(m, f, value);
    });
  };
  switch (f->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      for (const uint64_t bits : BoundaryDoubleBits())
        put(&Reflection::SetDouble, &Reflection::AddDouble, DoubleOf(bits));
      break;
    case FieldDescriptor::CPPTYPE_FLOAT:
      for (const uint32_t bits : BoundaryFloatBits())
        put(&Reflection::SetFloat, &Reflection::AddFloat, FloatOf(bits));
      break;
    case FieldDescriptor::CPPTYPE_INT32:
      for (const int32_t value : BoundaryInt32())
        put(&Reflection::SetInt32, &Reflection::AddInt32, value);
      break;
    case FieldDescriptor::CPPTYPE_INT64:
      for (const int64_t value : BoundaryInt64())
        put(&Reflection::SetInt64, &Reflection::AddInt64, value);
      break;
    case FieldDescriptor::CPPTYPE_BOOL:
      for (const bool value : {false, true}) put(&Reflection::SetBool, &Reflection::AddBool, value);
      break;
    case FieldDescriptor::CPPTYPE_STRING:
      for (const int length : BoundaryLengths()) {
        const std::string value(static_cast<size_t>(length), 'x');
        values.push_back([=](Message* m) { m->GetReflection()->SetString(m, f, value); });
      }
      break;
    default:
      for (const bool full : {false, true}) {
        values.push_back([=](Message* m) {
          const Reflection* r = m->GetReflection();
          Message* part = add ? r->AddMessage(m, f) : r->MutableMessage(m, f);
          if (full) FillFully(part);
        });
      }
  }
  return values;
}

TEST_P(ShapesTest, EveryFieldAlone) {
  ForEachField(*New(), [&](const FieldDescriptor* f) {
    const MessagePtr all = New();
    for (const auto& put : ValuesOf(f)) {
      const MessagePtr record = New();
      put(record.get());
      put(all.get());
      EXPECT_EQ(HasBits(*record), f->is_repeated() ? 0u : 1u << f->index());
      EXPECT_FALSE(CheckRoundTrip(shape(), *record).empty());
      record->GetReflection()->ClearField(record.get(), f);
      EXPECT_EQ(HasBits(*record), 0u);
      CheckDefaults(*record);
    }
    CheckRoundTrip(shape(), *all);  // where f repeats, all values
  });
}

TEST_P(ShapesTest, AllFields) {
  const MessagePtr record = New();
  FillFully(record.get());
  EXPECT_TRUE(record->IsInitialized());
  CheckRoundTrip(shape(), *record);
}

TEST_P(ShapesTest, AllFieldsButOne) {
  ForEachField(*New(), [&](const FieldDescriptor* f) {
    const MessagePtr record = New();
    FillFully(record.get());
    record->GetReflection()->ClearField(record.get(), f);
    CheckRoundTrip(shape(), *record);
    EXPECT_EQ(record->IsInitialized(), !f->is_required());
  });
}

// Merging, copying and exchanging random records does what it does to dynamic messages.
TEST_P(ShapesTest, RandomRecords) {
  const LogSilencer silencer;
  for (uint32_t seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    RandomOptions options;
    options.percent_set = seed % 2 == 0 ? kSparse : kDense;
    options.always_required = seed % 3 != 0;
    const MessagePtr a = New(), b = New();
    FillRandomly(&random, options, a.get());
    FillRandomly(&random, options, b.get());
    const MessagePtr dynamic_a = DynamicTwin(*a), dynamic_b = DynamicTwin(*b);
    CheckRoundTrip(shape(), *a);
    EXPECT_EQ(a->IsInitialized(), dynamic_a->IsInitialized());

    const MessagePtr copy = New();
    FillFully(copy.get());
    copy->CopyFrom(*a);
    EXPECT_TRUE(EqualByReflection(*copy, *a));

    shape().swap(copy.get(), b.get());
    EXPECT_TRUE(EqualByReflection(*b, *dynamic_a));
    EXPECT_TRUE(EqualByReflection(*copy, *dynamic_b));
    shape().swap(copy.get(), b.get());

    const MessagePtr from_dynamic = New();
    from_dynamic->MergeFrom(*dynamic_a);
    EXPECT_TRUE(EqualByReflection(*from_dynamic, *a));

    const std::string both = Written(shape(), *a) + Written(shape(), *b);
    a->MergeFrom(*b);
    dynamic_a->MergeFrom(*dynamic_b);
    EXPECT_TRUE(EqualByReflection(*a, *dynamic_a));
    EXPECT_EQ(a->IsInitialized(), dynamic_a->IsInitialized());
    CheckRoundTrip(shape(), *a);
    CheckRead(shape(), both, *a);  // concatenated encodings merge
  }
}

// A record that is cut off is refused, unless the cut leaves whole fields.
TEST_P(ShapesTest, EveryPrefix) {
  const LogSilencer silencer;
  const MessagePtr full = New();
  FillFully(full.get());
  const std::string bytes = full->SerializeAsString();
  // Long records: all of the first bytes, then samples.
  for (size_t size = 0; size < bytes.size(); size += size < 300 ? 1 : 7) {
    const std::string prefix = bytes.substr(0, size);
    int accepted = 0;
    for (const Entrance& reader : shape().readers) {
      const MessagePtr record = New();
      if (!reader.parse(record.get(), prefix)) continue;
      ++accepted;
      EXPECT_TRUE(record->SerializePartialAsString() == prefix)
          << reader.name << " loses something of the first " << size << " bytes";
    }
    EXPECT_TRUE(accepted == 0 || accepted == static_cast<int>(shape().readers.size()))
        << accepted << " of " << shape().readers.size() << " readers accept the first " << size
        << " bytes";
  }
}

// Repeated numbers come one a tag, as a packed run, or as both in turn.
TEST_P(ShapesTest, EncodingsOfRepeatedNumbers) {
  ForEachField(*New(), [&](const FieldDescriptor* f) {
    const bool is_double = f->cpp_type() == FieldDescriptor::CPPTYPE_DOUBLE;
    if (!f->is_repeated() || f->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) return;
    const int number = f->number();
    const auto values = [&](int first, int count) {
      WireWriter out;
      for (int i = 0; i < count; ++i) {
        is_double ? out.Double(first + i) : out.Float(static_cast<float>(first + i));
      }
      return out.bytes();
    };
    const auto one = [&](int value) {
      return WireWriter()
          .Tag(number, is_double ? kFixed64 : kFixed32)
          .Raw(values(value, 1))
          .bytes();
    };
    const auto packed = [&](int first, int count) {
      return WireWriter()
          .Tag(number, kLengthDelimited)
          .LengthDelimited(values(first, count))
          .bytes();
    };
    const MessagePtr expected = New();
    std::string single;
    for (int i = 0; i < 40; ++i) {
      const Reflection* r = expected->GetReflection();
      is_double ? r->AddDouble(expected.get(), f, i)
                : r->AddFloat(expected.get(), f, static_cast<float>(i));
      single += one(i);
    }
    EXPECT_TRUE(Written(shape(), *expected) == single);
    CheckRead(shape(), single, *expected);
    CheckRead(shape(), packed(0, 40), *expected);
    CheckRead(shape(), packed(0, 0) + one(0) + one(1) + packed(2, 36) + packed(38, 1) + one(39),
              *expected);

    const LogSilencer silencer;
    const std::string torn =
        WireWriter().Tag(number, kLengthDelimited).LengthDelimited(values(0, 2) + "x").bytes();
    for (const Entrance& reader : shape().readers) {
      EXPECT_FALSE(reader.parse(New().get(), torn)) << reader.name;
    }
  });
}

bool Accepts(const FieldDescriptor* f, WireType type) {
  switch (f->type()) {
    case FieldDescriptor::TYPE_DOUBLE:
      return type == kFixed64 || (f->is_repeated() && type == kLengthDelimited);
    case FieldDescriptor::TYPE_FLOAT:
      return type == kFixed32 || (f->is_repeated() && type == kLengthDelimited);
    case FieldDescriptor::TYPE_INT32:
    case FieldDescriptor::TYPE_INT64:
    case FieldDescriptor::TYPE_BOOL:
      return type == kVarint;
    default:
      return type == kLengthDelimited;
  }
}

// A field under a wire type that it does not take is kept as it came, behind a field that is taken.
TEST_P(ShapesTest, WrongWireTypes) {
  ForEachField(*New(), [&](const FieldDescriptor* f) {
    const int n = f->number();
    const struct {
      WireType type;
      std::string bytes;
    } encodings[] = {
        {kVarint, WireWriter().Tag(n, kVarint).Varint(300).bytes()},
        {kFixed64, WireWriter().Tag(n, kFixed64).Fixed64(300).bytes()},
        {kLengthDelimited, WireWriter().Tag(n, kLengthDelimited).LengthDelimited("ab").bytes()},
        {kStartGroup,
         WireWriter().Group(n, WireWriter().Tag(1, kVarint).Varint(1).bytes()).bytes()},
        {kFixed32, WireWriter().Tag(n, kFixed32).Fixed32(300).bytes()},
    };
    for (const auto& encoding : encodings) {
      if (Accepts(f, encoding.type)) continue;
      SCOPED_TRACE("wire type " + std::to_string(encoding.type));
      for (const Entrance& reader : shape().readers) {
        const MessagePtr record = New();
        EXPECT_TRUE(reader.parse(record.get(), encoding.bytes)) << reader.name;
        EXPECT_EQ(HasBits(*record), 0u) << reader.name;
        EXPECT_EQ(record->SerializePartialAsString(), encoding.bytes) << reader.name;
        EXPECT_EQ(EncodeUnknown(record->GetReflection()->GetUnknownFields(*record)), encoding.bytes)
            << reader.name;
      }
    }
  });
}

// One required field missing, here or anywhere below, is missing for all.
TEST_P(ShapesTest, EveryRequiredField) {
  const LogSilencer silencer;
  const MessagePtr full = New();
  FillFully(full.get());
  std::function<void(Message*)> drop_each = [&](Message* part) {
    ForEachField(*part, [&](const FieldDescriptor* f) {
      const Reflection* r = part->GetReflection();
      if (f->is_required()) {
        const MessagePtr kept(part->New());
        kept->CopyFrom(*part);
        r->ClearField(part, f);
        EXPECT_FALSE(full->IsInitialized());
        EXPECT_FALSE(New()->ParseFromString(full->SerializePartialAsString()));
        EXPECT_TRUE(Written(shape(), *full) == DynamicTwin(*full)->SerializePartialAsString());
        part->CopyFrom(*kept);
        EXPECT_TRUE(full->IsInitialized());
      } else if (f->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        if (f->is_repeated()) {
          drop_each(r->MutableRepeatedMessage(part, f, r->FieldSize(*part, f) - 1));
        } else {
          drop_each(r->MutableMessage(part, f));
        }
      }
    });
  };
  drop_each(full.get());
}

// The run-time throws what it reports as fatal; nobody catches it but a test.
TEST_P(ShapesTest, SelfMergeIsFatal) {
  const MessagePtr record = New();
  try {
    record->MergeFrom(*record);
    ADD_FAILURE() << "merged";
  } catch (const std::exception& e) {
    const std::string text = "CHECK failed: false: tests/protogen/shapes.pb.cc:";
    EXPECT_EQ(std::string(e.what()).substr(0, text.size()), text);
  }
}

// --- Accessors, called by name
// --------------------------------------------------------------------

template <class T>
T FromText(const std::string& text) {
  T record;
  EXPECT_TRUE(::google::protobuf::TextFormat::ParseFromString(text, &record)) << text;
  return record;
}

TEST(ShapesAccessorsTest, Defaults) {
  const shapes::Defaults record;
  EXPECT_EQ(record.on(), true);
  EXPECT_EQ(record.off(), false);
  EXPECT_EQ(record.least32(), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(record.most32(), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(record.minus_one(), -1);
  EXPECT_EQ(record.hexadecimal(), 127);
  EXPECT_EQ(record.least64(), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(record.most64(), std::numeric_limits<int64_t>::max());
  EXPECT_EQ(record.five_billion(), 5000000000);
  EXPECT_EQ(record.minus_five_billion(), -5000000000);
  EXPECT_EQ(record.small(), -3);
  EXPECT_EQ(record.negative(), -1.5f);
  EXPECT_TRUE(SameBits(record.minus_zero(), -0.0f));
  EXPECT_TRUE(SameBits(record.tiny(), FloatOf(1)));
  EXPECT_EQ(record.huge(), 1e38f);
  EXPECT_TRUE(SameBits(record.third(), 1.0f / 3));
  EXPECT_TRUE(SameBits(record.tenth(), 0.1));
  EXPECT_TRUE(SameBits(record.minus_zero_double(), -0.0));
  EXPECT_TRUE(SameBits(record.tiny_double(), DoubleOf(1)));
  EXPECT_EQ(record.huge_double(), std::numeric_limits<double>::max());
  EXPECT_EQ(record.whole(), -1000000);
  EXPECT_TRUE(SameBits(record.plain(), 0.0f));
  EXPECT_EQ(record.plain64(), 0);

  shapes::Defaults set;
  set.set_on(false);
  set.set_least64(7);
  EXPECT_TRUE(set.has_on());
  EXPECT_FALSE(set.on());
  EXPECT_TRUE(EqualByReflection(set, FromText<shapes::Defaults>("on: false least64: 7")));
  set.clear_on();
  set.clear_least64();
  EXPECT_FALSE(set.has_on());
  EXPECT_TRUE(set.on());
  EXPECT_EQ(set.least64(), std::numeric_limits<int64_t>::min());
}

TEST(ShapesAccessorsTest, ThirtyTwoFields) {
  shapes::Wide record;
  record.set_d0(-0.25);
  record.set_f1(1.5f);
  record.set_i2(-2);
  record.set_i3(-3000000000);
  record.set_b4(true);
  record.set_s5("five");
  record.set_y6("six\0!", 5);
  record.mutable_m7()->set_x(7);
  record.set_i8(8);
  record.set_i9(9);
  record.set_f10(10);
  record.set_i11(11);
  record.add_rd12(12);
  record.add_rd12(12.5);
  record.add_rf13(13);
  record.add_rm14()->set_x(14);
  record.add_rm14();
  record.add_rd15(15);
  record.add_rf16(16);
  record.add_rm17()->set_x("17");
  record.add_rd18(18);
  *record.mutable_s19() = "19";
  record.add_rf20(20);
  record.add_rf21(21);
  record.add_rf22(22);
  record.add_rd23(23);
  record.set_f24(24);
  EXPECT_EQ(record.f25(), 25);
  record.set_f25(-25);
  record.set_b26(false);
  record.set_allocated_y27(new std::string("27"));
  record.mutable_m28()->set_h(28);
  record.add_rm29()->set_stamp(29);
  record.set_i30(-30);
  record.set_s31(std::string("31"));
  const shapes::Wide expected = FromText<shapes::Wide>(
      "d0: -0.25 f1: 1.5 i2: -2 i3: -3000000000 b4: true s5: 'five' y6: 'six\\000!' m7 { x: 7 }"
      "i8: 8 i9: 9 f10: 10 i11: 11 rd12: 12 rd12: 12.5 rf13: 13 rm14 { x: 14 } rm14 { } rd15: 15 "
      "rf16: 16 rm17 { x: '17' } rd18: 18 s19: '19' rf20: 20 rf21: 21 rf22: 22 rd23: 23 "
      "f24: 24 f25: -25 b26: false y27: '27' i30: -30 s31: '31'");
  shapes::Wide whole = expected;
  whole.mutable_m28()->set_h(28);
  whole.add_rm29()->set_stamp(29);
  EXPECT_TRUE(EqualByReflection(record, whole));
  // Bits 12 to 18 and 20 to 23, and 29, are of repeated fields.
  EXPECT_EQ(HasBits(record), 0xDF080FFFu);

  EXPECT_EQ(record.d0(), -0.25);
  EXPECT_EQ(record.i3(), -3000000000);
  EXPECT_TRUE(record.b4());
  EXPECT_EQ(record.y6(), std::string("six\0!", 5));
  EXPECT_EQ(record.m7().x(), 7);
  EXPECT_EQ(record.rd12_size(), 2);
  EXPECT_EQ(record.rd12(1), 12.5);
  EXPECT_EQ(record.rm14(0).x(), 14);
  EXPECT_TRUE(record.has_b26());
  EXPECT_FALSE(record.b26());
  EXPECT_TRUE(record.has_s31());
  EXPECT_EQ(record.s31(), "31");
  record.clear_s31();
  EXPECT_FALSE(record.has_s31());
  EXPECT_TRUE(record.has_i30());
  EXPECT_EQ(HasBits(record), 0x5F080FFFu);
}

TEST(ShapesAccessorsTest, FieldNumbers) {
  EXPECT_EQ(int{shapes::OneRepeated::kXFieldNumber}, 2047);
  EXPECT_EQ(int{shapes::Wide::kD0FieldNumber}, 2047);
  EXPECT_EQ(int{shapes::Wide::kS31FieldNumber}, 1);
  EXPECT_EQ(int{shapes::TwoByteTags::kLastFloatsFieldNumber}, 2045);
  EXPECT_EQ(&shapes::Wide::kI30FieldNumber, &shapes::Wide::kI30FieldNumber);
}

// Members stand so that nothing is lost between them: 24 bytes that every record has, then 8-byte
// members and pairs of 4-byte ones, then what is left, smaller ones last.
TEST(ShapesLayoutTest, Sizes) {
  EXPECT_EQ(sizeof(shapes::OneBool), 24u + 8);
  EXPECT_EQ(sizeof(shapes::OneFloat), 24u + 8);
  EXPECT_EQ(sizeof(shapes::Bools), 24u + 3 * 8 + 4 + 5 + 7);
  EXPECT_EQ(sizeof(shapes::AllRequired), 24u + 4 * 8 + 4 + 3 + 1);
  EXPECT_EQ(sizeof(shapes::OnlyTexts), 24u + 9 * 8);
}

// In front of each group of eight, Clear() asks for their has-bits, but for groups that cost no
// more to clear: up to four numbers without defaults, or one field. The fields are set and their
// has-bits taken away behind the record's back: what is left tells which groups Clear() passed by.
TEST(ShapesClearTest, GroupsOfEight) {
  const auto cleared_with = [](uint32_t has_bits) {
    shapes::Wide record;
    record.set_d0(1);
    record.set_i3(1);
    record.set_b4(true);
    record.set_i8(1);
    record.set_f10(1);
    record.set_i11(1);
    record.set_f24(1);
    record.set_f25(1);
    record.set_i30(1);
    std::memcpy(reinterpret_cast<char*>(&record) + 2 * sizeof(void*), &has_bits, sizeof has_bits);
    record.Clear();
    EXPECT_EQ(HasBits(record), 0u);
    EXPECT_EQ(record.i8() + record.f10() + static_cast<float>(record.i11()), 0)
        << "the second group is cleared always";
    const bool first = record.d0() == 0;
    EXPECT_EQ(record.i3(), first ? 0 : 1);
    EXPECT_EQ(record.b4(), !first);
    const bool last = record.f24() == 0;
    EXPECT_EQ(record.f25(), last ? 25 : 1);
    EXPECT_EQ(record.i30(), last ? 0 : 1);
    return std::make_pair(first, last);
  };
  EXPECT_EQ(cleared_with(0), std::make_pair(false, false));
  for (int bit = 0; bit < 32; ++bit) {
    if (bit >= 12 && bit < 24) continue;  // repeated fields, and a group without numbers
    EXPECT_EQ(cleared_with(uint32_t{1} << bit), std::make_pair(bit < 8, bit >= 24 && bit != 29))
        << "has-bit " << bit;
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
