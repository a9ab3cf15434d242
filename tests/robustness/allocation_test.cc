// Memory that runs out at any one allocation, or from any one on: the exception reaches the caller,
// nothing leaks, and the record that was worked on stays a record, which can be read, written,
// copied, cleared, filled again and destroyed.
#include <google/protobuf/arena.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/unknown_field_set.h>

#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/allocations.h"
#include "tests/support/entrances.h"
#include "tests/support/fields.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Arena;
using ::google::protobuf::Message;
using ::google::protobuf::io::ArrayInputStream;

constexpr long kMostAllocations = 100000;

// True if the allocation of number `n` came and failed.
bool Fails(long n, FailingAllocation::Duration duration, const std::function<void()>& call) {
  try {
    const FailingAllocation failing(n, duration);
    call();
  } catch (const std::bad_alloc&) {
    return true;
  }
  return false;
}

// Calls what may fail, and tells whether it did.
using Attempt = std::function<bool(const std::function<void()>& call)>;

// Calls run(attempt) with attempts whose n-th allocation fails, for every n that they come to: once
// with that one allocation and once with all later ones failing too. `run` makes the objects that
// it needs and has the attempt call what may fail, which must not keep memory beyond the run.
// Returns how many attempts failed.
int ForEachFailure(const std::function<void(const Attempt& attempt)>& run) {
  int failures = 0;
  // What the run-time makes on first use and keeps for the process is made now.
  run([](const std::function<void()>& call) {
    call();
    return false;
  });
  for (const auto duration : {FailingAllocation::kOnce, FailingAllocation::kForGood}) {
    for (long n = 1;; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n) +
                   (duration == FailingAllocation::kOnce ? " fails" : " and all later ones fail"));
      bool failed = false;
      const long live = LiveBlocks();
      run([&](const std::function<void()>& call) { return failed = Fails(n, duration, call); });
      EXPECT_EQ(LiveBlocks(), live) << "blocks alive";
      if (n == kMostAllocations) ADD_FAILURE() << "allocations never stop failing";
      failures += failed;
      if (!failed || ::testing::Test::HasFailure()) break;
    }
  }
  return failures;
}

template <class T>
T Full() {
  T record;
  FillFully(&record);
  return record;
}

// Whether all scalars that the record says it does not have are what they are in an empty record.
::testing::AssertionResult AbsentScalarsAreDefaults(const Message& record) {
  using ::google::protobuf::FieldDescriptor;
  const auto* reflection = record.GetReflection();
  const auto* descriptor = record.GetDescriptor();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* field = descriptor->field(i);
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      const int count = field->is_repeated()                  ? reflection->FieldSize(record, field)
                        : reflection->HasField(record, field) ? 1
                                                              : 0;
      for (int index = 0; index < count; ++index) {
        const auto result = AbsentScalarsAreDefaults(
            field->is_repeated() ? reflection->GetRepeatedMessage(record, field, index)
                                 : reflection->GetMessage(record, field));
        if (!result) return result;
      }
      continue;
    }
    if (field->is_repeated() || reflection->HasField(record, field)) continue;
    bool is_default = true;
    switch (field->cpp_type()) {
      case FieldDescriptor::CPPTYPE_DOUBLE:
        is_default = reflection->GetDouble(record, field) == field->default_value_double();
        break;
      case FieldDescriptor::CPPTYPE_FLOAT:
        is_default = reflection->GetFloat(record, field) == field->default_value_float();
        break;
      case FieldDescriptor::CPPTYPE_INT32:
        is_default = reflection->GetInt32(record, field) == field->default_value_int32();
        break;
      case FieldDescriptor::CPPTYPE_INT64:
        is_default = reflection->GetInt64(record, field) == field->default_value_int64();
        break;
      case FieldDescriptor::CPPTYPE_BOOL:
        is_default = reflection->GetBool(record, field) == field->default_value_bool();
        break;
      default:
        break;
    }
    if (!is_default) return ::testing::AssertionFailure() << field->full_name();
  }
  return ::testing::AssertionSuccess();
}

// What a record must still be good for after a call on it has failed. The last of it changes the
// record and can be done in several ways.
constexpr int kWaysToGoOn = 4;

template <class T>
void CheckUsable(T* record, const T& full, const std::string& bytes, int way) {
  EXPECT_TRUE(AbsentScalarsAreDefaults(*record));
  std::string written;
  const int size = record->ByteSize();
  ASSERT_TRUE(record->SerializePartialToString(&written));
  EXPECT_EQ(size, static_cast<int>(written.size()));
  T read;
  ASSERT_TRUE(read.ParsePartialFromString(written));
  EXPECT_TRUE(EqualByReflection(read, *record));
  const T copy(*record);
  EXPECT_TRUE(EqualByReflection(copy, *record));
  T assigned(full);
  assigned = *record;
  EXPECT_TRUE(EqualByReflection(assigned, *record));
  EXPECT_EQ(copy.IsInitialized(), record->IsInitialized());

  switch (way) {
    case 0:
      record->CopyFrom(full);
      break;
    case 1:
      EXPECT_TRUE(record->ParseFromString(bytes));
      break;
    case 2: {
      record->Clear();
      EXPECT_TRUE(EqualByReflection(*record, T::default_instance()));
      EXPECT_EQ(record->ByteSize(), 0);
      record->MergeFrom(full);
      break;
    }
    case 3: {
      T other;
      record->Swap(&other);
      EXPECT_TRUE(EqualByReflection(other, copy));
      record->CopyFrom(full);
      other.CopyFrom(full);
      EXPECT_TRUE(EqualByReflection(other, full));
      break;
    }
  }
  EXPECT_TRUE(EqualByReflection(*record, full));
  EXPECT_EQ(record->SerializeAsString(), bytes);
}

template <class T>
class AllocationOfRecordTest : public ::testing::Test {};
TYPED_TEST_SUITE(AllocationOfRecordTest, AllRecords);

TYPED_TEST(AllocationOfRecordTest, Constructors) {
  const TypeParam full = Full<TypeParam>();
  const auto some_fail = [](auto run) { EXPECT_GT(ForEachFailure(run), 0); };
  some_fail([](const Attempt& attempt) {
    attempt([] { const std::unique_ptr<TypeParam> record(new TypeParam); });
  });
  ForEachFailure([&](const Attempt& attempt) { attempt([&] { const TypeParam copy(full); }); });
  some_fail([&](const Attempt& attempt) {
    attempt([&] { const std::unique_ptr<TypeParam> copy(new TypeParam(full)); });
  });
  some_fail([&](const Attempt& attempt) {
    attempt([&] { const std::unique_ptr<Message> record(full.New()); });
  });
  some_fail([&](const Attempt& attempt) {
    Arena arena;
    attempt([&] { full.New(&arena); });
  });
}

// Whether a copy holds memory besides its own; a record of numbers does not.
template <class T>
bool CopyAllocates(const T& record) {
  const long before = Allocations();
  const T copy(record);
  return Allocations() != before;
}

// Tries `fill`, which is to make `full` of a record that holds nothing, holds what was cleared, or
// holds something that `fill` replaces.
template <class T>
void TryFilling(const T& full, const std::function<void(T*)>& fill, bool replaces) {
  const std::string bytes = full.SerializeAsString();
  std::mt19937 random(20240613);
  T some;
  RandomOptions options;
  options.unknown_fields = false;
  FillRandomly(&random, options, &some);
  for (int way = 0; way < kWaysToGoOn; ++way) {
    for (int start = 0; start < (replaces ? 3 : 2); ++start) {
      SCOPED_TRACE("way " + std::to_string(way) + ", start " + std::to_string(start));
      const int failures = ForEachFailure([&](const Attempt& attempt) {
        T record;
        if (start >= 1) record.MergeFrom(some);
        if (start == 1) record.Clear();
        if (attempt([&] { fill(&record); })) {
          CheckUsable(&record, full, bytes, way);
        } else {
          EXPECT_TRUE(EqualByReflection(record, full));
        }
      });
      EXPECT_TRUE(failures > 0 || start > 0 || !CopyAllocates(full)) << "no allocation failed";
      if (::testing::Test::HasFailure()) return;
    }
  }
}

TYPED_TEST(AllocationOfRecordTest, MergeAndCopy) {
  using T = TypeParam;
  const T full = Full<T>();
  const Message& message = full;
  TryFilling<T>(
      full, [&](T* record) { record->MergeFrom(full); }, false);
  TryFilling<T>(
      full, [&](T* record) { record->MergeFrom(message); }, false);
  TryFilling<T>(
      full, [&](T* record) { record->CopyFrom(full); }, true);
  TryFilling<T>(
      full, [&](T* record) { record->CopyFrom(message); }, true);
}

// Unknown fields of every kind, groups in groups among them, or none.
constexpr int kNoGroups = -1;
void AddUnknownFields(int depth, ::google::protobuf::UnknownFieldSet* fields) {
  fields->AddVarint(1000, 5);
  fields->AddLengthDelimited(1001)->assign("a text that is longer than what a string object holds");
  fields->AddFixed32(1002, 3);
  fields->AddFixed64(1003, 4);
  if (depth > 0) AddUnknownFields(depth - 1, fields->AddGroup(1004));
  fields->AddLengthDelimited(1005)->assign("x");
  if (depth != kNoGroups) fields->AddGroup(1006);
}

// A set that has lost a value, or owns one together with another set, crashes as soon as it is
// used.
TYPED_TEST(AllocationOfRecordTest, UnknownFields) {
  using T = TypeParam;
  for (const int depth : {kNoGroups, 2}) {
    SCOPED_TRACE("depth " + std::to_string(depth));
    T full = Full<T>();
    AddUnknownFields(depth, full.mutable_unknown_fields());
    const Message& message = full;
    ASSERT_TRUE(EqualByReflection(T(), T()));  // makes the run-time's empty set
    TryFilling<T>(
        full, [&](T* record) { record->MergeFrom(full); }, false);
    TryFilling<T>(
        full, [&](T* record) { record->CopyFrom(message); }, true);
    TryFilling<T>(
        full, [&](T* record) { *record = T(full); }, true);
  }

  // The fields that a record already has are as they were.
  for (const int depth : {kNoGroups, 1}) {
    SCOPED_TRACE("depth " + std::to_string(depth));
    T some;
    AddUnknownFields(depth, some.mutable_unknown_fields());
    int failures = ForEachFailure([&](const Attempt& attempt) {
      T record(some);
      const T source(some);
      if (attempt([&] { record.MergeFrom(source); })) {
        EXPECT_TRUE(EqualByReflection(record, some));
        EXPECT_TRUE(EqualByReflection(source, some));
      }
    });
    EXPECT_GT(failures, 0);
  }
}

// The run-time may lose the text or the group that it has made when its list of fields cannot grow,
// but the record stays a record.
TYPED_TEST(AllocationOfRecordTest, ParsedUnknownFields) {
  using T = TypeParam;
  T full = Full<T>();
  AddUnknownFields(2, full.mutable_unknown_fields());
  const std::string bytes = full.SerializeAsString();
  for (const int block : {1, 64, static_cast<int>(bytes.size())}) {
    bool failed = true;
    for (long n = 1; failed; ++n) {
      const FreeLostBlocks lost;
      SCOPED_TRACE("allocation " + std::to_string(n) + ", blocks of " + std::to_string(block));
      T record;
      failed = Fails(n, FailingAllocation::kOnce, [&] {
        ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), block);
        record.ParseFromZeroCopyStream(&stream);
      });
      CheckUsable(&record, full, bytes, static_cast<int>(n % kWaysToGoOn));
      if (this->HasFailure()) return;
    }
  }
}

TYPED_TEST(AllocationOfRecordTest, Parse) {
  using T = TypeParam;
  const T full = Full<T>();
  const std::string bytes = full.SerializeAsString();
  const int size = static_cast<int>(bytes.size());
  TryFilling<T>(
      full, [&](T* record) { record->ParseFromArray(bytes.data(), size); }, true);
  TryFilling<T>(
      full, [&](T* r) { static_cast<Message*>(r)->ParseFromString(bytes); }, true);
  for (const int block : {1, 64}) {
    TryFilling<T>(
        full,
        [&](T* record) {
          ArrayInputStream stream(bytes.data(), size, block);
          record->ParseFromZeroCopyStream(&stream);
        },
        true);
    TryFilling<T>(
        full,
        [&](T* record) {
          ArrayInputStream stream(bytes.data(), size, block);
          static_cast<Message*>(record)->ParseFromZeroCopyStream(&stream);
        },
        true);
  }
  TryFilling<T>(
      full,
      [&](T* record) {
        std::istringstream stream(bytes);
        record->ParseFromIstream(&stream);
      },
      true);
}

// Through every call, each from one start and with one way to go on.
TYPED_TEST(AllocationOfRecordTest, EveryParseCall) {
  using T = TypeParam;
  const T full = Full<T>();
  const std::string bytes = full.SerializeAsString();
  for (const auto& table : {ConcreteEntrances<T>(), GenericEntrances()}) {
    int turn = 0;
    for (const Entrance& entrance : table) {
      SCOPED_TRACE(entrance.name);
      ++turn;
      ForEachFailure([&](const Attempt& attempt) {
        T record;
        if (turn % 3 != 0) record.MergeFrom(full);
        if (turn % 3 == 1 || entrance.merges) record.Clear();
        bool accepted = false;
        if (attempt([&] { accepted = entrance.parse(&record, bytes); })) {
          CheckUsable(&record, full, bytes, turn % kWaysToGoOn);
        } else {
          EXPECT_TRUE(accepted);
          EXPECT_TRUE(EqualByReflection(record, full));
        }
      });
      if (this->HasFailure()) return;
    }
  }
}

// Makes every text longer than what a string object holds by itself.
void LengthenTexts(Message* record) {
  const auto* reflection = record->GetReflection();
  const auto* descriptor = record->GetDescriptor();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const auto* field = descriptor->field(i);
    if (field->cpp_type() == field->CPPTYPE_STRING) {
      ASSERT_FALSE(field->is_repeated());
      reflection->SetString(record, field,
                            reflection->GetString(*record, field) + std::string(100, 'x'));
    } else if (field->cpp_type() == field->CPPTYPE_MESSAGE && field->is_repeated()) {
      for (int index = 0; index < reflection->FieldSize(*record, field); ++index) {
        LengthenTexts(reflection->MutableRepeatedMessage(record, field, index));
      }
    } else if (field->cpp_type() == field->CPPTYPE_MESSAGE) {
      LengthenTexts(reflection->MutableMessage(record, field));
    }
  }
}

// What a record has room for is used again: a program that reads one record after the other into
// the same object takes no memory for it once it has read one of the shape.
TYPED_TEST(AllocationOfRecordTest, ParsingTheSameShapeAgainTakesNoMemory) {
  using T = TypeParam;
  T full = Full<T>();
  LengthenTexts(&full);
  const std::string bytes = full.SerializeAsString();
  const int size = static_cast<int>(bytes.size());
  const auto expect_none = [&](const char* what, auto parse) {
    T record;
    ASSERT_TRUE(parse(&record)) << what;
    ASSERT_TRUE(parse(&record)) << what;
    const long before = Allocations();
    const bool accepted = parse(&record);
    EXPECT_EQ(Allocations(), before) << what;
    EXPECT_TRUE(accepted) << what;
    EXPECT_TRUE(EqualByReflection(record, full)) << what;
  };
  expect_none("array", [&](auto* record) { return record->ParseFromArray(bytes.data(), size); });
  expect_none("string", [&](auto* record) { return record->ParseFromString(bytes); });
  for (const int block : {1, 7, 64, 4096}) {
    expect_none("stream", [&](auto* record) {
      ArrayInputStream stream(bytes.data(), size, block);
      return record->ParseFromZeroCopyStream(&stream);
    });
    expect_none("coded stream", [&](auto* record) {
      ArrayInputStream stream(bytes.data(), size, block);
      ::google::protobuf::io::CodedInputStream input(&stream);
      return record->ParseFromCodedStream(&input) && input.ConsumedEntireMessage();
    });
  }
  // Through Message& the run-time of 3.21 takes memory where the input comes in pieces.
  expect_none("Message&, array",
              [&](Message* record) { return record->ParseFromArray(bytes.data(), size); });
  expect_none("Message&, string", [&](Message* record) { return record->ParseFromString(bytes); });
}

// --- Writing -------------------------------------------------------------------------------------

// Not to a stream whose buffers cannot be had: 3.21's CodedOutputStream asks for one more in its
// destructor, and an exception there ends the process. A string as a whole is written without it.

TYPED_TEST(AllocationOfRecordTest, Serialize) {
  using T = TypeParam;
  const T full = Full<T>();
  const std::string bytes = full.SerializeAsString();
  const Message& message = full;
  const auto try_writing = [&](auto write) {
    ForEachFailure([&](const Attempt& attempt) {
      std::string target = "in front: ";
      if (attempt([&] { write(&target); })) {
        EXPECT_TRUE(EqualByReflection(full, Full<T>()));
        EXPECT_EQ(full.SerializeAsString(), bytes);
      } else {
        EXPECT_EQ(target.substr(target.size() - bytes.size()), bytes);
      }
    });
  };
  try_writing([&](std::string* target) { full.SerializeToString(target); });
  try_writing([&](std::string* target) { message.SerializeToString(target); });
  try_writing([&](std::string* target) { full.AppendToString(target); });
  try_writing([&](std::string* target) { message.AppendToString(target); });
  try_writing([&](std::string* target) { *target = full.SerializeAsString(); });
  try_writing([&](std::string* target) { *target = message.SerializeAsString(); });
}

TYPED_TEST(AllocationOfRecordTest, SizingWritingToAnArrayAndClearingTakeNoMemory) {
  TypeParam full = Full<TypeParam>();
  std::vector<unsigned char> target(full.ByteSize());
  const long before = Allocations();
  const int size = full.ByteSize();
  EXPECT_TRUE(full.SerializeToArray(target.data(), size));
  EXPECT_EQ(full.SerializeWithCachedSizesToArray(target.data()), target.data() + size);
  EXPECT_TRUE(full.IsInitialized());
  full.Clear();
  EXPECT_EQ(Allocations(), before);
}

// --- Accessors -----------------------------------------------------------------------------------

// Fails each allocation of a call that writes one field of an empty record, then goes on with it.
template <class R, class Write>
void TryWriting(Write write) {
  const R full = Full<R>();
  const std::string bytes = full.SerializeAsString();
  for (int way = 0; way < kWaysToGoOn; ++way) {
    const int failures = ForEachFailure([&](const Attempt& attempt) {
      R record;
      if (attempt([&] { write(&record); })) CheckUsable(&record, full, bytes, way);
    });
    EXPECT_GT(failures, 0);
  }
}

TEST(AllocationTest, Accessors) {
  const std::string text(1000, 'x');
  ForEachField([](auto) {},  // a number is set without memory
               [&](auto f) {
                 using R = typename decltype(f)::Record;
                 TryWriting<R>([&](R* record) { f.Set(record, text); });
                 TryWriting<R>([&](R* record) { f.SetTerminated(record, text.c_str()); });
                 TryWriting<R>([&](R* record) { f.SetCounted(record, text.data(), 1000); });
                 TryWriting<R>([&](R* record) { f.Mutable(record)->assign(text); });
               },
               [&](auto f) {
                 using R = typename decltype(f)::Record;
                 TryWriting<R>([&](R* record) { f.Mutable(record); });
               },
               [&](auto f) {
                 using R = typename decltype(f)::Record;
                 TryWriting<R>([&](R* record) {
                   for (int i = 0; i < 100; ++i) f.Add(record, i);
                 });
               },
               [&](auto f) {
                 using R = typename decltype(f)::Record;
                 TryWriting<R>([&](R* record) {
                   for (int i = 0; i < 20; ++i) f.Add(record);
                 });
               });
}

// A getter of a sub-message that was to be made, and was not, finds the default instance.
TEST(AllocationTest, ASubMessageThatCouldNotBeMadeReadsAsTheDefault) {
  ForEachMessage([](auto f) {
    using M = typename decltype(f)::SubMessage;
    typename decltype(f)::Record record;
    EXPECT_TRUE(Fails(1, FailingAllocation::kOnce, [&] { f.Mutable(&record); }));
    EXPECT_EQ(&f.Get(record), &M::default_instance());
    EXPECT_TRUE(f.Has(record)) << "the has-bit is set first";
    EXPECT_EQ(f.Release(&record), nullptr);
    EXPECT_FALSE(f.Has(record));
    EXPECT_TRUE(Fails(1, FailingAllocation::kOnce, [&] { f.Mutable(&record); }));
    f.Clear(&record);
    EXPECT_FALSE(f.Has(record));
    EXPECT_TRUE(Fails(1, FailingAllocation::kOnce, [&] { f.Mutable(&record); }));
    EXPECT_NE(f.Mutable(&record), nullptr);
    EXPECT_NE(&f.Get(record), &M::default_instance());
  });
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
