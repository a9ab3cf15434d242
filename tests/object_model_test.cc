// What a record is made of and how it is born, cleared, swapped and destroyed.
//
// The layout of an object and the conditions under which Clear() looks at a field cannot be seen
// through the accessors alone; the tests read and write the bytes of objects for that. Where a
// member lies they find out by watching the object while its accessors are called.
#include <google/protobuf/arena.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/allocations.h"
#include "tests/support/fields.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Arena;
using ::google::protobuf::ArenaOptions;
using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::RepeatedPtrField;

// --- Where the members lie -----------------------------------------------------------------------

constexpr size_t kWord = sizeof(void*);
constexpr size_t kMetadataOffset = kWord;  // behind the pointer to the virtual table
constexpr size_t kHasBitsOffset = 2 * kWord;
constexpr size_t kCachedSizeOffset = kHasBitsOffset + 4;
constexpr size_t kFirstFieldOffset = kHasBitsOffset + 8;

struct Member {
  const FieldRow* field;
  size_t offset;
  size_t size;
};

size_t NumberSize(Kind kind) {
  switch (kind) {
    case Kind::kDouble:
    case Kind::kInt64:
      return 8;
    case Kind::kFloat:
    case Kind::kInt32:
      return 4;
    case Kind::kBool:
      return 1;
    default:
      return 0;
  }
}

bool IsNumber(const FieldRow& field) { return !field.repeated() && NumberSize(field.kind) != 0; }

size_t MemberSize(const FieldRow& field) {
  // Two words and two numbers, or one word and those.
  if (field.repeated()) return (field.kind == Kind::kMessage ? 2 : 1) * kWord + 8;
  return IsNumber(field) ? NumberSize(field.kind) : kWord;
}

size_t RoundUp(size_t offset, size_t alignment) {
  return (offset + alignment - 1) / alignment * alignment;
}

template <class T>
const MessageRow& RowOf() {
  return FindMessage(T::descriptor()->name());
}

// --- Bytes of objects ----------------------------------------------------------------------------

template <class V>
V Read(const Message& record, size_t offset) {
  V value;
  std::memcpy(&value, reinterpret_cast<const char*>(&record) + offset, sizeof value);
  return value;
}

std::string ReadBytes(const Message& record, const Member& member) {
  return std::string(reinterpret_cast<const char*>(&record) + member.offset, member.size);
}

void WriteBytes(Message* record, size_t offset, const std::string& bytes) {
  std::memcpy(reinterpret_cast<char*>(record) + offset, bytes.data(), bytes.size());
}

// A pointer member without the tag bits that a run-time may keep in it.
uintptr_t ReadPointer(const Message& record, size_t offset) {
  return Read<uintptr_t>(record, offset) & ~uintptr_t{7};
}

uintptr_t AddressOf(const void* object) { return reinterpret_cast<uintptr_t>(object); }

template <class V>
V ValueOf(char byte) {
  V value;
  if (std::is_same<V, bool>::value) byte &= 1;
  std::memset(static_cast<void*>(&value), byte, sizeof value);
  return value;
}

// Where two values of the number differ in every byte, these bytes of the object change.
template <class F>
Member FindNumber(const F& field) {
  using V = typename F::Value;
  OnZeroedMemory<typename F::Record> memory;
  field.Set(memory.record(), ValueOf<V>('\x41'));
  const std::string before = memory.bytes();
  field.Set(memory.record(), ValueOf<V>('\x42'));
  const std::string after = memory.bytes();
  std::vector<size_t> changed;
  for (size_t i = 0; i < before.size(); ++i) {
    if (before[i] != after[i]) changed.push_back(i);
  }
  EXPECT_EQ(changed.size(), sizeof(V));
  if (changed.empty()) return {&field.row(), 0, 0};
  EXPECT_EQ(changed.back() - changed.front() + 1, sizeof(V)) << "not in one place";
  return {&field.row(), changed.front(), sizeof(V)};
}

// The one word of the object that points to the value.
template <class F>
Member FindPointer(const F& field) {
  typename F::Record record;
  const uintptr_t value = AddressOf(field.Mutable(&record));
  std::vector<size_t> found;
  for (size_t offset = kFirstFieldOffset; offset < sizeof record; offset += sizeof value) {
    if (ReadPointer(record, offset) == value) found.push_back(offset);
  }
  EXPECT_EQ(found.size(), 1u);
  return {&field.row(), found.empty() ? 0 : found.front(), sizeof value};
}

template <class F>
Member FindContainer(const F& field) {
  const typename F::Record record;
  return {&field.row(), AddressOf(&field.All(record)) - AddressOf(&record),
          sizeof(field.All(record))};
}

// Of each message: its fields' members, in declaration order.
std::map<std::string, std::vector<Member>> FindMembers() {
  std::map<std::string, std::vector<Member>> all;
  ForEachField([&](auto field) { all[field.record_name].push_back(FindNumber(field)); },
               [&](auto field) { all[field.record_name].push_back(FindPointer(field)); },
               [&](auto field) { all[field.record_name].push_back(FindPointer(field)); },
               [&](auto field) { all[field.record_name].push_back(FindContainer(field)); },
               [&](auto field) { all[field.record_name].push_back(FindContainer(field)); });
  return all;
}

const std::vector<Member>& Members(const MessageRow& message) {
  static const std::map<std::string, std::vector<Member>> members = FindMembers();
  return members.at(message.name);
}

// The bytes of a singular number's initial value.
std::string InitialBytes(const FieldRow& field) {
  if (field.default_text != nullptr) return BytesOf(field.default_bits);
  return std::string(NumberSize(field.kind), '\0');
}

// Bytes of a singular number that is not at its initial value, all of them unlike a zero.
std::string OtherBytes(const FieldRow& field) {
  return std::string(NumberSize(field.kind), field.kind == Kind::kBool ? '\1' : '\x41');
}

// Every string, sub-message and element that a record holds, in depth.
void CollectObjects(const Message& record, std::vector<const void*>* objects) {
  const Reflection* r = record.GetReflection();
  std::string scratch;
  for (int i = 0; i < record.GetDescriptor()->field_count(); ++i) {
    const FieldDescriptor* f = record.GetDescriptor()->field(i);
    if (f->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
      objects->push_back(&r->GetStringReference(record, f, &scratch));
    } else if (f->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      const int count = f->is_repeated() ? r->FieldSize(record, f) : 1;
      for (int element = 0; element < count; ++element) {
        const Message& sub =
            f->is_repeated() ? r->GetRepeatedMessage(record, f, element) : r->GetMessage(record, f);
        objects->push_back(&sub);
        CollectObjects(sub, objects);
      }
    }
  }
}

std::vector<const void*> Objects(const Message& record) {
  std::vector<const void*> objects;
  CollectObjects(record, &objects);
  return objects;
}

template <class T>
void FillWithUnknown(T* record) {
  FillFully(record);
  record->mutable_unknown_fields()->AddVarint(2000, 1);
  record->mutable_unknown_fields()->AddLengthDelimited(2001, "unknown");
}

// --- Layout --------------------------------------------------------------------------------------

// The size follows from there being no gaps. Where a word has 4 bytes, there may be one in front of
// a number of 8.
TEST(ObjectModelTest, MembersLieBehindOneAnotherWithoutGaps) {
  int fields = 0;
  ForEachRecord([&](auto record) {
    using T = typename decltype(record)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    std::map<size_t, Member> by_offset;
    for (const Member& member : Members(RowOf<T>())) by_offset[member.offset] = member;
    size_t end = kFirstFieldOffset;
    for (const auto& [offset, member] : by_offset) {
      const bool gap = kWord < 8 && member.size == 8 && IsNumber(*member.field);
      EXPECT_EQ(offset, gap ? RoundUp(end, alignof(T)) : end) << member.field->name;
      EXPECT_EQ(member.size, MemberSize(*member.field)) << member.field->name;
      end = offset + member.size;
      ++fields;
    }
    EXPECT_EQ(sizeof(T), RoundUp(end, alignof(T)));
    if (kWord == 8) {
      EXPECT_EQ(alignof(T), 8u);
    }
  });
  EXPECT_EQ(fields, kFieldCount);
}

// They stand as they are declared, but for what would leave a gap: a number of 4 bytes stands with
// the next one, at the place of the first of the two, and what has no other, or is smaller, last.
TEST(ObjectModelTest, MembersStandInDeclarationOrderOrInPairs) {
  for (const MessageRow& message : Schema()) {
    SCOPED_TRACE(message.name);
    std::vector<Member> wide, half, small;  // words and more, numbers of 4 bytes, and of less
    for (const Member& member : Members(message)) {
      const size_t size = IsNumber(*member.field) ? member.size : 8;
      (size >= 8 ? wide : size == 4 ? half : small).push_back(member);
    }
    const auto place = [](const Member& a, const Member& b) { return a.offset < b.offset; };
    for (const auto& alike : {wide, half, small}) {
      EXPECT_TRUE(std::is_sorted(alike.begin(), alike.end(), place));
    }
    for (size_t i = 0; i < half.size(); ++i) {
      const Member& first = half[i / 2 * 2];
      const bool alone = half.size() % 2 == 1 && i == half.size() - 1;
      EXPECT_EQ(half[i].offset, first.offset + i % 2 * 4) << half[i].field->name;
      for (const Member& other : wide) {
        EXPECT_EQ(other.offset < first.offset, alone || other.field->has_bit < first.field->has_bit)
            << half[i].field->name << " and " << other.field->name;
      }
    }
    for (const Member& member : small) {
      for (const auto& larger : {wide, half}) {
        if (larger.empty()) continue;
        EXPECT_GT(member.offset, larger.back().offset) << member.field->name;
      }
    }
  }
}

TEST(ObjectModelTest, SubMessagesAreHeldByPlainPointers) {
  ForEachMessage([](auto field) {
    typename decltype(field)::Record record;
    const size_t offset = FindPointer(field).offset;
    EXPECT_EQ(Read<uintptr_t>(record, offset), 0u);
    const Message* value = field.Mutable(&record);
    EXPECT_EQ(Read<uintptr_t>(record, offset), AddressOf(value));
  });
}

TEST(ObjectModelTest, MetadataHasBitsAndCachedSizeStandFirst) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    T record;
    EXPECT_EQ(Read<uintptr_t>(record, kMetadataOffset), 0u);
    record.mutable_unknown_fields()->AddVarint(2000, 1);
    EXPECT_EQ(Read<uintptr_t>(record, kMetadataOffset) & 1, 1u);
    EXPECT_EQ(Read<int>(record, kCachedSizeOffset), 0);
    const int size = record.ByteSize();
    EXPECT_EQ(size, 3);
    EXPECT_EQ(Read<int>(record, kCachedSizeOffset), size);
    EXPECT_EQ(Read<uint32_t>(record, kHasBitsOffset), 0u);
  });
  const auto sets_its_bit = [](auto field, auto set) {
    typename decltype(field)::Record record;
    set(&record);
    EXPECT_EQ(Read<uint32_t>(record, kHasBitsOffset), field.has_bit());
  };
  const auto sets_no_bit = [](auto field, auto add) {
    typename decltype(field)::Record record;
    add(&record);
    EXPECT_EQ(field.Size(record), 1);
    EXPECT_EQ(Read<uint32_t>(record, kHasBitsOffset), 0u);
  };
  ForEachField([&](auto f) { sets_its_bit(f, [&](auto* record) { f.Set(record, 1); }); },
               [&](auto f) { sets_its_bit(f, [&](auto* record) { f.Set(record, "a"); }); },
               [&](auto f) { sets_its_bit(f, [&](auto* record) { f.Mutable(record); }); },
               [&](auto f) { sets_no_bit(f, [&](auto* record) { f.Add(record, 1); }); },
               [&](auto f) { sets_no_bit(f, [&](auto* record) { f.Add(record); }); });
}

// --- Birth ---------------------------------------------------------------------------------------

TEST(ObjectModelTest, ConstructionAllocatesNothing) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    const long before = Allocations();
    { const T record; }
    EXPECT_EQ(Allocations(), before);
    const std::unique_ptr<T> on_heap(new T);
    EXPECT_EQ(Allocations(), before + 1);
    EXPECT_EQ(LatestAllocation(), sizeof(T));
  });
}

TEST(ObjectModelTest, NewObjectIsEmpty) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    const T record;
    for (const Member& member : Members(RowOf<T>())) {
      SCOPED_TRACE(member.field->name);
      if (IsNumber(*member.field)) {
        EXPECT_EQ(ReadBytes(record, member), InitialBytes(*member.field));
      }
    }
    EXPECT_EQ(Read<uintptr_t>(record, kMetadataOffset), 0u);
    EXPECT_EQ(HasBits(record), 0u);
    EXPECT_EQ(record.GetCachedSize(), 0);
    EXPECT_EQ(record.GetArena(), nullptr);
    EXPECT_TRUE(record.unknown_fields().empty());
    EXPECT_TRUE(EqualByReflection(record, T::default_instance()));
    EXPECT_EQ(T().ByteSize(), 0);
  });
  ForEachText([](auto field) {
    typename decltype(field)::Record record;
    EXPECT_EQ(&field.Get(record), SharedEmptyString());
  });
}

// Whatever the memory held before, every member is initialized.
TEST(ObjectModelTest, ConstructionInitializesEveryMember) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    alignas(T) unsigned char clean[sizeof(T)];
    alignas(T) unsigned char dirty[sizeof(T)];
    std::memset(clean, 0, sizeof clean);
    std::memset(dirty, 0xA5, sizeof dirty);
    T* a = new (clean) T;
    T* b = new (dirty) T;
    for (const Member& member : Members(RowOf<T>())) {
      EXPECT_EQ(ReadBytes(*a, member), ReadBytes(*b, member)) << member.field->name;
    }
    EXPECT_EQ(std::memcmp(clean, dirty, kFirstFieldOffset), 0);
    a->~T();
    b->~T();
  });
}

// Stands for a class that a user derived.
template <class T>
class Derived : public T {
 public:
  using T::New;
  Derived* New(Arena*) const override { return new Derived; }
};

TEST(ObjectModelTest, NewMakesAnEmptyObjectOfTheSameClass) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    static_assert(std::is_same<decltype(std::declval<const T&>().New()), T*>::value, "");
    static_assert(std::is_same<decltype(std::declval<const T&>().New(nullptr)), T*>::value, "");
    T full;
    FillWithUnknown(&full);
    full.ByteSize();
    const auto check = [&](const Message* made) {
      ASSERT_NE(made, nullptr);
      EXPECT_TRUE(typeid(*made) == typeid(T));
      EXPECT_NE(made, &full);
      EXPECT_NE(made, &T::default_instance());
      EXPECT_TRUE(EqualByReflection(*made, T::default_instance()));
      EXPECT_EQ(HasBits(*made), 0u);
      EXPECT_EQ(made->GetCachedSize(), 0);
    };
    check(std::unique_ptr<T>(full.New()).get());
    check(std::unique_ptr<T>(full.New(nullptr)).get());
    const Message& as_message = full;
    check(std::unique_ptr<Message>(as_message.New()).get());
    check(std::unique_ptr<Message>(as_message.New(nullptr)).get());
  });
}

TEST(ObjectModelTest, NewGoesThroughTheSlotThatTakesAnArena) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    const Derived<T> derived;
    const T& record = derived;
    const std::unique_ptr<T> made(record.New());
    EXPECT_TRUE(typeid(*made) == typeid(Derived<T>)) << RowOf<T>().name;
  });
}

// An arena that needs no heap of its own for a test's worth of bookkeeping.
class ArenaOnStack {
 public:
  ArenaOnStack() : arena_(Options(block_, sizeof block_)) {}

  Arena* get() { return &arena_; }
  bool Holds(const void* object) const {
    return AddressOf(object) >= AddressOf(block_) &&
           AddressOf(object) < AddressOf(block_) + sizeof block_;
  }

 private:
  static ArenaOptions Options(char* block, size_t size) {
    ArenaOptions options;
    options.initial_block = block;
    options.initial_block_size = size;
    return options;
  }

  alignas(16) char block_[16384];
  Arena arena_;
};

TEST(ObjectModelTest, AnArenaOwnsButNeverHoldsARecord) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    const long live = LiveBlocks();
    {
      ArenaOnStack arena;
      const long before = Allocations();
      T* record = T::default_instance().New(arena.get());
      EXPECT_EQ(Allocations(), before + 1);
      EXPECT_EQ(LatestAllocation(), sizeof(T));
      EXPECT_FALSE(arena.Holds(record));
      EXPECT_EQ(record->GetArena(), nullptr);
      EXPECT_TRUE(typeid(*record) == typeid(T));
      EXPECT_TRUE(EqualByReflection(*record, T::default_instance()));
      FillWithUnknown(record);  // All of which the arena frees with the record.
      EXPECT_GT(LiveBlocks(), live + 1);
    }
    EXPECT_EQ(LiveBlocks(), live);
  });
}

// The run-time's containers place their elements on an arena; the classes only have to be
// constructible there.
TEST(ObjectModelTest, RepeatedElementsMayLiveOnAnArena) {
  ForEachMessages([](auto field) {
    using M = typename decltype(field)::SubMessage;
    const long live = LiveBlocks();
    {
      ArenaOnStack arena;
      RepeatedPtrField<M> elements(arena.get());
      M* element = elements.Add();
      EXPECT_TRUE(arena.Holds(element));
      EXPECT_TRUE(EqualByReflection(*element, M::default_instance()));
      FillWithUnknown(element);
    }
    EXPECT_EQ(LiveBlocks(), live);
  });
}

// --- Clear() -------------------------------------------------------------------------------------

TEST(ObjectModelTest, ClearedRecordReadsAsNew) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    T record;
    FillWithUnknown(&record);
    record.Clear();
    EXPECT_EQ(HasBits(record), 0u);
    EXPECT_TRUE(EqualByReflection(record, T::default_instance()));
    EXPECT_TRUE(record.unknown_fields().empty());
    for (const Member& member : Members(RowOf<T>())) {
      if (!IsNumber(*member.field)) continue;
      EXPECT_EQ(ReadBytes(record, member), InitialBytes(*member.field)) << member.field->name;
    }
    EXPECT_EQ(record.ByteSize(), 0);
    record.Clear();
    EXPECT_TRUE(EqualByReflection(record, T::default_instance()));
  });
}

TEST(ObjectModelTest, ClearKeepsTheCachedSize) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    T record;
    FillFully(&record);
    EXPECT_EQ(record.GetCachedSize(), 0);
    const int size = record.ByteSize();
    EXPECT_GT(size, 0);
    EXPECT_EQ(record.GetCachedSize(), size);
    record.Clear();
    EXPECT_EQ(record.GetCachedSize(), size);
    EXPECT_EQ(record.ByteSize(), 0);
    EXPECT_EQ(record.GetCachedSize(), 0);
  });
}

// Filled, cleared and filled again, a record holds the same strings, sub-messages and elements and
// has asked for no memory.
TEST(ObjectModelTest, ClearedPartsAreUsedAgain) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    T source;
    FillFully(&source);
    std::string bytes;
    ASSERT_TRUE(source.SerializeToString(&bytes));

    T record(source);
    const std::vector<const void*> objects = Objects(record);
    const long allocations = Allocations();
    const long live = LiveBlocks();
    record.Clear();
    EXPECT_EQ(Allocations(), allocations);
    EXPECT_EQ(LiveBlocks(), live) << "Clear() has freed something";
    record.MergeFrom(source);
    EXPECT_EQ(Allocations(), allocations);
    EXPECT_EQ(Objects(record), objects);
    EXPECT_TRUE(EqualByReflection(record, source));

    ASSERT_TRUE(record.ParseFromString(bytes));
    EXPECT_EQ(Objects(record), objects);
    EXPECT_TRUE(EqualByReflection(record, source));
  });
}

TEST(ObjectModelTest, ClearKeepsTheUnknownFieldSet) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    T record;
    record.mutable_unknown_fields()->AddVarint(2000, 1);
    const void* set = &record.unknown_fields();
    record.Clear();
    EXPECT_TRUE(record.unknown_fields().empty());
    EXPECT_EQ(&record.unknown_fields(), set);
    record.Clear();  // with a set, but an empty one
    EXPECT_EQ(&record.unknown_fields(), set);
  });
}

// Clear() looks at the singular fields eight declaration positions at a time: if none of these
// has-bits is set, it may leave the fields of the chunk alone, all or none. If one is set, it must
// clear them all.
TEST(ObjectModelTest, ClearTestsHasBitsByChunk) {
  for (const MessageRow& message : Schema()) {
    uint32_t masks[4] = {};
    for (const FieldRow& field : message) {
      if (!field.repeated()) masks[field.has_bit / 8] |= uint32_t{1} << field.has_bit;
    }
    // By chunk: whether its fields are cleared though none of its has-bits is set.
    std::map<int, bool> always;
    for (int bit = -1; bit < message.field_count(); ++bit) {  // -1: none is set
      const uint32_t has_bits = bit < 0 ? 0 : uint32_t{1} << bit;
      SCOPED_TRACE(std::string(message.name) + ", has-bit " + std::to_string(bit));
      const std::unique_ptr<Message> record = NewRecord(message.name);
      for (const Member& member : Members(message)) {
        if (!IsNumber(*member.field)) continue;
        WriteBytes(record.get(), member.offset, OtherBytes(*member.field));
      }
      // A set bit in front of a null sub-message or the shared empty string must do no harm.
      WriteBytes(record.get(), kHasBitsOffset, BytesOf(has_bits));
      record->Clear();
      EXPECT_EQ(HasBits(*record), 0u);
      for (const Member& member : Members(message)) {
        if (!IsNumber(*member.field)) continue;
        const int chunk = member.field->has_bit / 8;
        const std::string bytes = ReadBytes(*record, member);
        if (bit < 0) always.insert({chunk, bytes == InitialBytes(*member.field)});
        const bool cleared = always.at(chunk) || (has_bits & masks[chunk]) != 0;
        EXPECT_EQ(bytes, cleared ? InitialBytes(*member.field) : OtherBytes(*member.field))
            << member.field->name;
      }
    }
  }
  EXPECT_EQ(*SharedEmptyString(), "");
}

// Whichever field was set, all three come back to their declared defaults.
TEST(ObjectModelTest, ClearBringsBackTheDeclaredDefaultsTogether) {
  const auto check = [](const BaseCalibrationProto& record) {
    EXPECT_EQ(BytesOf(record.wheel_base()), BytesOf(uint32_t{0x3ED013A9}));
    EXPECT_EQ(BytesOf(record.base_width()), BytesOf(uint32_t{0x3EE9FBE7}));
    EXPECT_EQ(BytesOf(record.base_length()), BytesOf(uint32_t{0x3F333333}));
    EXPECT_EQ(HasBits(record), 0u);
  };
  BaseCalibrationProto record;
  check(record);
  check(BaseCalibrationProto::default_instance());
  record.set_wheel_base(1);
  record.set_base_width(2);
  record.set_base_length(3);
  record.Clear();
  check(record);
  record.mutable_gyroscope_cal();
  record.Clear();
  check(record);
  record.Clear();
  check(record);
}

// A string whose has-bit is clear is not looked at, even if someone wrote to it through a pointer
// kept from before; one whose has-bit is set is emptied in place.
TEST(ObjectModelTest, ClearEmptiesStringsThatAreSet) {
  ForEachText([](auto field) {
    typename decltype(field)::Record record;
    std::string* value = field.Mutable(&record);
    field.Clear(&record);
    *value = "left alone";
    WriteBytes(&record, kHasBitsOffset, BytesOf(~field.has_bit()));  // all the others
    record.Clear();
    EXPECT_EQ(field.Get(record), "left alone");

    field.Set(&record, std::string(1000, 'x'));
    const size_t capacity = value->capacity();
    const void* storage = value->data();
    record.Clear();
    EXPECT_EQ(&field.Get(record), value);
    EXPECT_EQ(*value, "");
    EXPECT_EQ(value->capacity(), capacity);
    EXPECT_EQ(value->data(), storage);
    EXPECT_FALSE(field.Has(record));
  });
}

// Tells what happens to an object. Its name stands in the log, with "~" for its end.
template <class M>
class Observed : public M {
 public:
  Observed(std::vector<std::string>* log, std::string name) : log_(log), name_(std::move(name)) {}
  ~Observed() override { log_->push_back("~" + name_); }
  void Clear() override {
    log_->push_back(name_);
    M::Clear();
  }

 private:
  std::vector<std::string>* log_;
  std::string name_;
};

using Log = std::vector<std::string>;

TEST(ObjectModelTest, ClearClearsSubMessagesThatAreSet) {
  ForEachMessage([](auto field) {
    using M = typename decltype(field)::SubMessage;
    Log log;
    {
      typename decltype(field)::Record record;
      auto* sub = new Observed<M>(&log, "sub");
      field.SetAllocated(&record, sub);
      FillFully(sub);
      const long allocations = Allocations();
      const long live = LiveBlocks();
      record.Clear();
      EXPECT_EQ(Allocations(), allocations);
      EXPECT_EQ(LiveBlocks(), live);
      EXPECT_FALSE(field.Has(record));
      EXPECT_EQ(&field.Get(record), sub) << "the sub-message is not kept";
      EXPECT_TRUE(EqualByReflection(*sub, M::default_instance()));
      EXPECT_EQ(log, Log()) << "the sub-message's class is known; its virtual Clear() is not asked";

      // Now its has-bit is clear: not looked at, even with every other bit set.
      FillFully(sub);
      WriteBytes(&record, kHasBitsOffset, BytesOf(~field.has_bit()));
      record.Clear();
      EXPECT_FALSE(EqualByReflection(*sub, M::default_instance()));
    }
    EXPECT_EQ(log, Log{"~sub"}) << "the sub-message's virtual destructor runs once";
  });
}

TEST(ObjectModelTest, ClearClearsEveryElementFromFirstToLast) {
  ForEachMessages([](auto field) {
    using M = typename decltype(field)::SubMessage;
    Log log;
    {
      typename decltype(field)::Record record;
      std::vector<M*> elements;
      for (const char* name : {"0", "1", "2"}) {
        elements.push_back(new Observed<M>(&log, name));
        FillFully(elements.back());
        field.MutableAll(&record)->AddAllocated(elements.back());
      }
      log.clear();  // of what adding may have done
      record.Clear();
      EXPECT_EQ(log, (Log{"0", "1", "2"}));
      EXPECT_EQ(field.Size(record), 0);
      for (M* element : elements) {
        EXPECT_TRUE(EqualByReflection(*element, M::default_instance()));
        EXPECT_EQ(field.Add(&record), element) << "elements are kept for reuse, in order";
      }
      log.clear();
    }
    EXPECT_EQ(log, (Log{"~0", "~1", "~2"}));
  });
}

// Repeated fields are emptied whatever the has-bits say, and keep their storage.
TEST(ObjectModelTest, ClearEmptiesRepeatedNumbers) {
  ForEachNumbers([](auto field) {
    typename decltype(field)::Record record;
    for (int i = 0; i < 100; ++i) field.Add(&record, i);
    const void* storage = field.All(record).data();
    EXPECT_EQ(HasBits(record), 0u);
    record.Clear();
    EXPECT_EQ(field.Size(record), 0);
    const long allocations = Allocations();
    for (int i = 0; i < 100; ++i) field.Add(&record, i);
    EXPECT_EQ(Allocations(), allocations);
    EXPECT_EQ(field.All(record).data(), storage);
  });
}

// --- Swap() --------------------------------------------------------------------------------------

// All of an object but the virtual table, the unknown fields and the gaps between members.
template <class T>
std::vector<std::string> State(const T& record) {
  std::vector<std::string> state = {BytesOf(HasBits(record)), BytesOf(record.GetCachedSize())};
  for (const Member& member : Members(RowOf<T>())) state.push_back(ReadBytes(record, member));
  return state;
}

TEST(ObjectModelTest, SwapExchangesEverythingWithoutCopying) {
  constexpr uint32_t kSeed = 20240611;
  std::mt19937 random(kSeed);
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  ForEachRecord([&](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    for (const bool empty : {true, false}) {
      T a;
      T b;
      FillFully(&a);
      RandomOptions options;
      options.unknown_fields = false;
      if (!empty) FillRandomly(&random, options, &b);
      a.ByteSize();
      b.ByteSize();
      const T a_before(a);
      const T b_before(b);
      const std::vector<std::string> a_state = State(a);
      const std::vector<std::string> b_state = State(b);
      const std::vector<const void*> a_objects = Objects(a);
      const std::vector<const void*> b_objects = Objects(b);

      const long allocations = Allocations();
      const long live = LiveBlocks();
      a.Swap(&b);
      EXPECT_EQ(Allocations(), allocations);
      EXPECT_EQ(LiveBlocks(), live);
      EXPECT_EQ(State(a), b_state);
      EXPECT_EQ(State(b), a_state);
      EXPECT_TRUE(EqualByReflection(a, b_before));
      EXPECT_TRUE(EqualByReflection(b, a_before));
      EXPECT_EQ(Objects(a), b_objects);
      EXPECT_EQ(Objects(b), a_objects);
      EXPECT_EQ(Read<uintptr_t>(a, kMetadataOffset), 0u);
      EXPECT_EQ(Read<uintptr_t>(b, kMetadataOffset), 0u);
    }
  });
}

TEST(ObjectModelTest, SwapWithItselfChangesNothing) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    T record;
    FillWithUnknown(&record);
    record.ByteSize();
    const T before(record);
    const std::vector<std::string> state = State(record);
    const void* unknown = &record.unknown_fields();
    const long allocations = Allocations();
    record.Swap(&record);
    EXPECT_EQ(Allocations(), allocations);
    EXPECT_EQ(State(record), state);
    EXPECT_EQ(&record.unknown_fields(), unknown);
    EXPECT_TRUE(EqualByReflection(record, before));
  });
}

TEST(ObjectModelTest, SwapExchangesUnknownFields) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    T a;
    T b;
    a.mutable_unknown_fields()->AddLengthDelimited(2000, "unknown");
    const std::string unknown = EncodeUnknown(a.unknown_fields());
    a.Swap(&b);
    EXPECT_TRUE(a.unknown_fields().empty());
    EXPECT_EQ(EncodeUnknown(b.unknown_fields()), unknown);
    a.Swap(&b);  // now both have a set, one of them an empty one
    EXPECT_EQ(EncodeUnknown(a.unknown_fields()), unknown);
    EXPECT_TRUE(b.unknown_fields().empty());

    b.mutable_unknown_fields()->AddVarint(3000, 7);
    const std::string other = EncodeUnknown(b.unknown_fields());
    a.Swap(&b);
    EXPECT_EQ(EncodeUnknown(a.unknown_fields()), other);
    EXPECT_EQ(EncodeUnknown(b.unknown_fields()), unknown);

    T c;
    c.Swap(&a);  // the side without a set is the one that asks
    EXPECT_EQ(EncodeUnknown(c.unknown_fields()), other);
    EXPECT_TRUE(a.unknown_fields().empty());
  });
}

// A record that an arena owns is a heap object like any other, and is swapped like any other.
TEST(ObjectModelTest, SwapDoesNotMindArenas) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    const long live = LiveBlocks();
    {
      Arena arena;
      T* owned = T::default_instance().New(&arena);
      T other;
      FillWithUnknown(&other);
      const std::vector<const void*> objects = Objects(other);
      owned->Swap(&other);
      EXPECT_EQ(Objects(*owned), objects);
      EXPECT_TRUE(EqualByReflection(other, T::default_instance()));
    }
    EXPECT_EQ(LiveBlocks(), live);
  });
}

// --- Death ---------------------------------------------------------------------------------------

TEST(ObjectModelTest, DestructionFreesEverything) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    const long live = LiveBlocks();
    {
      T record;
      FillWithUnknown(&record);
      EXPECT_GT(LiveBlocks(), live);
    }
    EXPECT_EQ(LiveBlocks(), live) << "a full record";
    {
      T record;
      FillWithUnknown(&record);
      record.Clear();
      EXPECT_GT(LiveBlocks(), live);
    }
    EXPECT_EQ(LiveBlocks(), live) << "a cleared record";
    {
      std::unique_ptr<Message> record(new T);  // through the base class
      FillFully(record.get());
    }
    EXPECT_EQ(LiveBlocks(), live) << "a record on the heap";
    {
      T record;
      FillWithUnknown(&record);
      T copy(record);
      copy = record;
      copy.MergeFrom(record);
      T other;
      other.Swap(&copy);
      other.Clear();
      other.CopyFrom(record);
    }
    EXPECT_EQ(LiveBlocks(), live) << "records that were copied, merged, swapped, cleared";
  });
}

TEST(ObjectModelTest, ASystemsSubMessagesDieWithIt) {
  Log log;
  {
    PTZSystemCalibration record;
    auto* camera = new Observed<PTZCameraParameters>(&log, "ptz_camera");
    camera->set_allocated_intrinsics(new Observed<PTZIntrinsics>(&log, "intrinsics"));
    camera->set_allocated_pan_tilt(new Observed<PanTiltSystemParameters>(&log, "pan_tilt"));
    record.set_allocated_ptz_camera(camera);
    auto* laser = new Observed<PanTiltSystemParameters>(&log, "laser");
    laser->set_allocated_pan_ext(new Observed<CameraExtrinsics>(&log, "pan_ext"));
    laser->set_allocated_tilt_ext(new Observed<CameraExtrinsics>(&log, "tilt_ext"));
    laser->set_allocated_device_ext(new Observed<CameraExtrinsics>(&log, "device_ext"));
    record.set_allocated_laser(laser);
    auto* others = new Observed<RobotCalibration>(&log, "other_cameras");
    others->mutable_camera()->AddAllocated(new Observed<CameraCalibration>(&log, "camera"));
    record.set_allocated_other_cameras(others);
  }
  EXPECT_EQ(log, (Log{"~ptz_camera", "~intrinsics", "~pan_tilt", "~laser", "~pan_ext", "~tilt_ext",
                      "~device_ext", "~other_cameras", "~camera"}));
}

// Copies of default instances own nothing of theirs, and a default instance does not own those it
// links to.
TEST(ObjectModelTest, CopiesOfDefaultInstancesHoldNoLinks) {
  ForEachRecord([](auto type) {
    using T = typename decltype(type)::Type;
    SCOPED_TRACE(RowOf<T>().name);
    const long live = LiveBlocks();
    {
      const T copy(T::default_instance());
      EXPECT_EQ(State(copy), State(T()));
    }
    EXPECT_EQ(LiveBlocks(), live);
  });
}

// Ends the process, since the library's default instances cannot be replaced: by a signal, because
// a leak checker would look at what an exit leaves.
[[noreturn]] void DeleteDefaultInstances() {
  int alone = 0;
  ForEachRecord([&alone](auto type) {
    using T = typename decltype(type)::Type;
    const long live = LiveBlocks();
    delete &T::default_instance();
    const long freed = live - LiveBlocks();
    if (freed == 1) {
      ++alone;
    } else {
      std::cerr << RowOf<T>().name << ": " << freed << " blocks freed with the default instance\n";
    }
  });
  std::cerr << "default instances freed alone: " << alone << "\n";
  std::abort();
}

TEST(ObjectModelDeathTest, DefaultInstancesNeverDeleteOneAnother) {
  EXPECT_DEATH(DeleteDefaultInstances(),
               "default instances freed alone: " + std::to_string(kMessageCount) + "\n");
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
