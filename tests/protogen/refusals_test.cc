// What the generator refuses: every rule of protogen/refusals.cc, with file, line and reason.
//
// The schema texts say themselves what is expected: a line that must be refused ends in
// "//! reason", once for each reason. Whatever is marked must be refused, and nothing else may be.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "protogen/schema.h"
#include "tests/protogen/scratch.h"

namespace protogen {
namespace testing {
namespace {

const char kFile[] = "dir/test.proto";
const char kImported[] = "dir/other.proto";
const char kMark[] = "//! ";
// The first two lines of most texts.
const char kTop[] = "syntax = \"proto2\";\npackage zarvo.calibration.scratch;\n";

std::string At(int line, const std::string& reason) {
  return kFile + (":" + std::to_string(line)) + ": " + reason;
}

// One error a line, in any fixed order.
std::string Joined(std::vector<std::string> errors) {
  std::sort(errors.begin(), errors.end());
  std::string text;
  for (const std::string& error : errors) text += error + "\n";
  return text;
}

std::vector<std::string> Marked(const std::string& text) {
  std::vector<std::string> errors;
  int line = 1;
  for (size_t start = 0; start < text.size(); ++line) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string content = text.substr(start, end - start);
    for (size_t mark = content.find(kMark); mark != std::string::npos;) {
      const size_t reason = mark + sizeof kMark - 1;
      mark = content.find(kMark, reason);
      const size_t stop = mark == std::string::npos ? content.size() : mark - 1;
      errors.push_back(At(line, content.substr(reason, stop - reason)));
    }
    start = end + 1;
  }
  return errors;
}

std::vector<std::string> ErrorsOf(const std::string& text) {
  ScratchFolder scratch;
  scratch.Write(kFile, text);
  scratch.Write(kImported,
                "syntax = \"proto2\"; package zarvo.calibration.other;"
                "message Other { optional float x = 1; }");
  const Schema schema(scratch.path(), kFile);
  EXPECT_EQ(schema.file() == nullptr, !schema.errors().empty())
      << "a schema is either loaded or refused";
  return schema.errors();
}

void Check(const std::string& text) {
  SCOPED_TRACE(text);
  EXPECT_EQ(Joined(ErrorsOf(text)), Joined(Marked(text)));
}

struct Case {
  const char* name;
  const char* text;  // behind kTop
};

class RefusalsTest : public ::testing::TestWithParam<Case> {};

TEST_P(RefusalsTest, MarkedLinesAndNoOthers) {
  const std::string text = std::string(kTop) + GetParam().text;
  ASSERT_NE(text.find(kMark), std::string::npos) << "the text expects nothing";
  Check(text);
}

const Case kRefused[] = {
    // The file.
    {"Import", R"(
import "dir/other.proto";  //! imports are not served; all messages must stand in one file
message A { optional zarvo.calibration.other.Other x = 1; }
)"},
    {"PublicImport", R"(
import public "dir/other.proto";  //! imports are not served; all messages must stand in one file
message A { optional float x = 1; }
)"},
    {"FileOption", R"(
option optimize_for = SPEED;  //! file options are not served
message A { optional float x = 1; }
)"},
    {"Enum", R"(
enum Side {  //! enums are not served (Side)
  LEFT = 0;
}
message A { optional float x = 1; }
)"},
    {"Service", R"(
message A { optional float x = 1; }
service Rig {  //! services are not served (Rig)
  rpc Get(A) returns (A);
}
)"},
    {"Extension", R"(
message A {  //! A: extension ranges are not served
  optional float x = 1;
  extensions 100 to 199;
}
extend A {
  optional float y = 100;  //! extensions are not served (y)
  optional float z = 101;  //! extensions are not served (z)
}
)"},

    // Messages.
    {"NestedMessage", R"(
message A {
  message Part {  //! nested messages are not served (Part in A)
    optional float x = 1;
  }
  optional Part part = 1;
}
)"},
    {"NestedEnum", R"(
message A {
  enum Side {  //! enums are not served (Side)
    LEFT = 0;
  }
  optional float x = 1;
}
)"},
    {"NestedExtension", R"(
message A {  //! A: extension ranges are not served
  optional float x = 1;
  extensions 100 to 199;
  extend A {
    optional float y = 100;  //! extensions are not served (y)
  }
}
)"},
    {"Oneof", R"(
message A {
  oneof choice {  //! oneofs are not served (choice)
    float x = 1;
    int32 y = 2;
  }
}
)"},
    {"MessageOption", R"(
message A {  //! A: message options are not served
  option no_standard_descriptor_accessor = true;
  optional float x = 1;
}
)"},
    {"MessageNotInCamelCase", R"(
message a {  //! a: message names must be in CamelCase: letters and digits, the first a capital, small ones among them
  optional float x = 1;
}
message _B {  //! _B: message names must be in CamelCase: letters and digits, the first a capital, small ones among them
  optional float x = 1;
}
message Big_B {  //! Big_B: message names must be in CamelCase: letters and digits, the first a capital, small ones among them
  optional float x = 1;
}
message NULL {  //! NULL: message names must be in CamelCase: letters and digits, the first a capital, small ones among them
  optional float x = 1;
}
)"},
    {"EmptyMessage", R"(
message A {}  //! A has no fields; a class needs at least one
)"},

    // Fields.
    {"PackedOption", R"(
message A {
  repeated float x = 1 [packed = true];  //! A.x: field options are not served (packed and deprecated among them)
  repeated float y = 2 [packed = false];  //! A.y: field options are not served (packed and deprecated among them)
}
)"},
    {"DeprecatedOption", R"(
message A {
  optional float x = 1 [deprecated = true];  //! A.x: field options are not served (packed and deprecated among them)
}
)"},
    {"OptionBesideADefault", R"(
message A {
  optional float x = 1 [default = 2, deprecated = true];  //! A.x: field options are not served (packed and deprecated among them)
}
)"},
    {"FieldNumber", R"(
message A {
  optional float x = 2048;  //! A.x: field number 2048 is above 2047, the last whose tag takes two bytes
  repeated double y = 536870911;  //! A.y: field number 536870911 is above 2047, the last whose tag takes two bytes
}
)"},
    {"UnsignedAndFixedTypes", R"(
message A {
  optional uint32 a = 1;  //! A.a: type uint32 is not served; double, float, int32, int64, bool, string, bytes and messages are
  optional uint64 b = 2;  //! A.b: type uint64 is not served; double, float, int32, int64, bool, string, bytes and messages are
  optional sint32 c = 3;  //! A.c: type sint32 is not served; double, float, int32, int64, bool, string, bytes and messages are
  repeated sint64 d = 4;  //! A.d: type sint64 is not served; double, float, int32, int64, bool, string, bytes and messages are
  optional fixed32 e = 5;  //! A.e: type fixed32 is not served; double, float, int32, int64, bool, string, bytes and messages are
  optional fixed64 f = 6;  //! A.f: type fixed64 is not served; double, float, int32, int64, bool, string, bytes and messages are
  optional sfixed32 g = 7;  //! A.g: type sfixed32 is not served; double, float, int32, int64, bool, string, bytes and messages are
  optional sfixed64 h = 8;  //! A.h: type sfixed64 is not served; double, float, int32, int64, bool, string, bytes and messages are
}
)"},
    {"EnumField", R"(
enum Side {  //! enums are not served (Side)
  LEFT = 0;
}
message A {
  optional Side side = 1;  //! A.side: type enum is not served; double, float, int32, int64, bool, string, bytes and messages are
}
)"},
    {"Group", R"(
message A {
  optional group Part = 1 {  //! nested messages are not served (Part in A) //! A.part: type group is not served; double, float, int32, int64, bool, string, bytes and messages are
    optional float x = 2;
  }
}
)"},
    {"Map", R"(
message B { optional float x = 1; }
message A {
  map<string, float> x = 1;  //! A.x: maps are not served
  map<int32, B> y = 2;  //! A.y: maps are not served
}
)"},
    {"RepeatedOfAnUnservedKind", R"(
message A {
  repeated string a = 1;  //! A.a: repeated string is not served; only double, float and messages repeat
  repeated bytes b = 2;  //! A.b: repeated bytes is not served; only double, float and messages repeat
  repeated int32 c = 3;  //! A.c: repeated int32 is not served; only double, float and messages repeat
  repeated int64 d = 4;  //! A.d: repeated int64 is not served; only double, float and messages repeat
  repeated bool e = 5;  //! A.e: repeated bool is not served; only double, float and messages repeat
}
)"},
    {"RequiredOfNoFixedSize", R"(
message B { optional float x = 1; }
message A {
  required string a = 1;  //! A.a: a required field must have a fixed size (double, float, bool), not type string
  required bytes b = 2;  //! A.b: a required field must have a fixed size (double, float, bool), not type bytes
  required int32 c = 3;  //! A.c: a required field must have a fixed size (double, float, bool), not type int32
  required int64 d = 4;  //! A.d: a required field must have a fixed size (double, float, bool), not type int64
  required B e = 5;  //! A.e: a required field must have a fixed size (double, float, bool), not type message
}
)"},
    {"DefaultText", R"(
message A {
  optional string a = 1 [default = "x"];  //! A.a: a default text is not served
  optional bytes b = 2 [default = "x"];  //! A.b: a default text is not served
  optional string c = 3 [default = ""];  //! A.c: a default text is not served
}
)"},
    {"DefaultThatIsNoFiniteNumber", R"(
message A {
  optional float a = 1 [default = inf];  //! A.a: a default that is no finite number is not served
  optional float b = 2 [default = -inf];  //! A.b: a default that is no finite number is not served
  optional float c = 3 [default = nan];  //! A.c: a default that is no finite number is not served
  optional double d = 4 [default = inf];  //! A.d: a default that is no finite number is not served
  optional double e = 5 [default = nan];  //! A.e: a default that is no finite number is not served
}
)"},
    {"MessageThatRefersToItself", R"(
message A {
  optional A a = 1;  //! A.a: its message type A must be declared before A
  repeated A b = 2;  //! A.b: its message type A must be declared before A
}
)"},
    {"MessageThatRefersToALaterOne", R"(
message A {
  optional B b = 1;  //! A.b: its message type B must be declared before A
}
message B {
  optional A a = 1;
}
)"},

    // Names.
    {"FieldNotInLowerCase", R"(
message A {
  optional float X = 1;  //! A.X: field names must be in lower case and begin with a letter
  optional float errorPerPoint = 2;  //! A.errorPerPoint: field names must be in lower case and begin with a letter
  optional float _y = 3;  //! A._y: field names must be in lower case and begin with a letter
}
)"},
    {"FieldsWhoseAccessorsMeet", R"(
message A {
  optional float x = 1;
  optional bool set_x = 2;  //! A.set_x: its accessor name set_x is taken by the field x
  optional bool clear_x = 3;  //! A.clear_x: its accessor name clear_x is taken by the field x
  optional bool mutable_x = 4;  //! A.mutable_x: its accessor name mutable_x is taken by the field x
  optional bool release_x = 5;  //! A.release_x: its accessor name release_x is taken by the field x
  optional bool set_allocated_x = 6;  //! A.set_allocated_x: its accessor name set_allocated_x is taken by the field x
  optional bool add_x = 7;  //! A.add_x: its accessor name add_x is taken by the field x
}
message Aa {
  optional float x = 1;
  optional bool x_size = 2;  //! Aa.x_size: its accessor name x_size is taken by the field x
}
message B {
  repeated float x = 1;
  optional int32 has_x = 2;  //! B.has_x: its accessor name has_x is taken by the field x //! B.has_x: its accessor name set_has_x is taken by the field x //! B.has_x: its accessor name clear_has_x is taken by the field x
}
message C {
  optional float x_size = 1;
  repeated float x = 2;  //! C.x: its accessor name x_size is taken by the field x_size
}
message D {
  optional float p_1 = 1;
  optional float p1 = 2;  //! D.p1: its accessor name kP1FieldNumber is taken by the field p_1
}
)"},
    {"FieldsThatMeetWhatEveryClassHas", R"(
message A {
  optional float descriptor = 1;  //! A.descriptor: its accessor name descriptor is taken by every class
  optional float unknown_fields = 2;  //! A.unknown_fields: its accessor name unknown_fields is taken by every class //! A.unknown_fields: its accessor name mutable_unknown_fields is taken by every class
  optional float default_instance = 3;  //! A.default_instance: its accessor name default_instance is taken by every class
}
message B {
  optional float mutable_unknown_fields = 1;  //! B.mutable_unknown_fields: its accessor name mutable_unknown_fields is taken by every class
}
)"},

    {"EveryReasonAtOnce", R"(
option optimize_for = SPEED;  //! file options are not served
message b {  //! b: message names must be in CamelCase: letters and digits, the first a capital, small ones among them
  repeated string Names = 3000 [deprecated = true];  //! b.Names: field options are not served (packed and deprecated among them) //! b.Names: field number 3000 is above 2047, the last whose tag takes two bytes //! b.Names: repeated string is not served; only double, float and messages repeat //! b.Names: field names must be in lower case and begin with a letter
}
message A {}  //! A has no fields; a class needs at least one
)"},
};

std::string CaseName(const ::testing::TestParamInfo<Case>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Rules, RefusalsTest, ::testing::ValuesIn(kRefused), CaseName);

class AcceptedTest : public ::testing::TestWithParam<Case> {};

TEST_P(AcceptedTest, IsNotRefused) { Check(std::string(kTop) + GetParam().text); }

const Case kAccepted[] = {
    {"EveryKind", R"(
message B { optional float x = 1; }
message A {
  optional double a = 1;
  optional float b = 2;
  optional int32 c = 3;
  optional int64 d = 4;
  optional bool e = 5;
  optional string f = 6;
  optional bytes g = 7;
  optional B h = 8;
  repeated double p = 9;
  repeated float j = 10;
  repeated B k = 11;
  required double l = 12;
  required float m = 13;
  required bool o = 14;
}
)"},
    {"Defaults", R"(
message A {
  optional double a = 1 [default = -0.5];
  optional float b = 2 [default = 1e30];
  optional int32 c = 3 [default = -2147483648];
  optional int64 d = 4 [default = 9223372036854775807];
  optional bool e = 5 [default = true];
  required float f = 6 [default = 3];
}
)"},
    {"LastFieldNumberOfTwoBytes", "message A { optional float x = 2047; }"},
    {"ReservedNumbers", "message A { reserved 2, 5 to 9; optional float x = 1; }"},
    {"MessageOfAnEarlierOne",
     "message B { optional float x = 1; } message A { repeated B b = 1; }"},
    {"FieldNamedLikeItsMessage", "message Rig { optional float rig = 1; }"},
    {"DigitsAndUnderscores", "message Aa1 { optional float x1_2 = 1; optional float x__y = 2; }"},
    {"WordsThatAreSpecialInPlaces",
     "message Final { optional float final = 1; optional int32 import = 2; }"},
};

INSTANTIATE_TEST_SUITE_P(Rules, AcceptedTest, ::testing::ValuesIn(kAccepted), CaseName);

// A message of `count` fields, and as many of the kinds that has-bits do not matter for.
std::string WithFields(int count) {
  std::string text = kTop;
  text += "\nmessage Wide {\n";
  for (int i = 1; i <= count; ++i) {
    text += std::string(i % 3 == 0 ? "  repeated" : "  optional") + " float f" + std::to_string(i) +
            " = " + std::to_string(i) + ";\n";
  }
  return text + "}\n";
}

TEST(RefusalsTest, NumberOfFields) {
  EXPECT_EQ(Joined(ErrorsOf(WithFields(1))), "");
  EXPECT_EQ(Joined(ErrorsOf(WithFields(32))), "");
  for (const int count : {33, 64}) {
    EXPECT_EQ(Joined(ErrorsOf(WithFields(count))),
              At(4, "Wide has " + std::to_string(count) +
                        " fields; at most 32 are served, one for each bit of the has-bits word\n"));
  }
}

TEST(RefusalsTest, Proto3) {
  Check(
      "// A comment.\n"
      "syntax = \"proto3\";  //! the syntax must be proto2; it is proto3\n"
      "package zarvo.calibration.scratch;\n"
      "message A {\n"
      "  float x = 1;\n"
      "}\n");
}

TEST(RefusalsTest, NoPackage) {
  Check(
      "syntax = \"proto2\";  //! a package is needed: it becomes the C++ namespace\n"
      "message A { optional float x = 1; }\n");
}

TEST(RefusalsTest, EmptyFile) {
  const std::string no_package = At(1, "a package is needed: it becomes the C++ namespace");
  const std::string no_message = At(1, "there is no message to generate a class for");
  EXPECT_EQ(Joined(ErrorsOf("syntax = \"proto2\";\n")), Joined({no_package, no_message}));
  EXPECT_EQ(Joined(ErrorsOf(kTop)), Joined({no_message}));
  // What the run-time says to a file without a syntax line differs; it may only not be accepted.
  EXPECT_NE(Joined(ErrorsOf("")), "");
}

void CheckFieldIsTaken(const std::string& field, const std::string& owner) {
  EXPECT_EQ(Joined(ErrorsOf(kTop + ("message A { optional float " + field + " = 1; }\n"))),
            At(3, "A." + field + ": its accessor name " + field + " is taken by " + owner + "\n"));
}

// Field names that a compiler reads as something else, the alternative spellings of operators among
// them.
TEST(RefusalsTest, Keywords) {
  std::istringstream keywords(R"(
alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t char16_t
char32_t class co_await co_return co_yield compl concept const const_cast consteval constexpr
constinit continue decltype default delete do double dynamic_cast else enum explicit export extern
false float for friend goto if inline int long mutable namespace new noexcept not not_eq nullptr
operator or or_eq private protected public register reinterpret_cast requires return short signed
sizeof static static_assert static_cast struct switch template this thread_local throw true try
typedef typeid typename typeof union unsigned using virtual void volatile wchar_t while xor xor_eq)");
  for (std::string keyword; keywords >> keyword;) {
    CheckFieldIsTaken(keyword, "a C++ keyword");
  }
}

// Field names that the preprocessor replaces, or may; reserved_names_test.cc knows all.
TEST(RefusalsTest, Macros) {
  for (const std::string macro : {"stdin", "stdout", "stderr", "errno", "assert", "unix", "linux",
                                  "major", "minor", "makedev", "offsetof", "st_mtime"}) {
    CheckFieldIsTaken(macro, "a macro");
  }
  for (const std::string macro : {"I", "PRId64", "SCNuMAX"}) {
    const std::string text = kTop + ("message " + macro + " { optional float x = 1; }\n");
    EXPECT_EQ(Joined(ErrorsOf(text)), At(3, macro + ": the message's name is taken by a macro\n"));
  }
}

// A class cannot have a function of its own name.
TEST(RefusalsTest, MessagesNamedLikeAFunctionOfEveryClass) {
  for (const std::string message : {"ByteSize",
                                    "Clear",
                                    "CopyFrom",
                                    "GetArena",
                                    "GetCachedSize",
                                    "GetMetadata",
                                    "InitAsDefaultInstance",
                                    "InternalSwap",
                                    "IsInitialized",
                                    "MergeBuffered",
                                    "MergeFrom",
                                    "MergeLengthDelimited",
                                    "MergePartialFromCodedStream",
                                    "New",
                                    "RequiredFieldsByteSizeFallback",
                                    "SerializeWithCachedSizes",
                                    "SerializeWithCachedSizesToArray",
                                    "SetCachedSize",
                                    "SharedCtor",
                                    "SharedDtor",
                                    "SpaceUsed",
                                    "Swap"}) {
    EXPECT_EQ(Joined(ErrorsOf(kTop + ("message " + message + " { optional float x = 1; }\n"))),
              At(3, message + ": the message's name is that of a function of every class\n"));
  }
}

TEST(RefusalsTest, PackageNames) {
  const struct {
    const char* package;
    const char* reason;
  } cases[] = {{"zarvo.calibration.class", "class: the package's name is taken by a C++ keyword"},
               {"zarvo.calibration.linux", "linux: the package's name is taken by a macro"},
               {"zarvo.calibration.NULL",
                "NULL: package names must be in lower case and begin with a letter"},
               {"zarvo.calibration._x.y",
                "_x: package names must be in lower case and begin with a letter"}};
  for (const auto& c : cases) {
    EXPECT_EQ(Joined(ErrorsOf("syntax = \"proto2\";\npackage " + std::string(c.package) +
                              ";\nmessage A { optional float x = 1; }\n")),
              At(2, c.reason) + "\n");
  }
}

// The name stands in the generated code.
TEST(RefusalsTest, FileName) {
  for (const std::string name : {"a\"b.proto", "a?b.proto", "a\nb.proto"}) {
    ScratchFolder scratch;
    scratch.Write(name, std::string(kTop) + "message A { optional float x = 1; }\n");
    EXPECT_EQ(Joined(Schema(scratch.path(), name).errors()),
              name +
                  ":1: the file's name must be free of quotes, backslashes, question marks and "
                  "line ends\n");
  }
}

// Elsewhere a message could meet what is there already.
TEST(RefusalsTest, PackageElsewhere) {
  EXPECT_EQ(Joined(ErrorsOf("syntax = \"proto2\";\n"
                            "package zarvo.calibration;\n"
                            "message A { optional float x = 1; }\n")),
            "");
  for (const std::string package :
       {"other", "zarvo", "zarvo.calibrations", "x.zarvo.calibration"}) {
    const std::string errors = Joined(ErrorsOf("syntax = \"proto2\";\npackage " + package +
                                               ";\nmessage A { optional float x = 1; }\n"));
    EXPECT_NE(errors, "") << "package " << package << ": accepted";
  }
}

// Where the run-time knows the option: it must not be dropped without a word.
TEST(RefusalsTest, JsonName) {
  EXPECT_NE(Joined(ErrorsOf(std::string(kTop) +
                            "message A { optional float x = 1 [json_name = \"y\"]; }\n")),
            "");
}

// The run-time's importer finds these; its wording is its own, the place must be told.
TEST(RefusalsTest, WhatTheRunTimeRefuses) {
  const struct {
    const char* text;  // behind kTop
    int line;
  } cases[] = {{"message A { optional float x = 1; }\nmessage {\n", 4},
               {"message A {\n  optional float x;\n}\n", 4},
               {"message A {\n  optional Nowhere x = 1;\n}\n", 4},
               {"message A {\n  optional float x = 1;\n  optional float y = 1;\n}\n", 5},
               {"message A {\n  optional float x = 1;\n  optional float x = 2;\n}\n", 5},
               {"message A {\n  optional float x = 0;\n}\n", 4},
               {"message A {\n  optional float x = 19000;\n}\n", 4},
               {"message A {\n  optional int32 x = 1 [default = 1.5];\n}\n", 4},
               {"message A {\n  optional int32 x = 1 [default = 2147483648];\n}\n", 4},
               {"import \"dir/nowhere.proto\";\nmessage A { optional float x = 1; }\n", -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const std::vector<std::string> errors = ErrorsOf(std::string(kTop) + c.text);
    ASSERT_FALSE(errors.empty());
    if (c.line < 0) continue;
    EXPECT_TRUE(StartsWith(errors[0], At(c.line, ""))) << errors[0];
    EXPECT_GT(errors[0].size(), At(c.line, "").size());
  }
}

TEST(RefusalsTest, MissingFile) {
  ScratchFolder scratch;
  const Schema schema(scratch.path(), "dir/nowhere.proto");
  EXPECT_EQ(schema.file(), nullptr);
  ASSERT_FALSE(schema.errors().empty());
  EXPECT_TRUE(StartsWith(schema.errors()[0], "dir/nowhere.proto:0: ")) << schema.errors()[0];
}

TEST(RefusalsTest, TheCommittedSchemaIsServed) {
  const Schema schema(PROTOGEN_SOURCE_DIR, "calibration_common/calibration.proto");
  EXPECT_EQ(Joined(schema.errors()), "");
  EXPECT_NE(schema.file(), nullptr);
}

}  // namespace
}  // namespace testing
}  // namespace protogen
