// The places of errors in JSON: where a reader gives up, and where the value is that it names.
#include "calib/formats/json_place.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>

#include "calib/formats/names.h"
#include "tests/support/peak_memory.h"

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

struct JsonError {
  std::string json;  // of a RobotCalibration
  std::string message, description;
};

TEST(DescribeJsonErrorTest, NamesThePlace) {
  const std::string unknown = "(camera[1]) nmae: Cannot find field.";
  const std::string no_field = "camera[1]: CameraCalibration has no field 'nmae'";
  const JsonError cases[] = {
      {R"({"camera": [{}, {"nmae": 1, "other": 2}]})", unknown, ":1:18: " + no_field},
      {"\n {\"camera\" :\n[{ }\t, { \"nmae\": 1}]}", unknown, ":3:10: " + no_field},
      {R"({'camera': [{}, {nmae: 1}]})", unknown, ":1:18: " + no_field},
      {R"({"x": [{"a": "}],"}, "]\""], "camera": [{"name": "],}"}, {"name": 1, "nmae": 2}]})",
       unknown, ":1:70: " + no_field},
      {R"({"c\u0061mera": [{}, {"n\u0061me": 1, "nmae": 1}]})", unknown, ":1:39: " + no_field},
      {R"({"camera": [1, {"camera": [{}, {}]}], "camera": [2, {"nmae": 3}]})", unknown,
       ":1:54: " + no_field},
      {R"({"camera": [{"intrinsics": {"sample_points": [{"imgX": []}]}}]})",
       "camera[0].intrinsics.sample_points[0].img_x: is bad",
       ":1:56: camera[0].intrinsics.sample_points[0].img_x: is bad"},
      {R"({"camera": {"nmae": 1}})", "(camera) nmae: Cannot find field.",
       ":1:13: camera: CameraCalibration has no field 'nmae'"},
      {R"({"nmae": 1})", "() nmae: Cannot find field.",
       ":1:2: RobotCalibration has no field 'nmae'"},
      {R"({"nmae": 1})", "nmae: Cannot find field.", ":1:2: RobotCalibration has no field 'nmae'"},
      {R"({"camera": {"camera": 1}})", "(camera) camera: Cannot find field.",
       ":1:13: camera: CameraCalibration has no field 'camera'"},
      // Where the path leads nowhere, its last value that is there.
      {R"({"camera": [{}]})", unknown, ":1:12: camera[1]: Cannot find field."},
      {R"({"camera": 1})", "camera[0].name: is bad", ":1:12: camera[0].name: is bad"},
      {R"({"camera": [{}]})", "camera[0].other: is bad", ":1:13: camera[0].other: is bad"},
      {"[1]", ": is bad", ":1:1: is bad"},
      {"", "camera[0]: is bad", ":1:1: camera[0]: is bad"},
  };
  for (const JsonError& error : cases) {
    EXPECT_EQ(DescribeJsonError(error.json, RecordType("RobotCalibration"), error.message),
              error.description)
        << error.json;
  }
}

// Whatever the text, since the converter may have taken it for something else.
TEST(DescribeJsonErrorTest, EndsWithEveryText) {
  const std::string characters = "{[:,]}\"a \\";
  for (size_t number = 0; number < 100000; ++number) {
    std::string json = "{\"camera\":[";
    for (size_t rest = number; rest > 0; rest /= 10) json += characters[rest % 10];
    DescribeJsonError(json, RecordType("RobotCalibration"), "(camera[1]) nmae: Cannot find field.");
  }
}

TEST(DescribeJsonErrorTest, TakesNoMemoryForTheText) {
  std::string json = "{\"camera\": [";
  for (int i = 0; i < 1000000; ++i) json += "{},";
  json += "{\"nmae\": 1}]}";
  const zarvo::calibration::testing::PeakMemory memory;
  EXPECT_EQ(DescribeJsonError(json, RecordType("RobotCalibration"),
                              "(camera[1000000]) nmae: Cannot find field."),
            ":1:3000014: camera[1000000]: CameraCalibration has no field 'nmae'");
  EXPECT_LE(memory.bytes(), 10000u);
}

}  // namespace
}  // namespace calib
