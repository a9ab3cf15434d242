// What a file of another tool takes in memory while it is read, as files that mean harm have it: at
// most 40 bytes for each of its own and 20 MB, whether it is read or refused.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "calib/console/failure.h"
#include "calib/tools/foreign_tree.h"

namespace {

std::atomic<size_t> live{0}, peak{0};

void* Allocate(size_t size) {
  void* block = std::malloc(std::max<size_t>(size, 1));
  if (block == nullptr) throw std::bad_alloc();
  live += malloc_usable_size(block);
  peak = std::max(peak.load(), live.load());
  return block;
}

void Release(void* block) {
  if (block != nullptr) live -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

void* operator new(size_t size) { return Allocate(size); }
void* operator new[](size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, size_t) noexcept { Release(block); }
void operator delete[](void* block, size_t) noexcept { Release(block); }

namespace calib {
namespace {

constexpr size_t kSize = 2000000;

// `begin`, as many of `piece` as make kSize bytes, and `end`.
std::string Repeat(const std::string& begin, const std::string& piece, const std::string& end) {
  std::string text = begin;
  while (text.size() < kSize) text += piece;
  return text + end;
}

// The same, with a number behind each piece.
std::string Count(const std::string& begin, const std::string& piece, const std::string& end) {
  std::string text = begin;
  for (int i = 0; text.size() < kSize; ++i) text += piece + std::to_string(i) + end;
  return text;
}

struct Case {
  const char* name;
  ForeignTree (*load)(const std::string& file, const std::string& text);
  std::string text;
  std::string refusal;  // a part of it; empty if the file is read
};

class ForeignMemoryTest : public ::testing::TestWithParam<Case> {};

TEST_P(ForeignMemoryTest, IsBoundedByTheFile) {
  const Case& given = GetParam();
  const size_t before = live;
  peak = before;
  std::string refusal;
  try {
    given.load("file", given.text);
  } catch (const Failure& failure) {
    refusal = failure.what();
  }
  EXPECT_LE(peak - before, 40 * given.text.size() + 20000000);
  EXPECT_EQ(refusal.empty(), given.refusal.empty()) << refusal;
  EXPECT_NE(refusal.find(given.refusal), std::string::npos) << refusal;
}

const char kHeldBack[] = "more than 64 KiB without a value";
const char kAliases[] = "the aliases up to here stand for more than the whole file";

INSTANTIATE_TEST_SUITE_P(
    Files, ForeignMemoryTest,
    ::testing::Values(
        Case{"Numbers", LoadYaml, Repeat("a: [", "1,", "1]\n"), ""},
        Case{"BlockNumbers", LoadYaml, Repeat("a:\n", "- 1\n", ""), ""},
        Case{"Keys", LoadYaml, Count("", "a", ":\n"), ""},
        Case{"Anchors", LoadYaml, Count("a:\n", "- &a", "\n"), ""},
        Case{"Json", LoadYaml, Repeat("{\"a\": [", "{},", "1]}\n"), ""},
        Case{"ListThatMayBeAKey", LoadYaml, Repeat("- [", "1,", "1]\n"), kHeldBack},
        Case{"MapThatMayBeAKey", LoadYaml, Repeat("# no JSON\n{", "a,", "b}\n"), kHeldBack},
        Case{"AliasesOfText", LoadYaml,
             Repeat("a: &a " + std::string(10000, 'x') + "\nb: [", "*a ,", "1]\n"), kAliases},
        Case{"AliasesOfAList", LoadYaml, Repeat("a: &a [x, y, z]\nb: [", "*a ,", "1]\n"), kAliases},
        Case{"Comments", LoadXml, Repeat("<opencv_storage>", "<!---->", "</opencv_storage>"), ""},
        Case{"Elements", LoadXml, Repeat("<opencv_storage>", "<a/>", "</opencv_storage>"), ""},
        Case{"ListedElements", LoadXml,
             Repeat("<opencv_storage><a>", "<_/>", "</a></opencv_storage>"), ""},
        Case{"ListedNumbers", LoadXml,
             Repeat("<opencv_storage><a>", "<_>1</_>", "</a></opencv_storage>"), ""},
        Case{"Pieces", LoadXml, Repeat("<opencv_storage><a>", "1 ", "</a></opencv_storage>"), ""}),
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace calib
