// Elements of repeated sub-messages that share an allocation: what a parse, a copy or add_x() makes
// is still, each by itself, an object that can be released, kept, moved and deleted.
#include <google/protobuf/arena.h>
#include <google/protobuf/message.h>
#include <google/protobuf/repeated_field.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>
#endif

#include "calibration_common/calibration.pb.h"
#include "tests/support/allocations.h"
#include "tests/support/random_record.h"
#include "tests/support/reflect.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Arena;
using ::google::protobuf::Message;
using ::google::protobuf::RepeatedPtrField;

// A repeated sub-message of a record.
template <class R, class E, RepeatedPtrField<E>* (R::*kMutable)(), E* (R::*kAdd)(),
          int kFieldNumber>
struct Field {
  using Record = R;
  using Element = E;
  static RepeatedPtrField<E>& In(R& record) { return *(record.*kMutable)(); }
  static E* Add(R* record) { return (record->*kAdd)(); }
  static int Number() { return kFieldNumber; }
};
using AllFields = ::testing::Types<
    Field<MarkerPositionSet, MarkerPositionInfo, &MarkerPositionSet::mutable_pos,
          &MarkerPositionSet::add_pos, 1>,
    Field<CameraIntrinsics, CameraIntrinsicsSamplePoints, &CameraIntrinsics::mutable_sample_points,
          &CameraIntrinsics::add_sample_points, 16>,
    Field<FocusInfo, FocusInfoItem, &FocusInfo::mutable_focus, &FocusInfo::add_focus, 1>,
    Field<RobotCalibration, CameraCalibration, &RobotCalibration::mutable_camera,
          &RobotCalibration::add_camera, 1>,
    Field<FocusCheckSetProto, FocusCheckProto, &FocusCheckSetProto::mutable_spots,
          &FocusCheckSetProto::add_spots, 1>,
    Field<PTZIntrinsics, PTZIntrinsicsItem, &PTZIntrinsics::mutable_samples,
          &PTZIntrinsics::add_samples, 5>>;

constexpr unsigned kSeed = 20161;
// Around one and two blocks of 16, and of as many small elements as 4 KiB hold.
constexpr int kMost = 180;
const std::vector<int> kCounts = {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 64, 85, kMost};

// Appends an element that is encoded as `body`.
void Append(int field_number, const std::string& body, WireWriter* writer) {
  writer->Tag(field_number, kLengthDelimited).LengthDelimited(body);
}

std::string EmptyElements(int field_number, int count) {
  WireWriter writer;
  for (int i = 0; i < count; ++i) Append(field_number, "", &writer);
  return writer.bytes();
}

template <class F>
class ElementBlocksTest : public ::testing::Test {
 protected:
  using Record = typename F::Record;
  using Element = typename F::Element;
  using Owned = std::vector<std::unique_ptr<Element>>;

  ElementBlocksTest() {
    std::mt19937 random(kSeed);
    RandomOptions options;
    options.unknown_fields = false;  // the run-time's store loses some when an allocation fails
    for (int i = 0; i < kMost; ++i) {
      Element element;
      FillRandomly(&random, options, &element);
      elements_.push_back(element);
    }
    ExpectElement(elements_[0], 0);  // reflection keeps what it makes on first use
  }

  std::string Bytes(int count) const {
    WireWriter writer;
    for (int i = 0; i < count; ++i) {
      Append(F::Number(), elements_[i].SerializePartialAsString(), &writer);
    }
    return writer.bytes();
  }

  // Appends `count` elements by add_x().
  void Add(Record* record, int count) const {
    for (int i = 0; i < count; ++i) F::Add(record)->CopyFrom(elements_[i]);
  }

  // Runs check(record, count) on records with elements that were parsed, copied, and added.
  void ForEachWay(const std::function<void(Record*, int)>& check) {
    for (int count : kCounts) {
      SCOPED_TRACE(std::to_string(count) + " elements");
      const long live = LiveBlocks();
      {
        SCOPED_TRACE("parsed");
        const auto parsed = std::make_unique<Record>();
        ASSERT_TRUE(parsed->ParsePartialFromString(Bytes(count)));
        check(parsed.get(), count);
      }
      {
        SCOPED_TRACE("copied");
        Record original;
        ASSERT_TRUE(original.ParsePartialFromString(Bytes(count)));
        const auto copied = std::make_unique<Record>(original);
        check(copied.get(), count);
      }
      for (const int reserved : {0, count, 2 * count}) {
        SCOPED_TRACE("added, with room for " + std::to_string(reserved));
        const auto added = std::make_unique<Record>();
        F::In(*added).Reserve(reserved);
        Add(added.get(), count);
        check(added.get(), count);
      }
      EXPECT_EQ(LiveBlocks(), live) << "blocks alive";
    }
  }

  // Takes all elements out of the record, in their order.
  static Owned Release(Record* record) {
    Owned elements;
    while (!F::In(*record).empty()) elements.emplace_back(F::In(*record).ReleaseLast());
    std::reverse(elements.begin(), elements.end());
    return elements;
  }

  void ExpectElement(const Message& element, int index) const {
    EXPECT_TRUE(EqualByReflection(element, elements_[index])) << "element " << index;
  }

  std::vector<Element> elements_;
};
TYPED_TEST_SUITE(ElementBlocksTest, AllFields);

// They do where what operator new returns is aligned to 16, which malloc() sees to where there are
// types that want it: not on armhf.
TYPED_TEST(ElementBlocksTest, ShareAllocations) {
  using Record = typename TypeParam::Record;
  const auto check = [](long allocations) {
    if (alignof(std::max_align_t) >= 16) {
      EXPECT_LT(allocations, 150);
    } else {
      EXPECT_GE(allocations, 1600);
    }
  };
  const std::string bytes = EmptyElements(TypeParam::Number(), 1600);
  Record record;
  long before = Allocations();
  ASSERT_TRUE(record.ParsePartialFromString(bytes));
  check(Allocations() - before);
  before = Allocations();
  const Record copy(record);
  check(Allocations() - before);
  EXPECT_EQ(TypeParam::In(record).size(), 1600);
  for (const int reserved : {0, 1600}) {
    Record added;
    TypeParam::In(added).Reserve(reserved);
    SCOPED_TRACE("with room for " + std::to_string(reserved));
    before = Allocations();
    for (int i = 0; i < 1600; ++i) TypeParam::Add(&added);
    check(Allocations() - before);
  }
}

// Elements that are appended one by one take blocks of as many as there are already: a list of few
// keeps no memory for many.
TYPED_TEST(ElementBlocksTest, BlocksGrowWithTheList) {
  std::vector<int> expected = {1, 2, 3, 5, 9}, allocating;
  if (alignof(std::max_align_t) < 16) {  // they share none
    expected.resize(16);
    std::iota(expected.begin(), expected.end(), 1);
  }
  typename TypeParam::Record record;
  TypeParam::In(record).Reserve(100);
  for (int count = 1; count <= 16; ++count) {
    const long before = Allocations();
    TypeParam::Add(&record);
    if (Allocations() != before) allocating.push_back(count);
  }
  EXPECT_EQ(allocating, expected);
}

// Who keeps one element keeps no more than 4 KiB, or 16 elements if they are larger.
TYPED_TEST(ElementBlocksTest, BlocksAreSmall) {
  using Record = typename TypeParam::Record;
  const size_t most = std::max<size_t>(4096, 40 + 16 * (sizeof(typename TypeParam::Element) + 16));
  for (int count = 2; count < 200; ++count) {
    Record parsed;
    ASSERT_TRUE(parsed.ParsePartialFromString(EmptyElements(TypeParam::Number(), count)));
    EXPECT_LE(LatestAllocation(), most);
    Record added;
    TypeParam::In(added).Reserve(count);
    for (int i = 0; i < 2; ++i) TypeParam::Add(&added);
    EXPECT_LE(LatestAllocation(), most);
  }
}

// add_x() does to the list what it would do if it made each element by `new`.
TYPED_TEST(ElementBlocksTest, AddingShowsInNothingElse) {
  using Record = typename TypeParam::Record;
  Record record, other;
  auto& ours = TypeParam::In(record);
  auto& theirs = TypeParam::In(other);
  for (int i = 0; i < kMost; ++i) {
    if (i == kMost / 2) {
      ours.Reserve(kMost);
      theirs.Reserve(kMost);
    }
    const auto* element = TypeParam::Add(&record);
    theirs.AddAllocated(new typename TypeParam::Element);
    EXPECT_TRUE(EqualByReflection(*element, TypeParam::Element::default_instance()));
    ASSERT_EQ(ours.size(), i + 1);
    ASSERT_EQ(ours.ClearedCount(), 0);
    ASSERT_EQ(ours.Capacity(), theirs.Capacity());
  }
  ours.RemoveLast();
  EXPECT_EQ(ours.ClearedCount(), 1);
  TypeParam::Add(&record);
  EXPECT_EQ(ours.ClearedCount(), 0);
}

// Lists that grow by turns, more of them than a thread keeps in mind: memory in proportion.
TYPED_TEST(ElementBlocksTest, ManyListsGrowByTurns) {
  constexpr int kLists = 40;
  for (const int reserved : {0, kMost}) {
    std::vector<typename TypeParam::Record> records(kLists);
    for (auto& record : records) TypeParam::In(record).Reserve(reserved);
    size_t before = AllocatedBytes();
    for (int i = 0; i < kMost; ++i) {
      for (auto& record : records) TypeParam::Add(&record)->CopyFrom(this->elements_[0]);
    }
    const size_t taken = AllocatedBytes() - before;
    before = AllocatedBytes();
    for (int i = 0; i < kLists * kMost; ++i) {
      typename TypeParam::Element(this->elements_[0]).Clear();
      const std::unique_ptr<typename TypeParam::Element> alone(new typename TypeParam::Element);
    }
    const size_t alone = AllocatedBytes() - before;
    EXPECT_LE(taken, alone + kLists * kMost * 80) << "with room for " << reserved;
    for (auto& record : records) this->ExpectElement(TypeParam::In(record).Get(kMost - 1), 0);
  }
}

// A list to which the program appends elements of its own now and then: memory in proportion.
TYPED_TEST(ElementBlocksTest, GrowAmongElementsOfTheProgram) {
  constexpr int kRounds = 300;
  for (int row : {1, 2, 3, 4}) {
    typename TypeParam::Record record;
    auto& elements = TypeParam::In(record);
    elements.Reserve(kRounds * (row + 1));
    const size_t before = AllocatedBytes();
    for (int i = 0; i < kRounds; ++i) {
      for (int j = 0; j < row; ++j) TypeParam::Add(&record);
      elements.AddAllocated(new typename TypeParam::Element);
    }
    EXPECT_LE(AllocatedBytes() - before,
              kRounds * (2 * row + 1) * (sizeof(typename TypeParam::Element) + 24))
        << row << " in a row";
  }
}

// A program may append an element that lies anywhere, at an address such as those in blocks too,
// and take it out again before it is deleted.
TYPED_TEST(ElementBlocksTest, StandBehindElementsThatLieAnywhere) {
  using Element = typename TypeParam::Element;
  struct alignas(16) Room {
    char bytes[8 + sizeof(Element) + 8];
  };
  this->ForEachWay([&](typename TypeParam::Record* record, int count) {
    auto& elements = TypeParam::In(*record);
    const auto room = std::make_unique<Room>();
    std::fill_n(room->bytes, sizeof room->bytes, '\xA5');  // no address of anything
    Element* anywhere = new (room->bytes + 8) Element(this->elements_[1]);
    elements.UnsafeArenaAddAllocated(anywhere);
    for (int i = 0; i < 3; ++i) TypeParam::Add(record)->CopyFrom(this->elements_[i]);
    for (int i = 0; i < 3; ++i) this->ExpectElement(elements.Get(count + 1 + i), i);
    elements.SwapElements(count, count + 3);
    EXPECT_EQ(elements.UnsafeArenaReleaseLast(), anywhere);
    anywhere->~Element();
  });
}

// Memory that was a block's may become another element's, at the very address of an element that
// was the last of its list.
TYPED_TEST(ElementBlocksTest, AnAddressMayComeBack) {
  using Element = typename TypeParam::Element;
  typename TypeParam::Record record;
  auto& elements = TypeParam::In(record);
  for (int count = 2; count < 40; ++count) {
    SCOPED_TRACE(std::to_string(count) + " elements");
    const long live = LiveBlocks();
    elements.Reserve(100);
    const long reserved = LiveBlocks();
    for (int i = 0; i < count; ++i) TypeParam::Add(&record);
    const size_t block = LatestAllocation();
    Element* const last = elements.Mutable(count - 1);
    while (!elements.empty()) delete elements.ReleaseLast();
    EXPECT_EQ(LiveBlocks(), reserved);
    // What the allocator gives for the next request of the size is mostly the same memory.
    char* const room = static_cast<char*>(::operator new(block));
    std::fill_n(room, block, '\xA5');
    if (reinterpret_cast<char*>(last) >= room && reinterpret_cast<char*>(last + 1) < room + block) {
      Element* const anywhere = new (last) Element;
      elements.UnsafeArenaAddAllocated(anywhere);
      TypeParam::Add(&record)->CopyFrom(this->elements_[0]);
      this->ExpectElement(elements.Get(1), 0);
      const std::unique_ptr<Element> kept(elements.ReleaseLast());
      EXPECT_EQ(elements.UnsafeArenaReleaseLast(), anywhere);
      anywhere->~Element();
    }
    ::operator delete(room);
    EXPECT_GE(LiveBlocks(), live);
  }
}

TYPED_TEST(ElementBlocksTest, OutliveTheRecordAndEachOther) {
  std::mt19937 random(kSeed);
  for (const char* order : {"first to last", "last to first", "any"}) {
    SCOPED_TRACE(order);
    this->ForEachWay([&](typename TypeParam::Record* record, int count) {
      auto elements = this->Release(record);
      ASSERT_EQ(static_cast<int>(elements.size()), count);
      *record = typename TypeParam::Record();
      std::vector<int> indices(count);
      std::iota(indices.begin(), indices.end(), 0);
      if (order[0] == 'l') std::reverse(indices.begin(), indices.end());
      if (order[0] == 'a') std::shuffle(indices.begin(), indices.end(), random);
      while (!indices.empty()) {
        this->ExpectElement(*elements[indices.back()], indices.back());
        elements[indices.back()].reset();
        indices.pop_back();
      }
    });
  }
}

// A block lives as long as any one of its elements, and no longer.
TYPED_TEST(ElementBlocksTest, OneElementKeepsOneBlock) {
  const std::string bytes = EmptyElements(TypeParam::Number(), kMost);
  for (int kept = 0; kept < kMost; ++kept) {
    SCOPED_TRACE("element " + std::to_string(kept) + " is kept");
    const long live = LiveBlocks();
    std::unique_ptr<typename TypeParam::Element> element;
    {
      typename TypeParam::Record record;
      ASSERT_TRUE(record.ParsePartialFromString(bytes));
      element = std::move(this->Release(&record)[kept]);
    }
    EXPECT_EQ(LiveBlocks(), live + 1);
    element.reset();
    EXPECT_EQ(LiveBlocks(), live);
  }
}

TYPED_TEST(ElementBlocksTest, MoveToOtherRecords) {
  using Record = typename TypeParam::Record;
  this->ForEachWay([&](Record* record, int count) {
    Record other;
    auto& theirs = TypeParam::In(other);
    auto elements = this->Release(record);
    for (int i = 0; i < count; i += 2) theirs.AddAllocated(elements[i].release());
    for (int i = 1; i < count; i += 2) TypeParam::In(*record).AddAllocated(elements[i].release());
    for (int i = 0; i < theirs.size(); ++i) this->ExpectElement(theirs.Get(i), 2 * i);
    theirs.SwapElements(0, theirs.size() - 1);
    theirs.DeleteSubrange(0, theirs.size() / 2);
    TypeParam::In(*record).Clear();
    // Cleared elements of any block serve the next record.
    ASSERT_TRUE(record->ParsePartialFromString(this->Bytes(count)));
    for (int i = 0; i < count; ++i) this->ExpectElement(TypeParam::In(*record).Get(i), i);
    record->Swap(&other);
  });
}

TYPED_TEST(ElementBlocksTest, CanBelongToAnArena) {
  this->ForEachWay([&](typename TypeParam::Record* record, int) {
    Arena arena;
    for (auto& element : this->Release(record)) arena.Own(element.release());
  });
}

TYPED_TEST(ElementBlocksTest, AreOfTheirClass) {
  using Element = typename TypeParam::Element;
  this->ForEachWay([&](typename TypeParam::Record* record, int count) {
    Message& last = *TypeParam::In(*record).Mutable(count - 1);
    EXPECT_EQ(last.GetDescriptor(), Element::descriptor());
    EXPECT_EQ(last.GetReflection(), Element::default_instance().GetReflection());
    EXPECT_NE(dynamic_cast<Element*>(&last), nullptr);
    EXPECT_EQ(typeid(last), typeid(Element));

    // By themselves, and with objects made alone.
    const std::unique_ptr<Message> fresh(last.New());
    EXPECT_TRUE(EqualByReflection(*fresh, Element::default_instance()));
    Element alone;
    alone.MergeFrom(static_cast<const Message&>(last));
    this->ExpectElement(alone, count - 1);
    static_cast<Message&>(alone).CopyFrom(TypeParam::In(*record).Get(0));
    this->ExpectElement(alone, 0);
    alone.Swap(TypeParam::In(*record).Mutable(count - 1));
    this->ExpectElement(alone, count - 1);
    this->ExpectElement(last, 0);
    last.CopyFrom(alone);
    this->ExpectElement(last, count - 1);
    last.Clear();
    EXPECT_TRUE(EqualByReflection(last, Element::default_instance()));
  });
}

// A program's own classes that derive from an element's, among elements of blocks.
template <class Element>
struct Derived : Element {
  int more = 5;
};
template <class Element>
struct alignas(64) Aligned : Element {};

TYPED_TEST(ElementBlocksTest, StandBesideDerivedClasses) {
  using Element = typename TypeParam::Element;
  this->ForEachWay([&](typename TypeParam::Record* record, int count) {
    auto& elements = TypeParam::In(*record);
    for (int i = 0; i < 20; ++i) {
      elements.AddAllocated(new Derived<Element>);
      elements.AddAllocated(new Aligned<Element>);
      elements.AddAllocated(new Element);
    }
    EXPECT_EQ(typeid(static_cast<Message&>(*elements.Mutable(count))), typeid(Derived<Element>));
    for (int i = 0; i < 10; ++i) delete elements.ReleaseLast();
    elements.DeleteSubrange(count / 2, 5);
  });
}

// One whose own functions are called wherever the element's would be.
template <class Element>
struct Watched : Element {
  struct Calls {
    int clears = 0, checks = 0, ends = 0;
  };
  explicit Watched(Calls* calls) : calls(calls) {}
  ~Watched() override { ++calls->ends; }
  void Clear() override {
    ++calls->clears;
    Element::Clear();
  }
  bool IsInitialized() const override {
    ++calls->checks;
    return calls->checks % 2 != 0;
  }
  Calls* calls;
};

TYPED_TEST(ElementBlocksTest, FunctionsOfDerivedClassesAreCalled) {
  using Derived = Watched<typename TypeParam::Element>;
  this->ForEachWay([&](typename TypeParam::Record* record, int count) {
    typename Derived::Calls calls;
    auto& elements = TypeParam::In(*record);
    for (int i = 0; i < 3; ++i) elements.AddAllocated(new Derived(&calls));
    elements.SwapElements(0, count);
    record->Clear();
    EXPECT_EQ(calls.clears, 3);
    EXPECT_EQ(elements.ClearedCount(), count + 3);
    this->Add(record, count);
    EXPECT_EQ(elements.ClearedCount(), 3);
    EXPECT_EQ(calls.ends, 0);
    typename TypeParam::Record().Swap(record);
    EXPECT_EQ(calls.ends, 3);
  });
}

TEST(Elements, ChecksOfDerivedClassesAreCalled) {
  Watched<CameraCalibration>::Calls camera_calls;
  Watched<CameraIntrinsics>::Calls intrinsics_calls;
  RobotCalibration robot;
  robot.add_camera()->set_allocated_intrinsics(new Watched<CameraIntrinsics>(&intrinsics_calls));
  EXPECT_TRUE(robot.IsInitialized());
  EXPECT_FALSE(robot.IsInitialized());
  EXPECT_EQ(intrinsics_calls.checks, 2);
  robot.clear_camera();
  robot.mutable_camera()->AddAllocated(new Watched<CameraCalibration>(&camera_calls));
  EXPECT_TRUE(robot.IsInitialized());
  EXPECT_FALSE(robot.IsInitialized());
  EXPECT_EQ(camera_calls.checks, 2);
}

// What is made ahead for the elements behind one that is malformed is no element of the field.
TYPED_TEST(ElementBlocksTest, AMalformedElementIsTheLast) {
  const std::string malformed = WireWriter().Tag(1, static_cast<WireType>(6)).bytes();
  for (int count : {1, 2, 15, 16, 17, 40}) {
    for (int bad = 0; bad < count; ++bad) {
      SCOPED_TRACE("element " + std::to_string(bad) + " of " + std::to_string(count));
      WireWriter writer;
      for (int i = 0; i < count; ++i) {
        const bool is_bad = i == bad;
        Append(TypeParam::Number(),
               is_bad ? malformed : this->elements_[i].SerializePartialAsString(), &writer);
      }
      const long live = LiveBlocks();
      {
        typename TypeParam::Record record;
        EXPECT_FALSE(record.ParsePartialFromString(writer.bytes()));
        ASSERT_EQ(TypeParam::In(record).size(), bad + 1);
        for (int i = 0; i < bad; ++i) this->ExpectElement(TypeParam::In(record).Get(i), i);
        EXPECT_EQ(TypeParam::In(record).ClearedCount(), 0);
        typename TypeParam::Record more;
        ASSERT_TRUE(more.ParsePartialFromString(this->Bytes(20)));
        record.MergeFrom(more);
        ASSERT_EQ(TypeParam::In(record).size(), bad + 21);
        for (int i = 0; i < 20; ++i) {
          this->ExpectElement(TypeParam::In(record).Get(bad + 1 + i), i);
        }
      }
      EXPECT_EQ(LiveBlocks(), live);
    }
  }
}

// Memory may run out at any block: what the field then has is what was read or copied before.
TYPED_TEST(ElementBlocksTest, AnyAllocationMayFail) {
  using Record = typename TypeParam::Record;
  constexpr int kCount = 40;
  const std::string bytes = this->Bytes(kCount);
  Record original;
  ASSERT_TRUE(original.ParsePartialFromString(bytes));
  for (const std::string way : {"parsed", "copied", "added"}) {
    for (const int cleared : {0, 3}) {
      bool failed = true;
      for (long n = 1; failed; ++n) {
        SCOPED_TRACE(way + ", " + std::to_string(cleared) + " cleared elements, allocation " +
                     std::to_string(n));
        const long live = LiveBlocks();
        {
          Record record;
          for (int i = 0; i < cleared; ++i) TypeParam::In(record).Add();
          TypeParam::In(record).Clear();
          failed = false;
          try {
            const FailingAllocation failing(n, FailingAllocation::kOnce);
            if (way == "parsed") record.ParsePartialFromString(bytes);
            if (way == "copied") record.MergeFrom(original);
            if (way == "added") this->Add(&record, kCount);
          } catch (const std::bad_alloc&) {
            failed = true;
          }
          // The last one may have been read or copied in part.
          const int whole = TypeParam::In(record).size() - failed;
          EXPECT_LE(whole, kCount);
          for (int i = 0; i < whole; ++i) this->ExpectElement(TypeParam::In(record).Get(i), i);
          EXPECT_TRUE(failed || whole == kCount);
          EXPECT_LE(TypeParam::In(record).ClearedCount(), cleared);
          record.CopyFrom(original);
          EXPECT_TRUE(EqualByReflection(record, original));
        }
        ASSERT_EQ(LiveBlocks(), live);
      }
    }
  }
}

// Threads that each delete some elements of every block.
TYPED_TEST(ElementBlocksTest, AreDeletedByAnyThread) {
  constexpr int kThreads = 4;
  const long live = LiveBlocks();
  {
    typename TypeParam::Record record;
    ASSERT_TRUE(record.ParsePartialFromString(this->Bytes(kMost)));
    auto elements = this->Release(&record);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&, thread] {
        for (size_t i = thread; i < elements.size(); i += kThreads) elements[i].reset();
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(LiveBlocks(), live);
}

// Two lists share blocks, and each is one thread's: one goes on where its block has unused slots,
// the other has elements in front of those.
TYPED_TEST(ElementBlocksTest, ListsOfTwoThreadsShareABlock) {
  using Record = typename TypeParam::Record;
  const long live = LiveBlocks();
  for (int count = 3; count < kMost; count += 10) {
    SCOPED_TRACE(std::to_string(count) + " elements");
    for (const bool last_is_given : {false, true}) {
      Record ours;
      auto theirs = std::make_unique<Record>();
      TypeParam::In(ours).Reserve(2 * kMost);
      this->Add(&ours, count);
      auto elements = this->Release(&ours);
      for (int i = 0; i < count; ++i) {
        const bool given = i == count - 1 ? last_is_given : i % 2 != 0;
        TypeParam::In(given ? *theirs : ours).AddAllocated(elements[i].release());
      }
      const int kept = TypeParam::In(ours).size();
      std::thread thread([&] {
        this->Add(theirs.get(), 10);
        theirs.reset();
      });
      this->Add(&ours, kMost);
      for (int i = 0; i < kMost; ++i) this->ExpectElement(TypeParam::In(ours).Get(kept + i), i);
      thread.join();
    }
  }
  EXPECT_EQ(LiveBlocks(), live);
}

#ifdef __SANITIZE_ADDRESS__
// A report that a death test is to find, wherever ASAN_OPTIONS sends reports.
template <typename Action>
void Report(const Action& action) {
  __sanitizer_set_report_fd(reinterpret_cast<void*>(STDERR_FILENO));
  action();
}

// AddressSanitizer knows an element that is gone from its neighbours that are not.
TYPED_TEST(ElementBlocksTest, AreSeenToBeGone) {
  typename TypeParam::Record record;
  ASSERT_TRUE(record.ParsePartialFromString(this->Bytes(2)));
  auto elements = this->Release(&record);
  const typename TypeParam::Element* gone = elements[0].get();
  elements[0].reset();
  EXPECT_DEATH(Report([&] { gone->GetCachedSize(); }), "AddressSanitizer");
}

// And a slot that no element has taken yet.
TYPED_TEST(ElementBlocksTest, UnusedSlotsAreNoElements) {
  typename TypeParam::Record record;
  TypeParam::In(record).Reserve(100);
  this->Add(&record, 5);  // by themselves, two together, and the first of four
  const volatile char* last = reinterpret_cast<const char*>(&TypeParam::In(record).Get(4));
  EXPECT_DEATH(Report([&] { static_cast<void>(last[sizeof(typename TypeParam::Element) + 16]); }),
               "AddressSanitizer: use-after-poison");
}
#endif

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
