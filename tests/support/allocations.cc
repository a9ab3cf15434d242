#include "tests/support/allocations.h"

#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"

namespace {

constexpr long kNever = std::numeric_limits<long>::max();

std::atomic<long> allocations(0);
std::atomic<long> live_blocks(0);
std::atomic<size_t> latest_allocation(0);
std::atomic<size_t> allocated_bytes(0);
std::atomic<long> first_to_fail(kNever);  // numbers of allocations
std::atomic<long> last_to_fail(kNever);

// What FreeLostBlocks frees; null while there is none.
constexpr size_t kMostWatched = 10000;
void** watched = nullptr;
size_t watched_count = 0;

void Watch(void* block) {
  if (watched_count == kMostWatched) std::abort();
  watched[watched_count++] = block;
}

void Unwatch(const void* block) {
  for (size_t i = watched_count; i-- > 0;) {
    if (watched[i] == block) {
      watched[i] = watched[--watched_count];
      return;
    }
  }
}

void* Allocate(size_t size) {
  const long number = ++allocations;
  allocated_bytes += size;
  if (number >= first_to_fail && number <= last_to_fail) throw std::bad_alloc();
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  if (watched != nullptr && first_to_fail != kNever) Watch(block);
  ++live_blocks;
  latest_allocation = size;
  return block;
}

void Free(void* block) {
  if (block == nullptr) return;
  if (watched != nullptr) Unwatch(block);
  --live_blocks;
  std::free(block);
}

}  // namespace

// The forms that are not replaced (arrays, nothrow) come down to these.
void* operator new(size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete(void* block, size_t) noexcept { Free(block); }

namespace zarvo {
namespace calibration {
namespace testing {

using ::google::protobuf::Message;

long Allocations() { return allocations; }
size_t AllocatedBytes() { return allocated_bytes; }
size_t LatestAllocation() { return latest_allocation; }
long LiveBlocks() { return live_blocks; }

FailingAllocation::FailingAllocation(long n, Duration duration) {
  const long number = allocations + n;
  last_to_fail = duration == kOnce ? number : kNever;
  first_to_fail = number;
}

FailingAllocation::~FailingAllocation() { first_to_fail = kNever; }

FreeLostBlocks::FreeLostBlocks() {
  watched = static_cast<void**>(std::malloc(kMostWatched * sizeof(void*)));
  if (watched == nullptr) std::abort();
}

FreeLostBlocks::~FreeLostBlocks() {
  while (watched_count > 0) Free(watched[watched_count - 1]);
  std::free(watched);
  watched = nullptr;
}

namespace {

// What the run-time makes at first use and keeps, such as reflection objects, is made before the
// first test, so that no test takes it for a leak.
class RunTimeIsWarm : public ::testing::Environment {
 public:
  void SetUp() override {
    for (const RecordType& type : RecordTypes()) {
      const std::unique_ptr<Message> record = FullRecord(type.name);
      ASSERT_FALSE(EqualByReflection(*record, type.default_instance()));
    }
  }
};

const auto* const run_time_is_warm = ::testing::AddGlobalTestEnvironment(new RunTimeIsWarm);

}  // namespace

// Everything that is counted in a suite rests on this.
TEST(AllocationsTest, AreCountedAndFail) {
  const long allocations_before = Allocations();
  const long live_before = LiveBlocks();
  const size_t bytes_before = AllocatedBytes();
  int* volatile block = new int(1);
  ASSERT_EQ(Allocations(), allocations_before + 1)
      << "operator new is not the one that this program defines; under valgrind, pass "
         "--soname-synonyms=somalloc=nouserintercepts";
  EXPECT_EQ(LatestAllocation(), sizeof(int));
  EXPECT_EQ(AllocatedBytes(), bytes_before + sizeof(int));
  EXPECT_EQ(LiveBlocks(), live_before + 1);
  delete block;
  EXPECT_EQ(LiveBlocks(), live_before);

  for (const auto duration : {FailingAllocation::kOnce, FailingAllocation::kForGood}) {
    int failures = 0;
    {
      const FailingAllocation failing(2, duration);
      for (int i = 0; i < 3; ++i) {
        try {
          block = new int(i);
          delete block;
        } catch (const std::bad_alloc&) {
          ++failures;
        }
      }
    }
    EXPECT_EQ(failures, duration == FailingAllocation::kOnce ? 1 : 2);
  }
  EXPECT_EQ(LiveBlocks(), live_before);
}

// Those that the library makes, too, not only this program's.
TEST(AllocationsTest, OfTheLibraryAreCountedAndFail) {
  const Message& instance = RecordTypes().front().default_instance();
  const long allocations_before = Allocations();
  const long live_before = LiveBlocks();
  std::unique_ptr<Message> record(instance.New());
  ASSERT_EQ(Allocations(), allocations_before + 1)
      << "the library's operator new is not the one that this program defines";
  EXPECT_EQ(LiveBlocks(), live_before + 1);
  record.reset();
  EXPECT_EQ(LiveBlocks(), live_before);

  const FailingAllocation failing(1, FailingAllocation::kOnce);
  EXPECT_THROW(record.reset(instance.New()), std::bad_alloc);
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
