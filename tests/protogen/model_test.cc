// The generator's model: what it computes of a few messages made by hand.
#include "protogen/model.h"

#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "protogen/schema.h"
#include "tests/protogen/scratch.h"

namespace protogen {
namespace testing {
namespace {

// The model of a schema text, whose messages follow the usual top lines.
class Model {
 public:
  explicit Model(const std::string& messages) {
    ScratchFolder scratch;
    scratch.Write("dir/test.proto",
                  "syntax = \"proto2\";\npackage zarvo.calibration.scratch;\n" + messages);
    const Schema schema(scratch.path(), "dir/test.proto");
    for (const std::string& error : schema.errors()) ADD_FAILURE() << error;
    if (schema.file() != nullptr) {
      file = BuildModel(*schema.file());
      schema.file()->CopyTo(&proto);
    }
  }

  const Message& operator[](const std::string& name) const {
    for (const Message& message : file.messages) {
      if (message.name == name) return message;
    }
    ADD_FAILURE() << "no message " << name;
    static const Message none = {};
    return none;
  }

  File file;
  google::protobuf::FileDescriptorProto proto;
};

std::string Names(const std::vector<const Field*>& fields) {
  std::string names;
  for (const Field* field : fields) names += (names.empty() ? "" : " ") + field->name;
  return names;
}

// "mask: names; ..."
std::string Describe(const std::vector<Group>& groups) {
  std::string text;
  for (const Group& group : groups) {
    char mask[16];
    std::snprintf(mask, sizeof mask, "%x: ", static_cast<unsigned>(group.mask));
    text += (text.empty() ? "" : "; ") + (mask + Names(group.fields));
  }
  return text;
}

const Field& FieldOf(const Message& message, const std::string& name) {
  for (const Field& field : message.fields) {
    if (field.name == name) return field;
  }
  ADD_FAILURE() << message.name << ": no field " << name;
  static const Field none = {};
  return none;
}

// Fields, one letter each in declaration order, and the order of their members. 8 bytes: s(tring),
// d(ouble), l(ong, int64), r(epeated), m(essage); 4 bytes: f(loat), i(nt32); 1 byte: b(ool). The
// position in the declaration follows the letter.
struct Order {
  const char* fields;
  const char* expected;
};

class MemberOrderTest : public ::testing::TestWithParam<Order> {};

TEST_P(MemberOrderTest, LeavesNoGaps) {
  std::string schema = "message B { optional float x = 1; }\nmessage A {\n";
  const std::string fields = GetParam().fields;
  for (size_t i = 0; i < fields.size(); ++i) {
    const char letter = fields[i];
    const char* type = letter == 's'   ? "optional string"
                       : letter == 'd' ? "optional double"
                       : letter == 'l' ? "optional int64"
                       : letter == 'r' ? "repeated float"
                       : letter == 'm' ? "optional B"
                       : letter == 'f' ? "required float"
                       : letter == 'i' ? "optional int32"
                                       : "required bool";
    // Descending numbers: they must not matter.
    schema += std::string("  ") + type + " " + letter + std::to_string(i) + " = " +
              std::to_string(fields.size() - i) + ";\n";
  }
  const Model model(schema + "}\n");
  EXPECT_EQ(Names(model["A"].member_order), GetParam().expected);
}

const Order kOrders[] = {
    {"f", "f0"},
    {"s", "s0"},
    {"b", "b0"},
    {"sdlrm", "s0 d1 l2 r3 m4"},
    {"ff", "f0 f1"},
    {"fi", "f0 i1"},
    {"fd", "d1 f0"},                      // alone: behind the 8-byte members
    {"dfd", "d0 d2 f1"},                  //
    {"dfdf", "d0 f1 f3 d2"},              // a pair: at the place of its first
    {"fdf", "f0 f2 d1"},                  //
    {"fdsfr", "f0 f3 d1 s2 r4"},          //
    {"ffsfs", "f0 f1 s2 s4 f3"},          // the third is alone
    {"fsfsfsf", "f0 f2 s1 s3 f4 f6 s5"},  // two pairs, each at the place of its first
    {"bfd", "d2 f1 b0"},                  // 1 byte: behind everything
    {"bsfbf", "s1 f2 f4 b0 b3"},          //
    {"fbf", "f0 f2 b1"},                  //
    {"bb", "b0 b1"},                      //
    {"iissi", "i0 i1 s2 s3 i4"},
    {"mf", "m0 f1"},
    {"fffmm", "f0 f1 m3 m4 f2"},
};

INSTANTIATE_TEST_SUITE_P(Orders, MemberOrderTest, ::testing::ValuesIn(kOrders),
                         [](const ::testing::TestParamInfo<Order>& info) {
                           return std::string(info.param.fields);
                         });

TEST(ModelTest, OrdersOfFields) {
  const Model model(R"(
message B { optional float x = 1; }
message A {
  repeated float nine = 9;
  optional B four = 4;
  required float one = 1;
  optional string twenty = 20;
  repeated B two = 2;
  required bool three = 3;
}
)");
  const Message& a = model["A"];
  EXPECT_EQ(Names(a.wire_order), "one two three four nine twenty");
  EXPECT_EQ(Names(a.repeated), "nine two");
  EXPECT_EQ(Names(a.sub_messages), "four");
  EXPECT_EQ(Names(a.required), "one three");
  EXPECT_EQ(a.required_mask(), 0x24u);
  EXPECT_TRUE(a.has_texts);
  EXPECT_FALSE(model["B"].has_texts);
  EXPECT_EQ(model["B"].required_mask(), 0u);
  EXPECT_EQ(a.index, 1);
  EXPECT_EQ(model.file.field_count, 7);
}

// Groups are of eight neighbours in the declaration, repeated fields counted.
TEST(ModelTest, Groups) {
  const Model model(R"(
message B { repeated float x = 1; }
message A {
  optional float a = 1;
  required float b = 2;
  repeated float c = 3;
  optional float d = 4;
  optional float e = 5;
  optional float f = 6;
  optional float g = 7;
  optional string h = 8;
  repeated float i8 = 9;
  repeated float j = 10;
  repeated float k = 11;
  repeated float l = 12;
  repeated float m = 13;
  repeated float o = 14;
  repeated float p = 15;
  repeated float q = 16;
  required bool r = 17;
  repeated float s = 18;
  repeated float t = 19;
  repeated float u = 20;
  repeated float v = 21;
  repeated float w = 22;
  repeated float x = 23;
  repeated float y = 24;
  optional B z = 25;
}
)");
  EXPECT_EQ(Describe(model["A"].singular_groups), "fb: a b d e f g h; 10000: r; 1000000: z");
  EXPECT_EQ(Describe(model["A"].optional_groups), "f9: a d e f g h; 1000000: z");
  EXPECT_EQ(Describe(model["B"].singular_groups), "");
  EXPECT_EQ(Describe(model["B"].optional_groups), "");
}

// Runs are of neighbours on the wire, whatever the order of the declaration.
TEST(ModelTest, Runs) {
  const Model model(R"(
message A {
  required double a = 1;
  required double b = 2;
  required double c = 3;
  optional double other_label = 4;
  optional float two5 = 5;
  optional float two6 = 6;
  repeated float between = 7;
  optional float i10 = 10;
  optional float h9 = 9;
  optional float g8 = 8;
  optional float gap = 12;
  optional double other_type = 13;
  optional double n14 = 14;
  optional double o15 = 15;
  optional double two_byte_tag = 16;
}
message B {
  optional float a = 16;
  optional float b = 17;
  optional float c = 18;
}
message C {
  optional int32 a = 1;
  optional int32 b = 2;
  optional int32 c = 3;
  optional float d = 5;
  optional float e = 7;
  optional float f = 9;
  repeated float g = 11;
  repeated float h = 12;
  repeated float k = 13;
}
)");
  EXPECT_EQ(Describe(model["A"].runs), "7: a b c; 380: g8 h9 i10; 3800: other_type n14 o15");
  EXPECT_EQ(Describe(model["B"].runs), "");
  EXPECT_EQ(Describe(model["C"].runs), "");
}

TEST(ModelTest, LastHasBit) {
  std::string schema = "message A {\n";
  for (int i = 0; i < 32; ++i) {
    schema += "  optional float f" + std::to_string(i) + " = " + std::to_string(i + 1) + ";\n";
  }
  const Model model(schema + "}\n");
  EXPECT_EQ(model["A"].fields[31].bit(), 0x80000000u);
  ASSERT_EQ(model["A"].singular_groups.size(), 4u);
  EXPECT_EQ(model["A"].singular_groups[3].mask, 0xFF000000u);
}

TEST(ModelTest, TagsEnd) {
  const struct {
    const char* field;
    uint32_t end;
  } cases[] = {{"optional float x = 1;", 24},
               {"optional string x = 15;", 128},
               {"repeated double x = 15;", 128},
               {"optional bool x = 16;", 136},
               {"optional float x = 2047;", 16384}};
  for (const auto& c : cases) {
    const Model last(std::string("message A { optional float y = 2; ") + c.field + " }");
    EXPECT_EQ(last["A"].tags_end, c.end) << c.field;
    const Model first(std::string("message A { ") + c.field + " optional float y = 2; }");
    EXPECT_EQ(first["A"].tags_end, c.end) << c.field << " declared first";
  }
}

TEST(ModelTest, ReachesRequired) {
  const Model model(R"(
message Plain { optional float x = 1; }
message Needs { required float x = 1; }
message One { optional Plain a = 1; optional Needs b = 2; optional float c = 3; }
message Many { repeated Plain a = 1; repeated Needs b = 2; repeated float c = 3; }
message Far { optional Many a = 1; optional Plain b = 2; repeated One c = 3; }
message None { optional Plain a = 1; repeated Plain b = 2; }
)");
  const struct {
    const char *message, *through;
    bool reaches;
  } cases[] = {{"Plain", "", false}, {"Needs", "", true},  {"One", "b", true},
               {"Many", "b", true},  {"Far", "a c", true}, {"None", "", false}};
  for (const auto& c : cases) {
    EXPECT_EQ(model[c.message].reaches_required, c.reaches) << c.message;
    EXPECT_EQ(Names(model[c.message].reaching_required), c.through) << c.message;
  }
}

TEST(ModelTest, KindsAndSizes) {
  const Model model(R"(
message B { optional float x = 1; }
message A {
  optional double a = 1;
  optional float b = 2;
  optional int32 c = 3;
  optional int64 d = 4;
  optional bool e = 15;
  optional string f = 16;
  optional bytes g = 17;
  optional B h = 2047;
  repeated double p = 100;
  repeated float j = 101;
  repeated B k = 102;
  required bool l = 103;
}
)");
  const struct {
    const char* name;
    Kind kind;
    uint32_t tag;
    int tag_size, fixed_size, member_size;
    bool scalar, text, sub_message, repeated, required;
  } rows[] = {
      {"a", Kind::kDouble, 1 << 3 | 1, 1, 8, 8, true, false, false, false, false},
      {"b", Kind::kFloat, 2 << 3 | 5, 1, 4, 4, true, false, false, false, false},
      {"c", Kind::kInt32, 3 << 3 | 0, 1, 0, 4, true, false, false, false, false},
      {"d", Kind::kInt64, 4 << 3 | 0, 1, 0, 8, true, false, false, false, false},
      {"e", Kind::kBool, 15 << 3 | 0, 1, 1, 1, true, false, false, false, false},
      {"f", Kind::kString, 16 << 3 | 2, 2, 0, 8, false, true, false, false, false},
      {"g", Kind::kBytes, 17 << 3 | 2, 2, 0, 8, false, true, false, false, false},
      {"h", Kind::kMessage, 2047 << 3 | 2, 2, 0, 8, false, false, true, false, false},
      {"p", Kind::kDouble, 100 << 3 | 1, 2, 8, 8, false, false, false, true, false},
      {"j", Kind::kFloat, 101 << 3 | 5, 2, 4, 8, false, false, false, true, false},
      {"k", Kind::kMessage, 102 << 3 | 2, 2, 0, 8, false, false, false, true, false},
      {"l", Kind::kBool, 103 << 3 | 0, 2, 1, 1, true, false, false, false, true},
  };
  ASSERT_EQ(model["A"].fields.size(), sizeof rows / sizeof rows[0]);
  int index = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Field& field = FieldOf(model["A"], row.name);
    EXPECT_EQ(field.index, index);
    EXPECT_EQ(field.bit(), 1u << index);
    ++index;
    EXPECT_EQ(field.kind, row.kind);
    EXPECT_EQ(field.tag(), row.tag);
    EXPECT_EQ(field.packed_tag(), (row.tag & ~7u) | 2);
    EXPECT_EQ(field.tag_size(), row.tag_size);
    EXPECT_EQ(field.fixed_size(), row.fixed_size);
    EXPECT_EQ(field.member_size(), row.member_size);
    EXPECT_EQ(field.is_scalar(), row.scalar);
    EXPECT_EQ(field.is_text(), row.text);
    EXPECT_EQ(field.is_sub_message(), row.sub_message);
    EXPECT_EQ(field.repeated, row.repeated);
    EXPECT_EQ(field.required, row.required);
    EXPECT_EQ(field.message_type, row.kind == Kind::kMessage ? "B" : "");
  }
}

TEST(ModelTest, Defaults) {
  const Model model(R"(
message A {
  optional double a = 1;
  optional double b = 2 [default = 0];
  optional double c = 3 [default = -0.0];
  optional double d = 4 [default = 0.1];
  optional float e = 5;
  optional float f = 6 [default = -0.0];
  optional float g = 7 [default = 0.4064];
  optional int32 h = 8;
  optional int32 q = 9 [default = -2147483648];
  optional int64 j = 10;
  optional int64 k = 11 [default = -9223372036854775808];
  optional int64 l = 12 [default = 5000000000];
  optional bool m = 13;
  optional bool o = 14 [default = false];
  optional bool p = 15 [default = true];
}
)");
  const struct {
    const char *name, *literal;
    bool zero;
    const char* declaration;
  } rows[] = {
      {"a", "0", true, "optional double a = 1;"},
      {"b", "0", true, "optional double b = 2 [default = 0];"},
      {"c", "-0.0", false, "optional double c = 3 [default = -0];"},
      {"d", "0.1", false, "optional double d = 4 [default = 0.1];"},
      {"e", "0", true, "optional float e = 5;"},
      {"f", "-0.0f", false, "optional float f = 6 [default = -0];"},
      {"g", "0.4064f", false, "optional float g = 7 [default = 0.4064];"},
      {"h", "0", true, "optional int32 h = 8;"},
      {"q", "(-2147483647 - 1)", false, "optional int32 q = 9 [default = -2147483648];"},
      {"j", "0", true, "optional int64 j = 10;"},
      {"k", "(-9223372036854775807LL - 1)", false,
       "optional int64 k = 11 [default = -9223372036854775808];"},
      {"l", "5000000000LL", false, "optional int64 l = 12 [default = 5000000000];"},
      {"m", "false", true, "optional bool m = 13;"},
      {"o", "false", true, "optional bool o = 14 [default = false];"},
      {"p", "true", false, "optional bool p = 15 [default = true];"},
  };
  for (const auto& row : rows) {
    const Field& field = FieldOf(model["A"], row.name);
    EXPECT_EQ(field.default_value, row.literal) << row.name;
    EXPECT_EQ(field.zero_default, row.zero) << row.name;
    EXPECT_EQ(field.declaration, row.declaration);
  }
}

// The comment above a declaration, without what the comment marks add; not the one behind it.
TEST(ModelTest, Comments) {
  const Model model(R"(
// What A is.
//
//  - indented
message A {
  // What x is.
  optional float x = 1;  // not this
  optional float y = 2;

  // Far away.

  // What z is: $x$, "quoted", 100 %.
  optional float z = 3;
}
)");
  const Message& a = model["A"];
  EXPECT_EQ(a.comment, (std::vector<std::string>{"What A is.", "", " - indented"}));
  EXPECT_EQ(FieldOf(a, "x").comment, (std::vector<std::string>{"What x is."}));
  EXPECT_EQ(FieldOf(a, "y").comment, (std::vector<std::string>{}));
  EXPECT_EQ(FieldOf(a, "z").comment,
            (std::vector<std::string>{"What z is: $x$, \"quoted\", 100 %."}));
}

TEST(ModelTest, File) {
  const Model model("message A { optional float x = 1; }");
  EXPECT_EQ(model.file.name, "dir/test.proto");
  EXPECT_EQ(model.file.base, "dir/test");
  EXPECT_EQ(model.file.identifier, "dir_2ftest_2eproto");
  EXPECT_EQ(model.file.namespaces, (std::vector<std::string>{"zarvo", "calibration", "scratch"}));
  // The registered bytes are the file and nothing else: no source positions, no JSON names.
  google::protobuf::FileDescriptorProto parsed;
  ASSERT_TRUE(parsed.ParseFromString(model.file.serialized));
  EXPECT_EQ(parsed.DebugString(), model.proto.DebugString());
  EXPECT_FALSE(parsed.has_source_code_info());
  EXPECT_EQ(parsed.name(), "dir/test.proto");
}

}  // namespace
}  // namespace testing
}  // namespace protogen
