// A program may replace operator new by one that aligns to 8 bytes only. Then elements share no
// allocations, since an element of a block could not be told from any other by its address; all
// else is as ever.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"

namespace {

long allocations = 0;

// Every second block begins 8 bytes behind a multiple of 16. The byte in front of a block says how
// far behind what the C library returned it begins.
void* AllocateLoosely(std::size_t size) {
  const std::size_t offset = allocations++ % 2 == 0 ? 16 : 24;
  char* memory = static_cast<char*>(std::aligned_alloc(16, (size + offset + 15) / 16 * 16));
  if (memory == nullptr) throw std::bad_alloc();
  memory[offset - 1] = static_cast<char>(offset);
  return memory + offset;
}

void FreeLoosely(void* block) {
  if (block == nullptr) return;
  char* memory = static_cast<char*>(block);
  std::free(memory - memory[-1]);
}

}  // namespace

void* operator new(std::size_t size) { return AllocateLoosely(size); }
void operator delete(void* block) noexcept { FreeLoosely(block); }
void operator delete(void* block, std::size_t) noexcept { FreeLoosely(block); }

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

TEST(LooseAlignment, OperatorNewIsThisProgramsAndAlignsToEightBytes) {
  const std::unique_ptr<MarkerPositionInfo> one(new MarkerPositionInfo);
  const std::unique_ptr<MarkerPositionInfo> two(new MarkerPositionInfo);
  EXPECT_NE(reinterpret_cast<std::uintptr_t>(one.get()) % 16,
            reinterpret_cast<std::uintptr_t>(two.get()) % 16);
}

TEST(LooseAlignment, EachElementHasAnAllocationOfItsOwn) {
  constexpr int kCount = 100;
  MarkerPositionSet markers;
  for (int i = 0; i < kCount; ++i) markers.add_pos()->set_marker_id(i);
  const std::string bytes = markers.SerializeAsString();

  const long before = allocations;
  MarkerPositionSet parsed;
  ASSERT_TRUE(parsed.ParseFromString(bytes));
  EXPECT_GE(allocations - before, kCount);

  std::vector<std::unique_ptr<MarkerPositionInfo>> kept;
  for (const int released : {0, 1}) {
    MarkerPositionSet copy(parsed);
    if (released == 0) continue;
    while (copy.pos_size() > 0) kept.emplace_back(copy.mutable_pos()->ReleaseLast());
  }
  for (int i = 0; i < kCount; ++i) EXPECT_EQ(kept[kCount - 1 - i]->marker_id(), i);
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
