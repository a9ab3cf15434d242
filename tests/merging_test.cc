// Merging, copying, and the check for required fields.
//
// What a merge must give is built field by field through reflection (sample_values): putting the
// target's values and then the source's into one empty record is what a merge means.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/sample_values.h"
#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using ::google::protobuf::Reflection;

// Every way to merge or copy, `to` and `from` being records of one class.
struct Route {
  std::string name;
  bool copies;      // else it merges
  bool reflective;  // the source is of another class with the same descriptor
  void (*run)(const Message& from, Message* to);
};

template <class T>
std::vector<Route> RoutesOf() {
  return {
      {"MergeFrom(T)", false, false,
       [](const Message& from, Message* to) {
         static_cast<T*>(to)->MergeFrom(static_cast<const T&>(from));
       }},
      {"MergeFrom(Message)", false, false,
       [](const Message& from, Message* to) { static_cast<T*>(to)->MergeFrom(from); }},
      {"Message::MergeFrom", false, false,
       [](const Message& from, Message* to) { to->MergeFrom(from); }},
      {"MergeFrom(dynamic message)", false, true,
       [](const Message& from, Message* to) {
         static_cast<T*>(to)->MergeFrom(*DynamicTwin(from));
       }},
      {"CopyFrom(T)", true, false,
       [](const Message& from, Message* to) {
         static_cast<T*>(to)->CopyFrom(static_cast<const T&>(from));
       }},
      {"CopyFrom(Message)", true, false,
       [](const Message& from, Message* to) { static_cast<T*>(to)->CopyFrom(from); }},
      {"Message::CopyFrom", true, false,
       [](const Message& from, Message* to) { to->CopyFrom(from); }},
      {"operator=", true, false,
       [](const Message& from, Message* to) {
         static_cast<T&>(*to) = static_cast<const T&>(from);
       }},
      {"CopyFrom(dynamic message)", true, true,
       [](const Message& from, Message* to) { static_cast<T*>(to)->CopyFrom(*DynamicTwin(from)); }},
      {"copy constructor", true, false,
       [](const Message& from, Message* to) {
         T copy(static_cast<const T&>(from));
         EXPECT_EQ(copy.GetCachedSize(), 0);
         copy.Swap(static_cast<T*>(to));
       }},
  };
}

struct RecordClass {
  const MessageRow* message;
  const RecordType* type;
  std::vector<Route> routes;
};

const std::vector<RecordClass>& Classes() {
  static const std::vector<RecordClass> classes = [] {
    std::vector<RecordClass> all;
    ForEachRecord([&all](auto type) {
      using T = typename decltype(type)::Type;
      const size_t index = all.size();
      all.push_back({&Schema()[index], &RecordTypes()[index], RoutesOf<T>()});
      EXPECT_EQ(T::descriptor()->name(), Schema()[index].name);
    });
    return all;
  }();
  return classes;
}

// One value at its place: in a field of the record, in a field of one of its sub-messages, or among
// the unknown fields.
struct Place {
  const FieldRow* outer;  // null: in the record itself
  const FieldRow* field;  // null: an unknown field
};

std::string NameOf(const Place& place) {
  return (place.outer == nullptr ? "" : std::string(place.outer->name) + ".") +
         (place.field == nullptr ? "(unknown)" : place.field->name);
}

std::vector<Place> PlacesOf(const MessageRow& message) {
  std::vector<Place> places = {{nullptr, nullptr}};
  for (const FieldRow& field : message) {
    places.push_back({nullptr, &field});
    if (field.kind != Kind::kMessage || field.repeated()) continue;
    places.push_back({&field, nullptr});
    for (const FieldRow& inner : FindMessage(field.message_type))
      places.push_back({&field, &inner});
  }
  return places;
}

// `which` chooses one of two values.
void PutAt(const Place& place, size_t which, Message* record) {
  if (place.outer != nullptr) {
    record = record->GetReflection()->MutableMessage(record, DescriptorOf(*record, *place.outer));
  }
  if (place.field == nullptr) {
    record->GetReflection()->MutableUnknownFields(record)->AddVarint(500, which);
  } else {
    const std::vector<SampleValue>& samples = SamplesOf(place.field->kind);
    Put(*place.field, samples[which == 0 ? 1 : samples.size() - 2 + (samples.size() == 2)], record);
  }
}

void ExpectSame(const Message& expected, const Message& actual) {
  EXPECT_TRUE(EqualByReflection(expected, actual));
  EXPECT_EQ(HasBits(expected), HasBits(actual));
}

// The word behind the virtual-table pointer; its lowest bit says that there is a container for
// unknown fields.
bool HasUnknownContainer(const Message& record) {
  uintptr_t word;
  std::memcpy(&word, reinterpret_cast<const char*>(&record) + sizeof(void*), sizeof word);
  return (word & 1) != 0;
}

// --- Every field, every route --------------------------------------------------------------------

// Source and target hold one value each, at any two places: the same field included.
TEST(MergingTest, EveryPairOfPlaces) {
  size_t fields = 0;
  for (const RecordClass& c : Classes()) {
    const std::vector<Place> places = PlacesOf(*c.message);
    fields += static_cast<size_t>(c.message->field_count());
    for (const Place& in_target : places) {
      for (const Place& in_source : places) {
        const std::unique_ptr<Message> source = c.type->make();
        PutAt(in_source, 1, source.get());
        const std::unique_ptr<Message> merged = c.type->make();
        PutAt(in_target, 0, merged.get());
        PutAt(in_source, 1, merged.get());
        for (const Route& route : c.routes) {
          SCOPED_TRACE(std::string(c.message->name) + ", " + route.name + ": " + NameOf(in_source) +
                       " into " + NameOf(in_target));
          const std::unique_ptr<Message> target = c.type->make();
          PutAt(in_target, 0, target.get());
          route.run(*source, target.get());
          ExpectSame(route.copies ? *source : *merged, *target);
        }
      }
    }
  }
  EXPECT_EQ(fields, static_cast<size_t>(kFieldCount));
}

TEST(MergingTest, EveryFieldIntoNothingAndNothingIntoEveryField) {
  for (const RecordClass& c : Classes()) {
    for (const Place& place : PlacesOf(*c.message)) {
      const std::unique_ptr<Message> some = c.type->make();
      PutAt(place, 1, some.get());
      if (place.outer == nullptr && place.field != nullptr) {
        EXPECT_EQ(HasBits(*some), place.field->repeated() ? 0 : 1u << place.field->has_bit);
      }
      const std::unique_ptr<Message> nothing = c.type->make();
      for (const Route& route : c.routes) {
        SCOPED_TRACE(std::string(c.message->name) + ", " + route.name + ": " + NameOf(place));
        std::unique_ptr<Message> target = c.type->make();
        route.run(*some, target.get());
        ExpectSame(*some, *target);

        target = c.type->make();
        PutAt(place, 1, target.get());
        route.run(*nothing, target.get());
        ExpectSame(route.copies ? *nothing : *some, *target);
        EXPECT_EQ(HasBits(*nothing), 0u);
      }
    }
  }
}

TEST(MergingTest, EveryValueOfEveryKind) {
  for (const RecordClass& c : Classes()) {
    for (const FieldRow& field : *c.message) {
      for (const SampleValue& sample : SamplesOf(field.kind)) {
        const std::unique_ptr<Message> source = c.type->make();
        Put(field, sample, source.get());
        for (const Route& route : c.routes) {
          SCOPED_TRACE(std::string(c.message->name) + "." + field.name + ", " + route.name);
          const std::unique_ptr<Message> target = c.type->make();
          route.run(*source, target.get());
          ExpectSame(*source, *target);
        }
      }
    }
  }
}

TEST(MergingTest, FullRecords) {
  for (const RecordClass& c : Classes()) {
    const std::unique_ptr<Message> full = FullRecord(c.message->name);
    std::mt19937 random(11);
    AddRandomUnknown(&random, full.get());
    const std::unique_ptr<Message> source_before = DynamicTwin(*full);
    for (const Route& route : c.routes) {
      SCOPED_TRACE(std::string(c.message->name) + ", " + route.name);
      const std::unique_ptr<Message> target = c.type->make();
      route.run(*full, target.get());
      ExpectSame(*full, *target);

      // Repeated fields and unknown fields double, the rest stays.
      const std::unique_ptr<Message> twice = c.type->make();
      CopyByReflection(*full, twice.get());
      CopyByReflection(*full, twice.get());
      route.run(*full, target.get());
      ExpectSame(route.copies ? *full : *twice, *target);
      EXPECT_TRUE(EqualByReflection(*source_before, *full)) << "the source has changed";
    }
  }
}

TEST(MergingTest, FieldByFieldIntoDefaults) {
  BaseCalibrationProto target, nothing;
  target.MergeFrom(nothing);
  EXPECT_EQ(HasBits(target), 0u);
  EXPECT_EQ(target.wheel_base(), 0.4064f);
  BaseCalibrationProto length;
  length.set_base_length(0.25f);
  target.MergeFrom(length);
  EXPECT_EQ(HasBits(target), 0x04u);
  EXPECT_EQ(target.base_length(), 0.25f);
  EXPECT_EQ(target.base_width(), 0.457f);
}

TEST(MergingTest, AppendsOverwritesAndKeeps) {
  CameraIntrinsics target, source;
  target.add_k(3);
  target.set_fx(10);
  target.set_fy(11);
  source.add_k(1);
  source.add_k(2);
  source.set_fx(20);
  target.MergeFrom(source);
  ASSERT_EQ(target.k_size(), 3);
  EXPECT_EQ(target.k(0), 3);
  EXPECT_EQ(target.k(1), 1);
  EXPECT_EQ(target.k(2), 2);
  EXPECT_EQ(target.fx(), 20);
  EXPECT_EQ(target.fy(), 11);

  CameraCalibration only_fx, only_fy;
  only_fx.mutable_intrinsics()->set_fx(1);
  only_fy.mutable_intrinsics()->set_fy(2);
  only_fy.MergeFrom(only_fx);
  EXPECT_EQ(only_fy.intrinsics().fx(), 1);
  EXPECT_EQ(only_fy.intrinsics().fy(), 2);
}

// --- What is allocated ---------------------------------------------------------------------------

TEST(MergingTest, UnknownFieldContainerOnlyWhereTheSourceHasOne) {
  for (const RecordClass& c : Classes()) {
    const std::unique_ptr<Message> full = FullRecord(c.message->name);
    const std::unique_ptr<Message> unknown = c.type->make();
    unknown->GetReflection()->MutableUnknownFields(unknown.get())->AddVarint(500, 7);
    for (const Route& route : c.routes) {
      if (route.reflective) continue;  // that is the run-time's way
      SCOPED_TRACE(std::string(c.message->name) + ", " + route.name);
      const std::unique_ptr<Message> target = c.type->make();
      route.run(*full, target.get());
      EXPECT_FALSE(HasUnknownContainer(*target));
      route.run(*unknown, target.get());
      EXPECT_TRUE(HasUnknownContainer(*target));
      EXPECT_EQ(EncodeUnknown(target->GetReflection()->GetUnknownFields(*target)),
                EncodeUnknown(unknown->GetReflection()->GetUnknownFields(*unknown)));

      // Even an empty container counts. Reflection, through which a message of another class is
      // merged, looks at the fields in it instead.
      const std::unique_ptr<Message> empty = c.type->make();
      empty->GetReflection()->MutableUnknownFields(empty.get());
      const std::unique_ptr<Message> other_target = c.type->make();
      route.run(*empty, other_target.get());
      EXPECT_TRUE(HasUnknownContainer(*other_target));
    }
  }
}

// The address of the string in a field.
const std::string* StringIn(const Message& record, const FieldRow& field) {
  std::string scratch;
  const std::string& text =
      record.GetReflection()->GetStringReference(record, DescriptorOf(record, field), &scratch);
  EXPECT_NE(&text, &scratch);
  return &text;
}

const Message* SubMessageIn(const Message& record, const FieldRow& field, int element) {
  const Reflection* r = record.GetReflection();
  return field.repeated() ? &r->GetRepeatedMessage(record, DescriptorOf(record, field), element)
                          : &r->GetMessage(record, DescriptorOf(record, field));
}

// Addresses of all strings and sub-messages in the record's own fields.
std::vector<std::pair<std::string, const void*>> Allocated(const Message& record) {
  std::vector<std::pair<std::string, const void*>> all;
  for (const FieldRow& field : FindMessage(record.GetDescriptor()->name())) {
    if (field.kind == Kind::kString || field.kind == Kind::kBytes) {
      all.emplace_back(field.name, StringIn(record, field));
    } else if (field.kind == Kind::kMessage) {
      const int end = field.repeated()
                          ? record.GetReflection()->FieldSize(record, DescriptorOf(record, field))
                          : 1;
      for (int i = 0; i < end; ++i) {
        all.emplace_back(std::string(field.name) + "[" + std::to_string(i) + "]",
                         SubMessageIn(record, field, i));
      }
    }
  }
  return all;
}

TEST(MergingTest, CopiesHoldTheirOwn) {
  for (const RecordClass& c : Classes()) {
    for (const Route& route : c.routes) {
      SCOPED_TRACE(std::string(c.message->name) + ", " + route.name);
      std::unique_ptr<Message> source = FullRecord(c.message->name);
      const std::unique_ptr<Message> target = c.type->make();
      route.run(*source, target.get());
      const auto in_source = Allocated(*source);
      const auto in_target = Allocated(*target);
      ASSERT_EQ(in_source.size(), in_target.size());
      for (size_t i = 0; i < in_source.size(); ++i) {
        EXPECT_NE(in_source[i].second, in_target[i].second) << in_source[i].first;
      }
      source.reset();
      EXPECT_TRUE(EqualByReflection(*FullRecord(c.message->name), *target));
    }
  }
}

// A present but empty string is a string of the target's own, too.
TEST(MergingTest, EmptyStringsArePresentAndOwned) {
  for (const RecordClass& c : Classes()) {
    for (const FieldRow& field : *c.message) {
      if (field.kind != Kind::kString && field.kind != Kind::kBytes) continue;
      const std::unique_ptr<Message> source = c.type->make();
      Put(field, SampleValue(), source.get());
      for (const Route& route : c.routes) {
        SCOPED_TRACE(std::string(c.message->name) + "." + field.name + ", " + route.name);
        const std::unique_ptr<Message> target = c.type->make();
        const std::string* shared = StringIn(*target, field);
        route.run(*source, target.get());
        EXPECT_EQ(HasBits(*target), 1u << field.has_bit);
        EXPECT_NE(StringIn(*target, field), shared);
        EXPECT_EQ(StringIn(c.type->default_instance(), field), shared);
      }
    }
  }
}

TEST(MergingTest, WhatTheTargetHasAllocatedIsUsedAgain) {
  for (const RecordClass& c : Classes()) {
    const std::unique_ptr<Message> source = FullRecord(c.message->name);
    for (const Route& route : c.routes) {
      if (route.name == "copy constructor") continue;  // its target is new
      SCOPED_TRACE(std::string(c.message->name) + ", " + route.name);
      const std::unique_ptr<Message> target = FullRecord(c.message->name);
      const auto before = Allocated(*target);
      // A merge lets repeated elements stay and adds to them; a copy, or a merge after Clear(),
      // fills them again.
      if (!route.copies) target->Clear();
      route.run(*source, target.get());
      const auto after = Allocated(*target);
      ASSERT_EQ(before.size(), after.size());
      for (size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(before[i].second, after[i].second) << before[i].first;
      }
      ExpectSame(*source, *target);

      // Without Clear(), strings and sub-messages stay where they are, elements stay in front.
      if (route.copies) continue;
      route.run(*source, target.get());
      for (const auto& allocated : before) {
        bool found = false;
        for (const auto& now : Allocated(*target)) found |= now == allocated;
        EXPECT_TRUE(found) << allocated.first;
      }
    }
  }
}

// Source fields that are absent leave nothing allocated behind, and neither do default instances,
// whose sub-message links are not values.
TEST(MergingTest, DefaultInstancesHoldNothing) {
  for (const RecordClass& c : Classes()) {
    for (const Route& route : c.routes) {
      SCOPED_TRACE(std::string(c.message->name) + ", " + route.name);
      const std::unique_ptr<Message> target = c.type->make();
      route.run(c.type->default_instance(), target.get());
      EXPECT_EQ(HasBits(*target), 0u);
      if (!route.reflective) {
        EXPECT_FALSE(HasUnknownContainer(*target));
      }
      for (const FieldRow& field : *c.message) {
        if (field.kind == Kind::kString || field.kind == Kind::kBytes) {
          EXPECT_EQ(StringIn(*target, field), StringIn(c.type->default_instance(), field));
        }
        if (field.kind != Kind::kMessage || field.repeated()) continue;
        const Message* inner = SubMessageIn(*target, field, 0);
        EXPECT_EQ(inner, SubMessageIn(c.type->default_instance(), field, 0));
        const std::unique_ptr<Message> released(
            target->GetReflection()->ReleaseMessage(target.get(), DescriptorOf(*target, field)));
        EXPECT_EQ(released, nullptr) << field.name;
      }

      const std::unique_ptr<Message> full = FullRecord(c.message->name);
      route.run(c.type->default_instance(), full.get());
      if (route.copies) {
        ExpectSame(c.type->default_instance(), *full);
      } else {
        ExpectSame(*FullRecord(c.message->name), *full);
      }
    }
  }
}

void ExpectNeverSized(const Message& record) {
  EXPECT_EQ(record.GetCachedSize(), 0) << record.GetDescriptor()->name();
  const Reflection* r = record.GetReflection();
  for (const FieldRow& field : FindMessage(record.GetDescriptor()->name())) {
    if (field.kind != Kind::kMessage) continue;
    const int end = field.repeated() ? r->FieldSize(record, DescriptorOf(record, field)) : 1;
    for (int i = 0; i < end; ++i) ExpectNeverSized(*SubMessageIn(record, field, i));
  }
}

TEST(MergingTest, CopyConstructedRecordsHaveNoCachedSize) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    T source;
    FillFully(&source);
    EXPECT_GT(source.ByteSize(), 0);
    const T copy(source);
    ExpectNeverSized(copy);
  });
}

// --- Calls that are virtual, and those that are not ----------------------------------------------

// A user's own class below T, which notes the virtual calls that reach it.
template <class T>
class Watched : public T {
 public:
  using T::MergeFrom;
  void Clear() override {
    calls += "Clear ";
    T::Clear();
  }
  void MergeFrom(const Message& from) override {
    calls += "MergeFrom ";
    T::MergeFrom(from);
  }

  std::string calls;
};

TEST(MergingTest, CopyFromIsClearAndMergeFrom) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(T::descriptor()->name());
    T source;
    FillFully(&source);
    Watched<T> target;
    T& typed = target;
    typed.CopyFrom(source);
    EXPECT_EQ(target.calls, "Clear ") << "the typed merge is called directly";
    target.calls.clear();
    typed.CopyFrom(static_cast<const Message&>(source));
    EXPECT_EQ(target.calls, "Clear MergeFrom ");
    target.calls.clear();
    typed.CopyFrom(typed);
    typed.CopyFrom(static_cast<const Message&>(target));
    static_cast<Message&>(target).CopyFrom(target);
    EXPECT_EQ(target.calls, "");
    ExpectSame(source, target);

    // An object of a derived class is merged as a T, not through reflection: what counts is whether
    // there is a container for unknown fields, not what is in it.
    T from_derived;
    from_derived.MergeFrom(static_cast<const Message&>(target));
    ExpectSame(source, from_derived);
    EXPECT_FALSE(HasUnknownContainer(from_derived));
    target.mutable_unknown_fields();
    from_derived.Clear();
    from_derived.MergeFrom(static_cast<const Message&>(target));
    EXPECT_TRUE(HasUnknownContainer(from_derived));
  });
}

// What the base class would do for a class that did not override it.
TEST(MergingTest, TheBaseClassesOwnCallsDoTheSame) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(T::descriptor()->name());
    T source;
    FillFully(&source);
    T target;
    target.Message::MergeFrom(source);
    ExpectSame(source, target);
    target.Message::MergeFrom(source);
    target.Message::CopyFrom(source);
    ExpectSame(source, target);
  });
}

// --- The object itself ---------------------------------------------------------------------------

int logged = 0;
void CountLogged(::google::protobuf::LogLevel, const char*, int, const std::string&) { ++logged; }

TEST(MergingTest, SelfCopyDoesNothingAndSaysNothing) {
  ::google::protobuf::LogHandler* const usual = ::google::protobuf::SetLogHandler(&CountLogged);
  logged = 0;
  for (const RecordClass& c : Classes()) {
    for (const Route& route : c.routes) {
      if (!route.copies || route.reflective || route.name == "copy constructor") continue;
      SCOPED_TRACE(std::string(c.message->name) + ", " + route.name);
      const std::unique_ptr<Message> record = FullRecord(c.message->name);
      std::mt19937 random(13);
      AddRandomUnknown(&random, record.get());
      const std::unique_ptr<Message> before = DynamicTwin(*record);
      const auto allocated = Allocated(*record);
      const uint32_t has_bits = HasBits(*record);
      route.run(*record, record.get());
      EXPECT_TRUE(EqualByReflection(*before, *record));
      EXPECT_EQ(Allocated(*record), allocated);
      EXPECT_EQ(HasBits(*record), has_bits);
    }
  }
  ::google::protobuf::SetLogHandler(usual);
  EXPECT_EQ(logged, 0);
}

// The generated source: what it is called in reports, and its lines.
constexpr char kSource[] = "calibration_common/calibration.pb.cc";

const std::vector<std::string>& SourceLines() {
  static const std::vector<std::string> lines = [] {
    std::vector<std::string> all;
    std::ifstream in(std::string(CALIBRATION_SOURCE_DIR) + "/" + kSource);
    EXPECT_TRUE(in.is_open()) << kSource << " cannot be read";
    for (std::string line; std::getline(in, line);) all.push_back(line);
    return all;
  }();
  return lines;
}

// The number of the line that holds `text`, below the line that holds `opening`; 0 if the function
// that `opening` begins has none.
int LineIn(const std::string& opening, const std::string& text) {
  const std::vector<std::string>& lines = SourceLines();
  size_t i = 0;
  while (i < lines.size() && lines[i].find(opening) == std::string::npos) ++i;
  for (; i < lines.size() && lines[i] != "}"; ++i) {
    if (lines[i].find(text) != std::string::npos) return static_cast<int>(i) + 1;
  }
  return 0;
}

// The run-time's fatal report ends the process or, as it may be built, throws out of the merge:
// that ends it here.
void EndsIn(const std::function<void()>& merge) noexcept { merge(); }

TEST(MergingDeathTest, SelfMergeNamesTheMergeAndItsLine) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  const int reporter = LineIn("void MergeFromFail(int line) {", "__LINE__");
  ASSERT_GT(reporter, 0) << kSource << ": no MergeFromFail that reports its line";
  ForEachRecord([reporter](auto type) {
    using T = typename decltype(type)::Type;
    const std::string name = T::descriptor()->name();
    SCOPED_TRACE(name);
    const int typed = LineIn("void " + name + "::MergeFrom(const " + name + "& from) {",
                             "MergeFromFail(__LINE__)");
    const int generic = LineIn("void " + name +
                                   "::MergeFrom(const ::google::protobuf::Message& "
                                   "from) {",
                               "MergeFromFail(__LINE__)");
    ASSERT_GT(typed, 0);
    ASSERT_GT(generic, 0);
    ASSERT_NE(typed, generic);
    const auto report = [reporter](int line) {
      return std::string("libprotobuf FATAL ") + kSource + ":" + std::to_string(reporter) +
             "\\] CHECK failed: false: " + kSource + ":" + std::to_string(line) + "\n";
    };
    T record;
    FillFully(&record);
    Message& message = record;
    EXPECT_DEATH(EndsIn([&] { record.MergeFrom(record); }), report(typed));
    EXPECT_DEATH(EndsIn([&] { record.MergeFrom(message); }), report(generic));
    EXPECT_DEATH(EndsIn([&] { message.MergeFrom(record); }), report(generic));
  });
}

TEST(MergingDeathTest, OtherDescriptorsAreRefused) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  for (const RecordClass& c : Classes()) {
    SCOPED_TRACE(c.message->name);
    const std::unique_ptr<Message> record = c.type->make();
    const RecordClass& next =
        Classes()[(static_cast<size_t>(c.message->index) + 1) % kMessageCount];
    const std::unique_ptr<Message> other = next.type->make();
    EXPECT_DEATH(EndsIn([&] { record->MergeFrom(*other); }), "libprotobuf FATAL .*[Mm]erge");
    EXPECT_DEATH(EndsIn([&] { record->CopyFrom(*other); }), "libprotobuf FATAL .*[Mm]erge");
  }
}

// --- Required fields -----------------------------------------------------------------------------

// Sets those of the required fields whose bit is set.
void SetRequired(unsigned subset, CameraIntrinsics* record) {
  if (subset & 0x01) record->set_fx(1);
  if (subset & 0x02) record->set_fy(2);
  if (subset & 0x04) record->set_skew(0);
  if (subset & 0x08) record->set_cx(3);
  if (subset & 0x10) record->set_cy(4);
}

constexpr unsigned kAllRequired = 0x1F;

TEST(IsInitializedTest, NeedsTheFiveAndNothingElse) {
  for (unsigned subset = 0; subset <= kAllRequired; ++subset) {
    SCOPED_TRACE("has-bits " + std::to_string(subset));
    const bool expected = subset == kAllRequired;
    CameraIntrinsics bare, full;
    SetRequired(subset, &bare);
    EXPECT_EQ(bare.IsInitialized(), expected);
    FillFully(&full);
    if (!(subset & 0x01)) full.clear_fx();
    if (!(subset & 0x02)) full.clear_fy();
    if (!(subset & 0x04)) full.clear_skew();
    if (!(subset & 0x08)) full.clear_cx();
    if (!(subset & 0x10)) full.clear_cy();
    EXPECT_EQ(full.IsInitialized(), expected);

    CameraCalibration camera;
    EXPECT_TRUE(camera.IsInitialized()) << "absent";
    *camera.mutable_intrinsics() = bare;
    EXPECT_EQ(camera.IsInitialized(), expected);
    RobotCalibration robot;
    EXPECT_TRUE(robot.IsInitialized()) << "no element";
    *robot.add_camera() = camera;
    EXPECT_EQ(robot.IsInitialized(), expected);
    PTZSystemCalibration system;
    EXPECT_TRUE(system.IsInitialized()) << "absent";
    *system.mutable_other_cameras() = robot;
    EXPECT_EQ(system.IsInitialized(), expected);
    const Message& message = system;
    EXPECT_EQ(message.IsInitialized(), expected);

    // Copies and merges succeed all the same, and lack what their source lacks.
    for (const RecordClass& c : Classes()) {
      if (c.message->name != system.GetDescriptor()->name()) continue;
      for (const Route& route : c.routes) {
        PTZSystemCalibration target;
        route.run(system, &target);
        ExpectSame(system, target);
        EXPECT_EQ(target.IsInitialized(), expected) << route.name;
      }
    }

    // An object that is there but absent does not count, whatever it holds.
    camera.clear_intrinsics();
    EXPECT_TRUE(camera.IsInitialized());
    robot.clear_camera();
    EXPECT_TRUE(robot.IsInitialized());
    system.clear_other_cameras();
    EXPECT_TRUE(system.IsInitialized());
  }
}

TEST(IsInitializedTest, EveryElementCounts) {
  for (int lacking = -1; lacking < 3; ++lacking) {
    RobotCalibration robot;
    for (int i = 0; i < 3; ++i) {
      SetRequired(i == lacking ? kAllRequired & ~0x10u : kAllRequired,
                  robot.add_camera()->mutable_intrinsics());
    }
    EXPECT_EQ(robot.IsInitialized(), lacking < 0) << lacking;
    for (CameraCalibration& camera : *robot.mutable_camera()) camera.clear_intrinsics();
    EXPECT_TRUE(robot.IsInitialized()) << "no intrinsics at all";
  }
}

// What an allocation that failed leaves is read as an empty sub-message, which lacks all five.
TEST(IsInitializedTest, PresenceWithoutAnObjectCounts) {
  RobotCalibration robot;
  SetRequired(kAllRequired, robot.add_camera()->mutable_intrinsics());
  CameraCalibration* camera = robot.add_camera();
  EXPECT_TRUE(robot.IsInitialized());
  const uint32_t has_intrinsics = 1;
  std::memcpy(reinterpret_cast<char*>(camera) + 2 * sizeof(void*), &has_intrinsics,
              sizeof has_intrinsics);
  ASSERT_TRUE(camera->has_intrinsics());
  EXPECT_FALSE(camera->IsInitialized());
  EXPECT_FALSE(robot.IsInitialized());
}

// A sub-message with an opinion of its own, which notes when it is asked.
std::vector<int> asked;
template <class T>
class Asked : public T {
 public:
  Asked(int id, bool answer) : id_(id), answer_(answer) {}
  bool IsInitialized() const override {
    asked.push_back(id_);
    return answer_;
  }

 private:
  int id_;
  bool answer_;
};

TEST(IsInitializedTest, ElementsFromTheLastToTheFirst) {
  for (int lacking = -1; lacking < 4; ++lacking) {
    RobotCalibration robot;
    for (int i = 0; i < 4; ++i) {
      robot.mutable_camera()->AddAllocated(new Asked<CameraCalibration>(i, i != lacking));
    }
    asked.clear();
    EXPECT_EQ(robot.IsInitialized(), lacking < 0);
    std::vector<int> expected;
    for (int i = 3; i >= 0 && i >= lacking; --i) expected.push_back(i);
    EXPECT_EQ(asked, expected) << "element " << lacking << " lacks something";
  }
}

// Each sub-message field of each class holds, in turn, an object that says it is not initialized.
TEST(IsInitializedTest, AsksOnlyWhereRequiredFieldsCanBe) {
  int fields = 0, visited = 0;
  ForEachRecord([&](auto type) {
    using T = typename decltype(type)::Type;
    for (const MessageRow& message : Schema()) {
      for (const FieldRow& field : message) {
        if (field.kind != Kind::kMessage || T::descriptor()->name() != field.message_type) continue;
        SCOPED_TRACE(std::string(message.name) + "." + field.name);
        ++fields;
        const std::string name = std::string(message.name) + "." + field.name;
        const bool visits = name == "CameraCalibration.intrinsics" ||
                            name == "RobotCalibration.camera" ||
                            name == "PTZSystemCalibration.other_cameras";
        for (const bool answer : {false, true}) {
          const std::unique_ptr<Message> record = FullRecord(message.name);
          Message* const sub = new Asked<T>(1, answer);
          if (field.repeated()) {
            record->GetReflection()->AddAllocatedMessage(record.get(), DescriptorOf(*record, field),
                                                         sub);
          } else {
            record->GetReflection()->SetAllocatedMessage(record.get(), sub,
                                                         DescriptorOf(*record, field));
          }
          asked.clear();
          EXPECT_EQ(record->IsInitialized(), answer || !visits);
          EXPECT_EQ(asked.size(), visits ? 1u : 0u);
        }
        visited += visits;
      }
    }
  });
  EXPECT_EQ(fields, 23);
  EXPECT_EQ(visited, 3);
}

TEST(IsInitializedTest, MostClassesRequireNothing) {
  for (const RecordClass& c : Classes()) {
    const bool required = std::string(c.message->name) == "CameraIntrinsics";
    EXPECT_EQ(c.type->make()->IsInitialized(), !required) << c.message->name;
    EXPECT_EQ(c.type->default_instance().IsInitialized(), !required) << c.message->name;
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
