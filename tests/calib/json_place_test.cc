// The search for the place where a reader gives up.
#include "calib/formats/json_place.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>

namespace calib {
namespace {

// A reader that gives up with the piece that has the byte before `stop`, and counts the pieces and
// readings that it was asked for.
struct Reader {
  size_t size, stop;
  size_t pieces = 0, readings = 0;

  size_t operator()(size_t low, size_t high, size_t piece) {
    ++readings;
    size_t taken = low;
    if (stop <= low) return low;
    for (; taken < stop && taken < high; ++pieces) taken = std::min(taken + piece, high);
    return taken < stop ? size : taken;
  }
};

TEST(FindStopTest, FindsEveryPlace) {
  for (const size_t size : {0, 1, 2, 15, 16, 17, 255, 256, 257, 1000}) {
    for (size_t stop = std::min<size_t>(size, 1); stop <= size; ++stop) {
      Reader reader{size, stop};
      EXPECT_EQ(FindStop(size, std::ref(reader)), stop) << "of " << size;
    }
  }
}

// A reader that begins a token anew with each piece takes time for the whole token each time.
TEST(FindStopTest, AsksForFewPiecesHoweverLongTheText) {
  const size_t size = (size_t{1} << 31) - 1;
  for (const size_t stop : {size_t{1}, size / 3, size - 1, size}) {
    Reader reader{size, stop};
    EXPECT_EQ(FindStop(size, std::ref(reader)), stop);
    EXPECT_LE(reader.readings, 8u) << stop;
    EXPECT_LE(reader.pieces, 8 * kPieces) << stop;
  }
}

TEST(FindStopTest, EndsWithAReaderThatReadsOn) {
  EXPECT_EQ(FindStop(1000, [](size_t, size_t, size_t) { return size_t{0}; }), 1000u);
  EXPECT_EQ(FindStop(1000, [](size_t, size_t high, size_t) { return high; }), 1000u);
}

}  // namespace
}  // namespace calib
