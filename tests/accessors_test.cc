// The accessors of all fields: presence, values, laziness, ownership, and agreement with
// reflection. What holds for a kind of field is written once and tried on every field of that kind.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
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

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;
using ::google::protobuf::UnknownFieldSet;

// Checks, on leaving a scope, how many blocks were allocated in it and how many more are alive.
class HeapUse {
 public:
  HeapUse(long allocated, long grown)
      : allocated_(Allocations() + allocated), live_(LiveBlocks() + grown) {}
  ~HeapUse() {
    const long allocated = Allocations();
    const long live = LiveBlocks();
    EXPECT_EQ(allocated, allocated_) << "allocations";
    EXPECT_EQ(live, live_) << "blocks alive";
  }

 private:
  const long allocated_;
  const long live_;
};

// Values of a number: zero among them, and whatever a conversion on the way would change.
template <class V>
std::vector<V> Values() {
  if constexpr (std::is_same<V, double>::value) {
    std::vector<V> values = {0.1, -3.25e300};
    for (const uint64_t bits : BoundaryDoubleBits()) values.push_back(DoubleOf(bits));
    return values;
  } else if constexpr (std::is_same<V, float>::value) {
    std::vector<V> values = {0.1f, 0.4064f, 0.457f, 0.7f};
    for (const uint32_t bits : BoundaryFloatBits()) values.push_back(FloatOf(bits));
    return values;
  } else if constexpr (std::is_same<V, bool>::value) {
    return {true, false};
  } else if constexpr (sizeof(V) == 4) {
    return std::vector<V>(BoundaryInt32().begin(), BoundaryInt32().end());
  } else {
    return std::vector<V>(BoundaryInt64().begin(), BoundaryInt64().end());
  }
}

// The value that a number has before it is set.
template <class V>
V DefaultOf(const FieldRow& row) {
  V value = V();
  if (row.default_text != nullptr) std::memcpy(&value, &row.default_bits, sizeof value);
  return value;
}

std::vector<std::string> Texts() {
  return {"",
          "a",
          std::string("\0", 1),
          std::string("zero\0inside\0", 12),
          "\xFF\xFE no UTF-8 \xC0",
          std::string(15, 's'),
          std::string(16, 't'),
          std::string(20000, 'u')};
}

// --- The table itself ----------------------------------------------------------------------------

TEST(AccessorsTest, TableHasEveryFieldOfTheSchema) {
  std::vector<std::string> seen;
  const auto check = [&seen](const auto& field, bool repeated, const std::vector<Kind>& kinds,
                             const char* message_type) {
    const FieldRow* row = FindField(FindMessage(field.record_name), std::string(field.name));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->repeated(), repeated);
    EXPECT_TRUE(std::count(kinds.begin(), kinds.end(), row->kind)) << "another kind of field";
    EXPECT_STREQ(row->message_type, message_type);
    seen.push_back(std::string(field.record_name) + "." + field.name);
  };
  const auto kind_of = [](auto value) {
    using V = decltype(value);
    return std::is_same<V, double>::value  ? Kind::kDouble
           : std::is_same<V, float>::value ? Kind::kFloat
           : std::is_same<V, bool>::value  ? Kind::kBool
           : sizeof(V) == 4                ? Kind::kInt32
                                           : Kind::kInt64;
  };
  ForEachField(
      [&](auto f) { check(f, false, {kind_of(typename decltype(f)::Value())}, nullptr); },
      [&](auto f) {
        const bool counts_octets =
            std::is_invocable<decltype(f.set_counted), typename decltype(f)::Record*, const int*,
                              size_t>::value;  // const void* takes an int*
        check(f, false, {counts_octets ? Kind::kBytes : Kind::kString}, nullptr);
      },
      [&](auto f) {
        using M = typename decltype(f)::SubMessage;
        check(f, false, {Kind::kMessage}, M::descriptor()->name().c_str());
      },
      [&](auto f) { check(f, true, {kind_of(typename decltype(f)::Value())}, nullptr); },
      [&](auto f) {
        using M = typename decltype(f)::SubMessage;
        check(f, true, {Kind::kMessage}, M::descriptor()->name().c_str());
      });
  EXPECT_EQ(seen.size(), size_t{kFieldCount});
  EXPECT_EQ(std::set<std::string>(seen.begin(), seen.end()).size(), size_t{kFieldCount});
}

// --- Singular numbers ----------------------------------------------------------------------------

TEST(AccessorsTest, NumberIsAbsentAndDefaultAtFirst) {
  ForEachNumber([](auto field) {
    using V = typename decltype(field)::Value;
    const V initial = DefaultOf<V>(field.row());
    const HeapUse no_use(0, 0);
    const typename decltype(field)::Record record;
    EXPECT_FALSE(field.Has(record));
    EXPECT_EQ(BytesOf(field.Get(record)), BytesOf(initial));
  });
}

TEST(AccessorsTest, NumberIsStoredBitForBit) {
  ForEachNumber([](auto field) {
    using V = typename decltype(field)::Value;
    typename decltype(field)::Record record;
    for (const V value : Values<V>()) {
      {
        const HeapUse no_use(0, 0);
        field.Clear(&record);
        EXPECT_FALSE(field.Has(record));
        field.Set(&record, value);
      }
      EXPECT_TRUE(field.Has(record));
      EXPECT_EQ(BytesOf(field.Get(record)), BytesOf(value));
      EXPECT_EQ(HasBits(record), field.has_bit());
    }
  });
}

TEST(AccessorsTest, NumberIsPresentEvenAtItsDefault) {
  ForEachNumber([](auto field) {
    using V = typename decltype(field)::Value;
    typename decltype(field)::Record record;
    field.Set(&record, DefaultOf<V>(field.row()));
    EXPECT_TRUE(field.Has(record));
    EXPECT_GT(record.ByteSize(), 0);
  });
}

TEST(AccessorsTest, ClearedNumberIsAbsentAndDefault) {
  ForEachNumber([](auto field) {
    using V = typename decltype(field)::Value;
    typename decltype(field)::Record record;
    for (const V value : Values<V>()) {
      field.Set(&record, value);
      field.Clear(&record);
      EXPECT_FALSE(field.Has(record));
      EXPECT_EQ(BytesOf(field.Get(record)), BytesOf(DefaultOf<V>(field.row())));
      field.Clear(&record);
      EXPECT_FALSE(field.Has(record));
    }
  });
}

// --- Strings and bytes ---------------------------------------------------------------------------

TEST(AccessorsTest, TextIsTheSharedEmptyStringAtFirst) {
  ForEachText([](auto field) {
    const HeapUse no_use(0, 0);
    typename decltype(field)::Record record;
    EXPECT_FALSE(field.Has(record));
    EXPECT_EQ(&field.Get(record), SharedEmptyString());
    field.Clear(&record);
    EXPECT_EQ(&field.Get(record), SharedEmptyString());
    EXPECT_EQ(field.Release(&record), nullptr);
    EXPECT_EQ(&field.Get(record), SharedEmptyString());
    field.SetAllocated(&record, nullptr);
    EXPECT_EQ(&field.Get(record), SharedEmptyString());
    EXPECT_EQ(HasBits(record), 0u);
  });
  EXPECT_EQ(*SharedEmptyString(), "");
}

// One string object is made at the first write, by whichever accessor, and kept from then on.
TEST(AccessorsTest, TextIsAllocatedAtTheFirstWrite) {
  ForEachText([](auto field) {
    using R = typename decltype(field)::Record;
    const std::vector<std::function<void(R*)>> writes = {
        [&](R* record) { field.Set(record, ""); },
        [&](R* record) { field.SetMoved(record, std::string()); },
        [&](R* record) { field.SetTerminated(record, ""); },
        [&](R* record) { field.SetCounted(record, "", 0); },
        [&](R* record) { field.Mutable(record); },
    };
    for (size_t first = 0; first < writes.size(); ++first) {
      SCOPED_TRACE("write number " + std::to_string(first));
      R record;
      {
        const HeapUse one_string(1, 1);
        writes[first](&record);
      }
      EXPECT_EQ(LatestAllocation(), sizeof(std::string));
      EXPECT_TRUE(field.Has(record));
      EXPECT_EQ(HasBits(record), field.has_bit());
      EXPECT_EQ(field.Get(record), "");
      const std::string* value = &field.Get(record);
      EXPECT_NE(value, SharedEmptyString());
      const HeapUse no_more(0, 0);
      for (const auto& write : writes) {
        field.Clear(&record);
        EXPECT_FALSE(field.Has(record));
        write(&record);
        EXPECT_TRUE(field.Has(record));
        EXPECT_EQ(&field.Get(record), value);
      }
    }
    EXPECT_EQ(*SharedEmptyString(), "");
  });
}

TEST(AccessorsTest, TextIsStoredByteForByte) {
  ForEachText([](auto field) {
    typename decltype(field)::Record record;
    for (const std::string& text : Texts()) {
      SCOPED_TRACE("length " + std::to_string(text.size()));
      field.Set(&record, text);
      EXPECT_EQ(field.Get(record), text);
      field.Set(&record, "other");
      field.SetMoved(&record, text);
      EXPECT_EQ(field.Get(record), text);
      field.Set(&record, "other");
      field.SetCounted(&record, text.data(), text.size());
      EXPECT_EQ(field.Get(record), text);
      field.Set(&record, "other");
      field.SetTerminated(&record, text.c_str());
      EXPECT_EQ(field.Get(record), std::string(text.c_str()));  // up to the first zero
      field.Set(&record, "other");
      std::string* value = field.Mutable(&record);
      EXPECT_EQ(*value, "other");
      EXPECT_EQ(value, &field.Get(record));
      *value = text;
      EXPECT_EQ(field.Get(record), text);
      EXPECT_EQ(HasBits(record), field.has_bit());
    }
    // Counted text ends where the count says, wherever a zero stands.
    field.SetCounted(&record, "abc", 2);
    EXPECT_EQ(field.Get(record), "ab");
  });
}

TEST(AccessorsTest, MovedTextIsNotCopied) {
  ForEachText([](auto field) {
    typename decltype(field)::Record record;
    field.Set(&record, "");
    std::string text(100, 'x');
    const char* const place = text.data();
    const HeapUse no_use(0, 0);
    field.SetMoved(&record, std::move(text));
    EXPECT_EQ(field.Get(record).data(), place);
    EXPECT_EQ(field.Get(record).size(), 100u);
  });
}

TEST(AccessorsTest, TextMayBeSetFromItself) {
  ForEachText([](auto field) {
    typename decltype(field)::Record record;
    const std::string text(100, 'x');
    field.Set(&record, text);
    field.Set(&record, field.Get(record));
    EXPECT_EQ(field.Get(record), text);
    field.SetTerminated(&record, field.Get(record).c_str() + 10);
    EXPECT_EQ(field.Get(record), text.substr(10));
    field.SetCounted(&record, field.Get(record).data() + 10, 20);
    EXPECT_EQ(field.Get(record), text.substr(0, 20));
  });
}

TEST(AccessorsTest, ClearedTextKeepsItsStorage) {
  ForEachText([](auto field) {
    typename decltype(field)::Record record;
    field.Set(&record, std::string(1000, 'x'));
    const std::string* value = &field.Get(record);
    const void* storage = value->data();
    const HeapUse no_use(0, 0);
    field.Clear(&record);
    EXPECT_FALSE(field.Has(record));
    EXPECT_EQ(&field.Get(record), value);
    EXPECT_EQ(*value, "");
    field.Clear(&record);
    EXPECT_EQ(field.Mutable(&record), value);
    EXPECT_TRUE(field.Has(record));
    EXPECT_EQ(*value, "");
    value = field.Mutable(&record);
    const_cast<std::string*>(value)->append(900, 'y');
    EXPECT_EQ(field.Get(record).data(), storage);
  });
}

TEST(AccessorsTest, ReleasedTextIsTheCallers) {
  ForEachText([](auto field) {
    const HeapUse in_all(2, 0);
    typename decltype(field)::Record record;
    for (const bool cleared : {false, true}) {  // a cleared field still owns its string
      field.Set(&record, "a");
      const std::string* value = &field.Get(record);
      if (cleared) field.Clear(&record);
      const std::unique_ptr<std::string> released(field.Release(&record));
      EXPECT_EQ(released.get(), value);
      EXPECT_EQ(*released, cleared ? "" : "a");
      EXPECT_FALSE(field.Has(record));
      EXPECT_EQ(&field.Get(record), SharedEmptyString());
      EXPECT_EQ(field.Release(&record), nullptr);
      EXPECT_EQ(HasBits(record), 0u);
    }
  });
}

TEST(AccessorsTest, AllocatedTextIsTheFields) {
  ForEachText([](auto field) {
    const long live = LiveBlocks();
    typename decltype(field)::Record record;
    std::string* first = new std::string("first");
    field.SetAllocated(&record, first);
    EXPECT_TRUE(field.Has(record));
    EXPECT_EQ(&field.Get(record), first);
    EXPECT_EQ(field.Get(record), "first");
    EXPECT_EQ(LiveBlocks(), live + 1);

    std::string* second = new std::string("second");
    field.SetAllocated(&record, second);
    EXPECT_EQ(&field.Get(record), second);
    EXPECT_TRUE(field.Has(record));
    EXPECT_EQ(LiveBlocks(), live + 1) << "the string held before is not freed";
    EXPECT_EQ(field.Mutable(&record), second);

    field.SetAllocated(&record, nullptr);
    EXPECT_FALSE(field.Has(record));
    EXPECT_EQ(&field.Get(record), SharedEmptyString());
    EXPECT_EQ(LiveBlocks(), live);

    field.SetAllocated(&record, new std::string);  // present, though empty
    EXPECT_TRUE(field.Has(record));
    EXPECT_EQ(HasBits(record), field.has_bit());
    field.Clear(&record);
    field.SetAllocated(&record, new std::string("after a clear"));
    EXPECT_EQ(field.Get(record), "after a clear");
    EXPECT_EQ(LiveBlocks(), live + 1);
    // What was released may be handed in again.
    field.SetAllocated(&record, field.Release(&record));
    EXPECT_EQ(field.Get(record), "after a clear");
    EXPECT_TRUE(field.Has(record));
  });
}

// --- Sub-messages --------------------------------------------------------------------------------

TEST(AccessorsTest, SubMessageIsTheDefaultInstanceAtFirst) {
  ForEachMessage([](auto field) {
    using R = typename decltype(field)::Record;
    using M = typename decltype(field)::SubMessage;
    const HeapUse no_use(0, 0);
    R record;
    EXPECT_FALSE(field.Has(record));
    EXPECT_EQ(&field.Get(record), &M::default_instance());
    EXPECT_FALSE(field.Has(R::default_instance()));
    EXPECT_EQ(&field.Get(R::default_instance()), &M::default_instance());
    field.Clear(&record);
    EXPECT_EQ(field.Release(&record), nullptr);
    field.SetAllocated(&record, nullptr);
    EXPECT_EQ(&field.Get(record), &M::default_instance());
    EXPECT_EQ(HasBits(record), 0u);
  });
}

TEST(AccessorsTest, SubMessageIsMadeOnce) {
  ForEachMessage([](auto field) {
    using M = typename decltype(field)::SubMessage;
    typename decltype(field)::Record record;
    M* sub;
    {
      const HeapUse one_object(1, 1);
      sub = field.Mutable(&record);
    }
    EXPECT_EQ(LatestAllocation(), sizeof(M));
    ASSERT_NE(sub, nullptr);
    EXPECT_NE(sub, &M::default_instance());
    EXPECT_TRUE(field.Has(record));
    EXPECT_EQ(HasBits(record), field.has_bit());
    EXPECT_TRUE(EqualByReflection(*sub, M::default_instance()));
    const HeapUse no_more(0, 0);
    EXPECT_EQ(field.Mutable(&record), sub);
    EXPECT_EQ(&field.Get(record), sub);
  });
}

TEST(AccessorsTest, ClearedSubMessageIsKept) {
  ForEachMessage([](auto field) {
    using M = typename decltype(field)::SubMessage;
    typename decltype(field)::Record record;
    M* sub = field.Mutable(&record);
    FillFully(sub);
    {
      const HeapUse no_use(0, 0);
      field.Clear(&record);
    }
    EXPECT_FALSE(field.Has(record));
    EXPECT_EQ(&field.Get(record), sub);
    EXPECT_TRUE(EqualByReflection(*sub, M::default_instance()));
    const HeapUse no_use(0, 0);
    EXPECT_EQ(field.Mutable(&record), sub);
    EXPECT_TRUE(field.Has(record));
  });
}

// clear_x() empties the sub-message also where its has-bit is clear already.
TEST(AccessorsTest, SubMessageIsClearedWhateverItsHasBit) {
  ForEachMessage([](auto field) {
    using M = typename decltype(field)::SubMessage;
    typename decltype(field)::Record record;
    M* sub = field.Mutable(&record);
    field.Clear(&record);
    FillFully(sub);
    field.Clear(&record);
    EXPECT_TRUE(EqualByReflection(*sub, M::default_instance()));
  });
}

TEST(AccessorsTest, ReleasedSubMessageIsTheCallers) {
  ForEachMessage([](auto field) {
    using M = typename decltype(field)::SubMessage;
    const long live = LiveBlocks();
    {
      typename decltype(field)::Record record;
      for (const bool cleared : {false, true}) {
        M* sub = field.Mutable(&record);
        FillFully(sub);
        const M before(*sub);
        if (cleared) field.Clear(&record);
        const std::unique_ptr<M> released(field.Release(&record));
        EXPECT_EQ(released.get(), sub);
        EXPECT_TRUE(EqualByReflection(*released, cleared ? M::default_instance() : before));
        EXPECT_FALSE(field.Has(record));
        EXPECT_EQ(&field.Get(record), &M::default_instance());
        EXPECT_EQ(field.Release(&record), nullptr);
        EXPECT_EQ(HasBits(record), 0u);
      }
    }
    EXPECT_EQ(LiveBlocks(), live);
  });
}

// Counts its deaths.
template <class M>
class Mortal : public M {
 public:
  explicit Mortal(int* deaths) : deaths_(deaths) {}
  ~Mortal() override { ++*deaths_; }

 private:
  int* deaths_;
};

TEST(AccessorsTest, AllocatedSubMessageIsTheFields) {
  ForEachMessage([](auto field) {
    using M = typename decltype(field)::SubMessage;
    const long live = LiveBlocks();
    int deaths = 0;
    {
      typename decltype(field)::Record record;
      M* first = new Mortal<M>(&deaths);
      FillFully(first);
      field.SetAllocated(&record, first);
      EXPECT_TRUE(field.Has(record));
      EXPECT_EQ(HasBits(record), field.has_bit());
      EXPECT_EQ(&field.Get(record), first);
      EXPECT_FALSE(EqualByReflection(*first, M::default_instance()));

      M* second = new Mortal<M>(&deaths);
      field.SetAllocated(&record, second);
      EXPECT_EQ(deaths, 1) << "the sub-message held before is not deleted";
      EXPECT_EQ(field.Mutable(&record), second);
      EXPECT_TRUE(field.Has(record));

      field.SetAllocated(&record, nullptr);
      EXPECT_EQ(deaths, 2);
      EXPECT_FALSE(field.Has(record));
      EXPECT_EQ(&field.Get(record), &M::default_instance());

      field.SetAllocated(&record, new Mortal<M>(&deaths));
      field.Clear(&record);
      EXPECT_EQ(deaths, 2);
      field.SetAllocated(&record, field.Release(&record));
      EXPECT_TRUE(field.Has(record));
    }
    EXPECT_EQ(deaths, 3);
    EXPECT_EQ(LiveBlocks(), live);
  });
}

// --- Repeated numbers ----------------------------------------------------------------------------

TEST(AccessorsTest, RepeatedNumbersHoldTheirValues) {
  ForEachNumbers([](auto field) {
    using V = typename decltype(field)::Value;
    typename decltype(field)::Record record;
    EXPECT_EQ(field.Size(record), 0);
    EXPECT_EQ(field.All(record).size(), 0);
    const std::vector<V> values = Values<V>();
    const int count = static_cast<int>(values.size());
    for (int i = 0; i < count; ++i) {
      field.Add(&record, values[i]);
      EXPECT_EQ(field.Size(record), i + 1);
    }
    EXPECT_EQ(field.All(record).size(), count);
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(BytesOf(field.Get(record, i)), BytesOf(values[i]));
      EXPECT_EQ(BytesOf(field.All(record).Get(i)), BytesOf(values[i]));
    }
    for (int i = 0; i < count; ++i) field.Set(&record, i, values[count - 1 - i]);
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(BytesOf(field.Get(record, i)), BytesOf(values[count - 1 - i]));
    }
    EXPECT_EQ(field.MutableAll(&record), &field.All(record));
    field.MutableAll(&record)->Add(V{7});
    EXPECT_EQ(field.Size(record), count + 1);
    EXPECT_EQ(field.Get(record, count), V{7});
    EXPECT_EQ(HasBits(record), 0u) << "a repeated field has no presence";
  });
}

TEST(AccessorsTest, ClearedRepeatedNumbersKeepTheirStorage) {
  ForEachNumbers([](auto field) {
    typename decltype(field)::Record record;
    {
      const HeapUse no_use(0, 0);
      field.Clear(&record);
    }
    for (int i = 0; i < 50; ++i) field.Add(&record, i);
    const void* storage = field.All(record).data();
    const HeapUse no_use(0, 0);
    field.Clear(&record);
    EXPECT_EQ(field.Size(record), 0);
    for (int i = 0; i < 50; ++i) field.Add(&record, i);
    EXPECT_EQ(field.All(record).data(), storage);
    EXPECT_EQ(field.Get(record, 49), 49);
  });
}

// --- Repeated sub-messages -----------------------------------------------------------------------

TEST(AccessorsTest, RepeatedSubMessagesHoldTheirElements) {
  ForEachMessages([](auto field) {
    using M = typename decltype(field)::SubMessage;
    const long live = LiveBlocks();
    {
      typename decltype(field)::Record record;
      EXPECT_EQ(field.Size(record), 0);
      EXPECT_EQ(field.All(record).size(), 0);
      std::vector<M*> elements;
      for (int i = 0; i < 5; ++i) {
        elements.push_back(field.Add(&record));
        EXPECT_EQ(field.Size(record), i + 1);
        EXPECT_TRUE(EqualByReflection(*elements.back(), M::default_instance()));
        FillFully(elements.back());
      }
      for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(&field.Get(record, i), elements[i]);
        EXPECT_EQ(field.Mutable(&record, i), elements[i]);
        EXPECT_EQ(&field.All(record).Get(i), elements[i]);
      }
      EXPECT_EQ(field.MutableAll(&record), &field.All(record));
      const auto* added = field.MutableAll(&record)->Add();
      EXPECT_EQ(added, &field.Get(record, 5));
      EXPECT_EQ(field.Size(record), 6);
      EXPECT_EQ(HasBits(record), 0u) << "a repeated field has no presence";
    }
    EXPECT_EQ(LiveBlocks(), live);
  });
}

TEST(AccessorsTest, ClearedElementsAreUsedAgain) {
  ForEachMessages([](auto field) {
    using M = typename decltype(field)::SubMessage;
    typename decltype(field)::Record record;
    {
      const HeapUse no_use(0, 0);
      field.Clear(&record);
    }
    std::vector<M*> elements;
    for (int i = 0; i < 5; ++i) {
      elements.push_back(field.Add(&record));
      FillFully(elements.back());
    }
    {
      const HeapUse no_use(0, 0);
      field.Clear(&record);
    }
    EXPECT_EQ(field.Size(record), 0);
    for (M* element : elements) {
      const HeapUse no_use(0, 0);
      EXPECT_EQ(field.Add(&record), element);
    }
    for (M* element : elements) EXPECT_TRUE(EqualByReflection(*element, M::default_instance()));
  });
}

// --- Presence ------------------------------------------------------------------------------------

// One thing that can be done to a record, and what it makes of the has-bits in `touched`.
struct Step {
  std::string record_name;
  std::string name;
  std::function<void(Message*)> run;
  uint32_t touched;
  bool sets;
};

std::vector<Step> AllSteps() {
  std::vector<Step> steps;
  const auto add = [&steps](auto field, const char* name, auto run, bool sets,
                            bool repeated = false) {
    using R = typename decltype(field)::Record;
    steps.push_back({field.record_name, std::string(name) + " " + field.name,
                     [field, run](Message* record) { run(field, static_cast<R*>(record)); },
                     repeated ? 0 : field.has_bit(), sets});
  };
  ForEachField(
      [&](auto f) {
        add(
            f, "set", [](auto x, auto* r) { x.Set(r, 1); }, true);
        add(
            f, "clear", [](auto x, auto* r) { x.Clear(r); }, false);
      },
      [&](auto f) {
        add(
            f, "set", [](auto x, auto* r) { x.Set(r, "a"); }, true);
        add(
            f, "mutable", [](auto x, auto* r) { x.Mutable(r); }, true);
        add(
            f, "set_allocated", [](auto x, auto* r) { x.SetAllocated(r, new std::string); }, true);
        add(
            f, "set_allocated null", [](auto x, auto* r) { x.SetAllocated(r, nullptr); }, false);
        add(
            f, "clear", [](auto x, auto* r) { x.Clear(r); }, false);
        add(
            f, "release", [](auto x, auto* r) { delete x.Release(r); }, false);
      },
      [&](auto f) {
        using M = typename decltype(f)::SubMessage;
        add(
            f, "mutable", [](auto x, auto* r) { x.Mutable(r); }, true);
        add(
            f, "set_allocated", [](auto x, auto* r) { x.SetAllocated(r, new M); }, true);
        add(
            f, "set_allocated null", [](auto x, auto* r) { x.SetAllocated(r, nullptr); }, false);
        add(
            f, "clear", [](auto x, auto* r) { x.Clear(r); }, false);
        add(
            f, "release", [](auto x, auto* r) { delete x.Release(r); }, false);
      },
      [&](auto f) {
        add(
            f, "add", [](auto x, auto* r) { x.Add(r, 1); }, true, true);
        add(
            f, "clear", [](auto x, auto* r) { x.Clear(r); }, false, true);
      },
      [&](auto f) {
        add(
            f, "add", [](auto x, auto* r) { x.Add(r); }, true, true);
        add(
            f, "clear", [](auto x, auto* r) { x.Clear(r); }, false, true);
      });
  return steps;
}

constexpr uint32_t kSeed = 20240612;

// Whatever is done in whatever order, each has-bit is what the last step on its field made it.
TEST(AccessorsTest, HasBitsFollowAnyRunOfSteps) {
  const std::vector<Step> all_steps = AllSteps();
  for (const RecordType& type : RecordTypes()) {
    SCOPED_TRACE(type.name + ", seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    std::vector<Step> steps = {
        {type.name, "Clear", [](Message* record) { record->Clear(); }, ~uint32_t{0}, false}};
    for (const Step& step : all_steps) {
      if (step.record_name == type.name) steps.push_back(step);
    }
    const std::unique_ptr<Message> record = type.make();
    uint32_t expected = 0;
    for (int i = 0; i < 500; ++i) {
      const Step& step = steps[random() % steps.size()];
      step.run(record.get());
      expected = step.sets ? expected | step.touched : expected & ~step.touched;
      ASSERT_EQ(HasBits(*record), expected) << "after step " << i << ", " << step.name;
    }
  }
}

// A read changes nothing and takes no memory, on an empty record and on a full one. Several threads
// may read one record; under a race detector this checks that they do not disturb one another.
TEST(AccessorsTest, ReadingWritesNothing) {
  const auto read_all = [](bool full) {
    const auto check = [full](auto field, auto read) {
      using R = typename decltype(field)::Record;
      OnZeroedMemory<R> memory;
      if (full) FillFully(memory.record());
      const R& record = *memory.record();
      const std::string before = memory.bytes();
      {
        const HeapUse no_use(0, 0);
        read(field, record);
      }
      EXPECT_EQ(memory.bytes(), before);
    };
    const auto singular = [](auto field, const auto& record) {
      EXPECT_EQ(field.Has(record), HasBits(record) != 0);
      (void)field.Get(record);
    };
    const auto repeated = [](auto field, const auto& record) {
      EXPECT_EQ(field.Size(record), field.All(record).size());
      for (int i = 0; i < field.Size(record); ++i) (void)field.Get(record, i);
    };
    ForEachField([&](auto f) { check(f, singular); }, [&](auto f) { check(f, singular); },
                 [&](auto f) { check(f, singular); }, [&](auto f) { check(f, repeated); },
                 [&](auto f) { check(f, repeated); });
  };
  read_all(false);
  read_all(true);

  CameraCalibration shared;
  FillFully(&shared);
  const CameraCalibration& record = shared;
  std::vector<double> sums(4, 0);
  std::vector<std::thread> readers;
  readers.reserve(sums.size());
  for (double& sum : sums) {
    readers.emplace_back([&record, &sum] {
      sum += record.intrinsics().fx() + static_cast<double>(record.name().size());
      sum += record.extrinsics().a_size() + (record.has_model() ? 1 : 0);
      sum += static_cast<double>(BaseCalibrationProto::default_instance().wheel_base());
      sum += PTZSystemCalibration::default_instance().laser().pan_ext().a_size();
    });
  }
  for (std::thread& reader : readers) reader.join();
  for (const double sum : sums) EXPECT_EQ(sum, sums[0]);
}

// --- Unknown fields ------------------------------------------------------------------------------

TEST(AccessorsTest, UnknownFieldSetIsMadeOnFirstNeed) {
  ForEachRecord([](auto type) {
    using R = typename decltype(type)::Type;
    SCOPED_TRACE(R::descriptor()->name());
    const long live = LiveBlocks();
    {
      R record;
      R other;
      const long allocations = Allocations();
      const UnknownFieldSet& shared = record.unknown_fields();
      EXPECT_TRUE(shared.empty());
      EXPECT_EQ(&shared, &other.unknown_fields());
      EXPECT_EQ(&shared, &R::default_instance().unknown_fields());
      EXPECT_EQ(Allocations(), allocations);

      UnknownFieldSet* own = record.mutable_unknown_fields();
      EXPECT_GT(Allocations(), allocations);
      EXPECT_NE(own, &shared);
      EXPECT_TRUE(own->empty());
      EXPECT_EQ(own, &record.unknown_fields());
      EXPECT_EQ(own, record.mutable_unknown_fields());
      own->AddVarint(2000, 5);
      EXPECT_EQ(record.unknown_fields().field_count(), 1);
      EXPECT_TRUE(other.unknown_fields().empty());
      EXPECT_TRUE(R::default_instance().unknown_fields().empty());
      EXPECT_EQ(HasBits(record), 0u);

      const Reflection* r = record.GetReflection();
      EXPECT_EQ(&r->GetUnknownFields(record), own);
      EXPECT_EQ(r->MutableUnknownFields(&record), own);
    }
    EXPECT_EQ(LiveBlocks(), live);
  });
}

// --- Accessors and reflection see the same ------------------------------------------------------

// Reflection's calls for a number, chosen by its type.
template <class V>
struct NumberCalls;

#define CALIBRATION_TEST_NUMBER_CALLS(V, Name)                                  \
  template <>                                                                   \
  struct NumberCalls<V> {                                                       \
    static V Get(const Message& m, const FieldDescriptor* f) {                  \
      return m.GetReflection()->Get##Name(m, f);                                \
    }                                                                           \
    static void Set(Message* m, const FieldDescriptor* f, V value) {            \
      m->GetReflection()->Set##Name(m, f, value);                               \
    }                                                                           \
    static V Get(const Message& m, const FieldDescriptor* f, int index) {       \
      return m.GetReflection()->GetRepeated##Name(m, f, index);                 \
    }                                                                           \
    static void Set(Message* m, const FieldDescriptor* f, int index, V value) { \
      m->GetReflection()->SetRepeated##Name(m, f, index, value);                \
    }                                                                           \
    static void Add(Message* m, const FieldDescriptor* f, V value) {            \
      m->GetReflection()->Add##Name(m, f, value);                               \
    }                                                                           \
  };
CALIBRATION_TEST_NUMBER_CALLS(double, Double)
CALIBRATION_TEST_NUMBER_CALLS(float, Float)
CALIBRATION_TEST_NUMBER_CALLS(::google::protobuf::int32, Int32)
CALIBRATION_TEST_NUMBER_CALLS(::google::protobuf::int64, Int64)
CALIBRATION_TEST_NUMBER_CALLS(bool, Bool)
#undef CALIBRATION_TEST_NUMBER_CALLS

bool Has(const Message& record, const FieldDescriptor* f) {
  return record.GetReflection()->HasField(record, f);
}

void ClearField(Message* record, const FieldDescriptor* f) {
  record->GetReflection()->ClearField(record, f);
}

TEST(AccessorsTest, NumberAgreesWithReflection) {
  ForEachNumber([](auto field) {
    using V = typename decltype(field)::Value;
    const FieldDescriptor* f = field.descriptor();
    ASSERT_NE(f, nullptr);
    typename decltype(field)::Record record;
    EXPECT_EQ(BytesOf(NumberCalls<V>::Get(record, f)), BytesOf(field.Get(record)));
    for (const V value : Values<V>()) {
      field.Set(&record, value);
      EXPECT_TRUE(Has(record, f));
      EXPECT_EQ(BytesOf(NumberCalls<V>::Get(record, f)), BytesOf(value));
      field.Clear(&record);
      EXPECT_FALSE(Has(record, f));
      NumberCalls<V>::Set(&record, f, value);
      EXPECT_TRUE(field.Has(record));
      EXPECT_EQ(BytesOf(field.Get(record)), BytesOf(value));
      ClearField(&record, f);
      EXPECT_FALSE(field.Has(record));
      EXPECT_EQ(BytesOf(field.Get(record)), BytesOf(DefaultOf<V>(field.row())));
    }
  });
}

TEST(AccessorsTest, TextAgreesWithReflection) {
  ForEachText([](auto field) {
    const FieldDescriptor* f = field.descriptor();
    ASSERT_NE(f, nullptr);
    typename decltype(field)::Record record;
    const Reflection* r = record.GetReflection();
    EXPECT_EQ(r->GetString(record, f), "");
    for (const std::string& text : Texts()) {
      field.Set(&record, text);
      EXPECT_TRUE(Has(record, f));
      EXPECT_EQ(r->GetString(record, f), text);
      std::string scratch;
      EXPECT_EQ(&r->GetStringReference(record, f, &scratch), &field.Get(record));
      field.Clear(&record);
      EXPECT_FALSE(Has(record, f));
      r->SetString(&record, f, text);
      EXPECT_TRUE(field.Has(record));
      EXPECT_EQ(field.Get(record), text);
      ClearField(&record, f);
      EXPECT_FALSE(field.Has(record));
      EXPECT_EQ(field.Get(record), "");
    }
    delete field.Release(&record);
    EXPECT_FALSE(Has(record, f));
    r->SetString(&record, f, "by reflection, then released");
    const std::unique_ptr<std::string> released(field.Release(&record));
    ASSERT_NE(released, nullptr);
    EXPECT_EQ(*released, "by reflection, then released");
  });
}

TEST(AccessorsTest, SubMessageAgreesWithReflection) {
  ForEachMessage([](auto field) {
    using M = typename decltype(field)::SubMessage;
    const FieldDescriptor* f = field.descriptor();
    ASSERT_NE(f, nullptr);
    typename decltype(field)::Record record;
    const Reflection* r = record.GetReflection();
    EXPECT_FALSE(Has(record, f));
    EXPECT_EQ(&r->GetMessage(record, f), &M::default_instance());
    Message* sub = field.Mutable(&record);
    EXPECT_TRUE(Has(record, f));
    EXPECT_EQ(&r->GetMessage(record, f), sub);
    EXPECT_EQ(r->MutableMessage(&record, f), sub);
    field.Clear(&record);
    EXPECT_FALSE(Has(record, f));
    EXPECT_EQ(r->MutableMessage(&record, f), sub);
    EXPECT_TRUE(field.Has(record));
    FillFully(sub);
    ClearField(&record, f);
    EXPECT_FALSE(field.Has(record));
    EXPECT_TRUE(EqualByReflection(field.Get(record), M::default_instance()));

    delete field.Release(&record);
    sub = r->MutableMessage(&record, f);  // made by reflection
    EXPECT_TRUE(field.Has(record));
    EXPECT_EQ(&field.Get(record), sub);
    const std::unique_ptr<M> released(field.Release(&record));
    EXPECT_EQ(released.get(), sub);
    EXPECT_FALSE(Has(record, f));
    EXPECT_EQ(&r->GetMessage(record, f), &M::default_instance());
  });
}

TEST(AccessorsTest, RepeatedNumbersAgreeWithReflection) {
  ForEachNumbers([](auto field) {
    using V = typename decltype(field)::Value;
    const FieldDescriptor* f = field.descriptor();
    ASSERT_NE(f, nullptr);
    typename decltype(field)::Record record;
    const Reflection* r = record.GetReflection();
    for (const V value : Values<V>()) {
      const int index = field.Size(record);
      EXPECT_EQ(r->FieldSize(record, f), index);
      field.Add(&record, value);
      EXPECT_EQ(BytesOf(NumberCalls<V>::Get(record, f, index)), BytesOf(value));
      NumberCalls<V>::Add(&record, f, value);
      ASSERT_EQ(field.Size(record), index + 2);
      EXPECT_EQ(BytesOf(field.Get(record, index + 1)), BytesOf(value));
      NumberCalls<V>::Set(&record, f, index, V{5});
      EXPECT_EQ(field.Get(record, index), V{5});
      field.Set(&record, index, V{6});
      EXPECT_EQ(NumberCalls<V>::Get(record, f, index), V{6});
    }
    ClearField(&record, f);
    EXPECT_EQ(field.Size(record), 0);
    field.Add(&record, V{1});
    field.Clear(&record);
    EXPECT_EQ(r->FieldSize(record, f), 0);
  });
}

TEST(AccessorsTest, RepeatedSubMessagesAgreeWithReflection) {
  ForEachMessages([](auto field) {
    const FieldDescriptor* f = field.descriptor();
    ASSERT_NE(f, nullptr);
    typename decltype(field)::Record record;
    const Reflection* r = record.GetReflection();
    const Message* by_accessor = field.Add(&record);
    EXPECT_EQ(r->FieldSize(record, f), 1);
    EXPECT_EQ(&r->GetRepeatedMessage(record, f, 0), by_accessor);
    EXPECT_EQ(r->MutableRepeatedMessage(&record, f, 0), by_accessor);
    Message* by_reflection = r->AddMessage(&record, f);
    ASSERT_EQ(field.Size(record), 2);
    EXPECT_EQ(&field.Get(record, 1), by_reflection);
    r->SwapElements(&record, f, 0, 1);
    EXPECT_EQ(&field.Get(record, 0), by_reflection);
    r->RemoveLast(&record, f);
    EXPECT_EQ(field.Size(record), 1);
    ClearField(&record, f);
    EXPECT_EQ(field.Size(record), 0);
    field.Add(&record);
    field.Clear(&record);
    EXPECT_EQ(r->FieldSize(record, f), 0);
  });
}

// --- Cases worth reading -------------------------------------------------------------------------

TEST(AccessorsTest, DefaultsOfAFreshRecord) {
  const BaseCalibrationProto base;
  EXPECT_FALSE(base.has_wheel_base());
  EXPECT_EQ(base.wheel_base(), 0.4064f);
  EXPECT_EQ(base.base_width(), 0.457f);
  EXPECT_EQ(base.base_length(), 0.7f);
  const CameraCalibration camera;
  EXPECT_FALSE(camera.has_name());
  EXPECT_EQ(camera.name(), "");
  EXPECT_EQ(&camera.intrinsics(), &CameraIntrinsics::default_instance());
}

TEST(AccessorsTest, AValueEqualToItsDefaultIsWritten) {
  BaseCalibrationProto base;
  base.set_base_length(0.7f);
  EXPECT_TRUE(base.has_base_length());
  EXPECT_EQ(base.SerializeAsString(), std::string("\x2D\x33\x33\x33\x3F", 5));
}

TEST(AccessorsTest, TouchedIntrinsicsMustBeCompleted) {
  CameraCalibration camera;
  EXPECT_TRUE(camera.IsInitialized());
  CameraIntrinsics* intrinsics = camera.mutable_intrinsics();
  EXPECT_TRUE(camera.has_intrinsics());
  EXPECT_FALSE(camera.IsInitialized());
  intrinsics->set_fx(0);
  intrinsics->set_fy(0);
  intrinsics->set_skew(0);
  intrinsics->set_cx(0);
  EXPECT_FALSE(camera.IsInitialized());
  intrinsics->set_cy(0);
  EXPECT_TRUE(camera.IsInitialized());
  camera.clear_intrinsics();
  EXPECT_TRUE(camera.IsInitialized());
  EXPECT_FALSE(camera.has_intrinsics());
  EXPECT_EQ(&camera.intrinsics(), intrinsics);
  EXPECT_FALSE(intrinsics->has_fx());
  EXPECT_EQ(camera.mutable_intrinsics(), intrinsics);
}

TEST(AccessorsTest, AReleasedName) {
  CameraCalibration camera;
  EXPECT_EQ(camera.release_name(), nullptr);
  camera.set_name("a");
  const std::unique_ptr<std::string> name(camera.release_name());
  EXPECT_EQ(*name, "a");
  EXPECT_EQ(camera.name(), "");
  EXPECT_FALSE(camera.has_name());
}

// Bytes are bytes, whatever they point at.
TEST(AccessorsTest, BytesFromAnyObject) {
  const uint32_t pixels[] = {0x00FF00FF, 0};
  CalibrationImage image;
  image.set_imgdata(pixels, sizeof pixels);
  ASSERT_EQ(image.imgdata().size(), sizeof pixels);
  EXPECT_EQ(std::memcmp(image.imgdata().data(), pixels, sizeof pixels), 0);
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
