// Cases written out by hand, byte by byte: the judge itself has no other judge.
#include "tests/support/strict_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/schema_table.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

// Two hex digits a byte; spaces separate.
std::string Hex(const std::string& text) {
  std::string bytes;
  std::string digits;
  for (const char c : text) {
    if (c == ' ') continue;
    digits.push_back(c);
    if (digits.size() == 2) {
      bytes.push_back(static_cast<char>(std::stoi(digits, nullptr, 16)));
      digits.clear();
    }
  }
  EXPECT_EQ(digits, "") << "an odd number of hex digits in '" << text << "'";
  return bytes;
}

struct Good {
  const char* what;
  const char* message;
  const char* bytes;
  const char* rewritten;  // null: the same bytes
};

const Good kGood[] = {
    {"empty", "CameraIntrinsics", "", nullptr},
    {"float", "MarkerPositionInfo", "0D 00 00 80 3F", nullptr},
    {"double", "CameraIntrinsics", "09 01 02 03 04 05 06 07 08", nullptr},
    {"required fields missing", "CameraIntrinsics", "40 05", nullptr},
    {"int32 -1 in ten bytes", "MarkerPositionInfo", "20 FF FF FF FF FF FF FF FF FF 01", nullptr},
    {"int32 -1 in five bytes", "MarkerPositionInfo", "20 FF FF FF FF 0F",
     "20 FF FF FF FF FF FF FF FF FF 01"},
    {"int32 cut to its low 32 bits", "MarkerPositionInfo", "20 85 80 80 80 10", "20 05"},
    {"int32 2^31", "MarkerPositionInfo", "20 80 80 80 80 08", "20 80 80 80 80 F8 FF FF FF FF 01"},
    {"int64 in full", "CalibrationMetadataProto", "08 80 80 80 80 10", nullptr},
    {"bool 2 is true", "FocusCheckProto", "28 02", "28 01"},
    {"bool 2^35 is true", "FocusCheckProto", "28 80 80 80 80 80 01", "28 01"},
    {"bool false", "FocusCheckProto", "28 00", nullptr},
    {"overlong int32", "MarkerPositionInfo", "20 87 80 80 00", "20 07"},
    {"overlong tag", "MarkerPositionInfo", "A0 80 00 07", "20 07"},
    {"tag counts modulo 2^32", "MarkerPositionInfo", "A0 80 80 80 10 07", "20 07"},
    {"overlong length", "FocusCheckProto", "22 81 80 80 80 80 80 80 80 80 00 78", "22 01 78"},
    {"string of no bytes", "FocusCheckProto", "22 00", nullptr},
    {"string that is not UTF-8", "FocusCheckProto", "22 02 C3 28", nullptr},
    {"last value wins", "MarkerPositionInfo", "20 01 20 02 0D 00 00 00 00 0D 01 00 00 00",
     "0D 01 00 00 00 20 02"},
    {"last string wins", "FocusCheckProto", "22 03 61 62 63 22 01 64", "22 01 64"},
    {"by ascending number", "FocusInfoItem", "48 03 08 01 40 02", "08 01 40 02 48 03"},
    {"by ascending number, not as declared", "BaseCalibrationProto", "2D 00 00 00 00 22 00 1A 00",
     "1A 00 22 00 2D 00 00 00 00"},
    {"packed floats", "FocusCheckProto", "1A 08 01 00 00 00 02 00 00 00",
     "1D 01 00 00 00 1D 02 00 00 00"},
    {"packed run of nothing", "CameraExtrinsics", "0A 00", ""},
    {"packed and single doubles", "CameraExtrinsics",
     "0A 08 01 00 00 00 00 00 00 00 09 02 00 00 00 00 00 00 00 0A 08 03 00 00 00 00 00 00 00",
     "09 01 00 00 00 00 00 00 00 09 02 00 00 00 00 00 00 00 09 03 00 00 00 00 00 00 00"},
    {"sub-message occurrences merge", "CameraCalibration",
     "12 04 08 01 10 02 2A 01 6E 12 04 10 03 18 04", "12 06 08 01 10 03 18 04 2A 01 6E"},
    {"repeated messages append", "RobotCalibration", "0A 00 0A 03 2A 01 61", nullptr},
    {"unknown after known", "MarkerPositionInfo", "28 07 20 01", "20 01 28 07"},
    {"unknown of every wire type", "FocusInfo",
     "10 01 11 01 02 03 04 05 06 07 08 12 02 61 62 13 18 01 14 15 01 02 03 04", nullptr},
    {"unknown varint spelled short", "FocusInfo", "90 80 00 81 00", "10 01"},
    {"largest field number", "FocusInfo", "F8 FF FF FF 0F 01", nullptr},
    {"known number, other wire type", "CameraIntrinsics", "08 01", nullptr},
    {"known number as a group", "RobotCalibration", "0B 0C", nullptr},
    {"singular number as a packed run", "MarkerPositionInfo", "0A 04 00 00 00 00", nullptr},
    {"groups in groups", "FocusInfo", "13 1B 1C 13 20 05 14 14", nullptr},
    {"group with known numbers in it", "RobotCalibration", "13 0A 01 FF 14", nullptr},
    {"unknown of merged sub-messages", "CameraCalibration", "12 02 30 01 12 02 38 02 12 02 30 03",
     "12 06 30 01 38 02 30 03"},
};

TEST(StrictReaderTest, AcceptsAndRewrites) {
  for (const Good& good : kGood) {
    SCOPED_TRACE(good.what);
    const std::string bytes = Hex(good.bytes);
    const Verdict verdict = Judge(good.message, bytes);
    ASSERT_TRUE(verdict) << verdict;
    const std::string rewritten = Rewrite(good.message, bytes);
    EXPECT_EQ(rewritten, good.rewritten == nullptr ? bytes : Hex(good.rewritten));
    EXPECT_EQ(Rewrite(good.message, rewritten), rewritten) << "a second pass changes it";
  }
}

struct Bad {
  const char* what;
  const char* message;
  const char* bytes;
  size_t offset;
};

const Bad kBad[] = {
    {"tag without a value", "RobotCalibration", "0A", 1},
    {"sub-message cut at its start", "RobotCalibration", "0A 05", 2},
    {"sub-message cut at a field boundary", "RobotCalibration", "0A 05 2A 01 61", 2},
    {"sub-message runs past the enclosing one", "PTZSystemCalibration", "1A 04 0A 05 2A 01", 4},
    {"inner length past the enclosing message, bytes there", "RobotCalibration",
     "0A 03 2A 02 61 0A 00", 4},
    {"tag cut off", "CameraIntrinsics", "82", 1},
    {"varint cut off", "MarkerPositionInfo", "20 80", 2},
    {"varint of eleven bytes", "MarkerPositionInfo", "20 80 80 80 80 80 80 80 80 80 80 00", 11},
    {"tag of eleven bytes", "MarkerPositionInfo", "A0 80 80 80 80 80 80 80 80 80 00 07", 10},
    {"float cut off", "MarkerPositionInfo", "0D 00 00 00", 1},
    {"double cut off", "CameraIntrinsics", "09 00 00 00 00 00 00 00", 1},
    {"double cut off by its message", "PTZCameraParameters", "0A 04 09 00 00 00 00 00 00 00", 3},
    {"string cut off", "FocusCheckProto", "22 02 61", 2},
    {"length cut off", "FocusCheckProto", "22 80", 2},
    {"length of 2^32", "FocusCheckProto", "22 80 80 80 80 10", 6},
    {"length of 2^64-1", "FocusCheckProto", "22 FF FF FF FF FF FF FF FF FF 01", 11},
    {"length that is the rest modulo 2^32", "FocusCheckProto", "22 81 80 80 80 10 61", 6},
    {"packed run of a float and a half", "FocusCheckProto", "1A 06 00 00 00 00 00 00", 6},
    {"packed run of a float and a half, bytes behind", "FocusCheckProto",
     "1A 06 00 00 00 00 00 00 28 01", 6},
    {"packed run cut off", "CameraExtrinsics", "0A 08 00 00 00 00", 2},
    {"zero tag", "MarkerPositionInfo", "00", 1},
    {"zero tag, overlong", "MarkerPositionInfo", "80 00", 2},
    {"zero tag inside", "RobotCalibration", "0A 01 00", 3},
    {"zero tag behind a field", "MarkerPositionInfo", "20 01 00", 3},
    {"zero tag in a group", "FocusInfo", "13 00 14", 2},
    {"field number 0", "MarkerPositionInfo", "02 00", 1},
    {"field number 0 in a group", "FocusInfo", "13 02 00 14", 2},
    {"wire type 6", "MarkerPositionInfo", "0E", 1},
    {"wire type 6, end-group tag behind", "MarkerPositionInfo", "0E 0C", 1},
    {"wire type 7", "MarkerPositionInfo", "0F", 1},
    {"wire type 6 of an unknown number", "MarkerPositionInfo", "56", 1},
    {"wire type 7 in a group", "FocusInfo", "13 1F 14", 2},
    {"lone end-group tag", "MarkerPositionInfo", "0C", 1},
    {"two end-group tags", "MarkerPositionInfo", "0C 0C", 1},
    {"end-group tag ends a sub-message", "RobotCalibration", "0A 01 0C", 3},
    {"group not closed", "FocusInfo", "13 18 01", 3},
    {"group closed as another", "FocusInfo", "13 1C", 2},
    {"group closed beyond its message", "RobotCalibration", "0A 01 43 44", 3},
    {"inner group not closed", "FocusInfo", "13 1B 14", 3},
    {"unknown varint cut off", "FocusInfo", "10", 1},
    {"unknown fixed64 cut off", "FocusInfo", "11 00 00 00 00 00 00 00", 1},
    {"unknown fixed32 cut off", "FocusInfo", "15 00 00 00", 1},
    {"unknown length past the end", "FocusInfo", "12 01", 2},
    {"mistyped value cut off", "RobotCalibration", "0D 00 00", 1},
};

TEST(StrictReaderTest, RefusesAndSaysWhere) {
  for (const Bad& bad : kBad) {
    SCOPED_TRACE(bad.what);
    const Verdict verdict = Judge(bad.message, Hex(bad.bytes));
    EXPECT_FALSE(verdict);
    EXPECT_EQ(verdict.offset, bad.offset) << verdict;
    EXPECT_NE(verdict.reason, "");
  }
}

TEST(StrictReaderTest, CountsDepth) {
  // other_cameras, camera, intrinsics, sample_points: the schema's deepest chain.
  std::string chain = WireWriter().Tag(16, kLengthDelimited).LengthDelimited("").bytes();
  for (const int number : {1, 1, 3}) {
    chain = WireWriter().Tag(number, kLengthDelimited).LengthDelimited(chain).bytes();
  }
  EXPECT_FALSE(Judge("PTZSystemCalibration", chain, 3));
  EXPECT_TRUE(Judge("PTZSystemCalibration", chain, 4));
  EXPECT_EQ(Rewrite("PTZSystemCalibration", chain, 4), chain);

  std::string groups;
  for (int level = 1; level <= kDefaultDepthLimit; ++level) {
    groups = WireWriter().Group(2, groups).bytes();
    EXPECT_TRUE(Judge("FocusInfo", groups, level)) << level;
    EXPECT_FALSE(Judge("FocusInfo", groups, level - 1)) << level;
  }
  EXPECT_TRUE(Judge("FocusInfo", groups));
  EXPECT_FALSE(Judge("FocusInfo", WireWriter().Group(2, groups).bytes()));
  EXPECT_FALSE(Judge("RobotCalibration",
                     WireWriter().Tag(1, kLengthDelimited).LengthDelimited(groups).bytes()))
      << "a group counts from the level of the message that holds it";

  std::string siblings;
  for (int i = 0; i < 1000; ++i) siblings += WireWriter().Group(2, "").bytes();
  EXPECT_TRUE(Judge("FocusInfo", siblings, 1)) << "neighbours add no depth";
}

TEST(StrictReaderTest, EveryFieldUnderEveryWireType) {
  const std::string values[] = {
      WireWriter().Varint(300).bytes(),
      WireWriter().Fixed64(0x0807060504030201).bytes(),
      WireWriter().LengthDelimited("").bytes(),
      "",
      "",
      WireWriter().Fixed32(0x04030201).bytes(),
  };
  int fields = 0;
  for (const MessageRow& message : Schema()) {
    for (const FieldRow& field : message) {
      ++fields;
      for (const WireType wire_type :
           {kVarint, kFixed64, kLengthDelimited, kStartGroup, kFixed32}) {
        SCOPED_TRACE(FullName(message) + "." + field.name + " as " + std::to_string(wire_type));
        const std::string bytes =
            wire_type == kStartGroup
                ? WireWriter().Group(field.number, "").bytes()
                : WireWriter().Tag(field.number, wire_type).Raw(values[wire_type]).bytes();
        ASSERT_TRUE(Judge(message.name, bytes));
        const bool empty_run =
            wire_type == kLengthDelimited && field.repeated() && field.kind != Kind::kMessage;
        const bool boolean = wire_type == kVarint && field.kind == Kind::kBool;
        const std::string expected = empty_run ? ""
                                     : boolean
                                         ? WireWriter().Tag(field.number, kVarint).Varint(1).bytes()
                                         : bytes;
        EXPECT_EQ(Rewrite(message.name, bytes), expected);
        for (size_t size = 1; size < bytes.size(); ++size) {
          EXPECT_FALSE(Judge(message.name, bytes.substr(0, size))) << size << " bytes of it";
        }
      }
    }
  }
  EXPECT_EQ(fields, kFieldCount);
}

TEST(StrictReaderDeathTest, RewritesRecordsOnly) {
  EXPECT_DEATH(Rewrite("RobotCalibration", "\x0A"), "refused at offset 1: a varint is cut off");
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
