// The generator's text helpers, above all that a literal stands for exactly the value it is made
// of.
#include "protogen/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/random_record.h"

namespace protogen {
namespace {

namespace support = ::zarvo::calibration::testing;

size_t LongestLine(const std::string& text) {
  size_t longest = 0;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    longest = std::max(longest, end - start);
    start = end + 1;
  }
  return longest;
}

TEST(TextTest, FillReplacesEveryVariable) {
  const Variables variables = {{"a", "1"}, {"long_name", "two"}, {"empty", ""}, {"dollar", "$a$"}};
  EXPECT_EQ(Fill("", variables), "");
  EXPECT_EQ(Fill("plain", variables), "plain");
  EXPECT_EQ(Fill("$a$", variables), "1");
  EXPECT_EQ(Fill("<$a$$long_name$|$empty$|$a$>", variables), "<1two||1>");
  EXPECT_EQ(Fill("x\n$a$\n", variables), "x\n1\n");
  EXPECT_EQ(Fill("$dollar$", variables), "$a$") << "what is filled in is not filled again";
}

TEST(TextTest, FillDropsTheFirstNewlineOnly) {
  EXPECT_EQ(Fill("\ntext\n", {}), "text\n");
  EXPECT_EQ(Fill("\n\ntext", {}), "\ntext");
  EXPECT_EQ(Fill("\n", {}), "");
}

TEST(TextDeathTest, FillNeedsAValue) {
  const Variables variables = {{"a", "1"}};
  EXPECT_DEATH(Fill("$a$ $b$", variables), "a template uses \\$b\\$, which has no value");
  EXPECT_DEATH(Fill("$a$ and $a", variables), "a template uses \\$a\\$, which has no value");
}

TEST(TextTest, IndentLeavesEmptyLinesEmpty) {
  EXPECT_EQ(Indent("", 2), "");
  EXPECT_EQ(Indent("a", 2), "  a");
  EXPECT_EQ(Indent("a\nb\n", 4), "    a\n    b\n");
  EXPECT_EQ(Indent("a\n\n  b\n", 2), "  a\n\n    b\n");
  EXPECT_EQ(Indent("a\n", 0), "a\n");
}

TEST(TextTest, FitLinesLeavesWhatFits) {
  const std::string wide = "  " + std::string(kMaxColumns - 2, 'x') + "\n";
  for (const std::string& code :
       {std::string(), std::string("\n"), std::string("int x;\n\n"), wide}) {
    EXPECT_EQ(FitLines(code), code);
  }
  EXPECT_EQ(FitLines("int x;"), "int x;\n");
}

// What means something else, or nothing, when it is broken.
TEST(TextTest, FitLinesLeavesWhatCannotBeBroken) {
  const std::string name(kMaxColumns, 'x');
  for (const std::string& line :
       {"  // a comment, (of) " + name, "    \"a literal, (of) " + name + "\"",
        "#include \"dir/" + name + ".h\"", "#ifndef GUARD_" + name, "#define GUARD_" + name,
        "#endif  // GUARD_" + name, name}) {
    EXPECT_EQ(FitLines(line + "\n"), line + "\n");
  }
}

TEST(TextTest, FitLinesBreaks) {
  const std::string name(60, 'x');
  const struct {
    std::string code, expected;
  } cases[] = {
      // A body that stands behind its head.
      {"  inline bool " + name + "() const { return (_has_bits_[0] & 0x1u) != 0; }",
       "  inline bool " + name + "() const {\n    return (_has_bits_[0] & 0x1u) != 0;\n  }\n"},
      // A statement that stands behind its condition gets braces.
      {"if (has_" + name + "()) target = Write(17, " + name + "(), target);",
       "if (has_" + name + "()) {\n  target = Write(17, " + name + "(), target);\n}\n"},
      {"for (int i = 0; i < " + name + "_size(); ++i) total_size += Size(" + name + "(i));",
       "for (int i = 0; i < " + name + "_size(); ++i) {\n  total_size += Size(" + name +
           "(i));\n}\n"},
      // What follows an empty list of arguments.
      {"inline const Container<" + name.substr(20) + ">& Message::name_of_20_characters() const {",
       "inline const Container<" + name.substr(20) +
           ">& Message::name_of_20_characters()\n    const {\n"},
      // An assignment, a list of arguments.
      {"const Type " + name + " = Function(" + name + ");",
       "const Type " + name + " =\n    Function(" + name + ");\n"},
      {"  void Function(const Type& " + name + ", const Type& other_" + name + ");",
       "  void Function(const Type& " + name + ",\n      const Type& other_" + name + ");\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FitLines(c.code + "\n"), c.expected);
    EXPECT_LE(LongestLine(FitLines(c.code + "\n")), kMaxColumns);
    EXPECT_EQ(FitLines(c.expected), c.expected);
  }
}

TEST(TextTest, CommentLines) {
  EXPECT_EQ(Comment({}), "");
  EXPECT_EQ(Comment({"one", "", " indented"}), "// one\n//\n//  indented\n");
}

// A backslash at the end of a line would draw the next line into the comment, and in C++11 so would
// the trigraph that stands for one.
TEST(TextTest, CommentsEndWithTheirLine) {
  for (const std::string last : {"\\", "C:\\", "a \\ ", "a \\ \t\r", "\?\?/", "what\?\?/"}) {
    const std::string comment = Comment({last});
    std::string text = comment.substr(0, comment.size() - 1);
    while (std::isspace(static_cast<unsigned char>(text.back())) != 0)
      text.pop_back();  // overlooked
    EXPECT_NE(text.back(), '\\') << comment;
    EXPECT_TRUE(text.size() < 3 || text.compare(text.size() - 3, 3, "\?\?/") != 0) << comment;
  }
}

TEST(TextTest, SectionTitlesAndNamespaces) {
  EXPECT_EQ(SectionTitle("Title"), "// Title " + std::string(90, '-') + "\n");
  EXPECT_EQ(SectionTitle(std::string(100, 'x')), "// " + std::string(100, 'x') + " \n");
  EXPECT_EQ(OpenNamespaces({"a", "b"}), "namespace a {\nnamespace b {\n");
  EXPECT_EQ(CloseNamespaces({"a", "b"}), "}  // namespace b\n}  // namespace a\n");
}

TEST(TextTest, FunctionsDeclaredIn) {
  EXPECT_EQ(FunctionsDeclaredIn("// Calls f() and\n"
                                "  int Get(int index) const;  // of g(x)\n"
                                "  ~$class$() override;\n"
                                "  void set() { ::other::Set(value); }\n"
                                "  MACRO bool operator==(const X& x);\n"
                                "  int member_;\n"),
            (std::vector<std::string>{"Get", "set"}));
}

TEST(TextTest, ReplaceDoesNotLookAtWhatItPutIn) {
  EXPECT_EQ(Replace("aXbX", "X", "YY"), "aYYbYY");
  EXPECT_EQ(Replace("aXb", "X", "XX"), "aXXb");
  EXPECT_EQ(Replace("ab", "X", "Y"), "ab");
  EXPECT_EQ(Replace("XX", "X", ""), "");
}

TEST(TextTest, CamelCase) {
  const struct {
    const char *name, *expected;
  } cases[] = {{"x", "X"},        {"error_per_point", "ErrorPerPoint"},
               {"x_bin", "XBin"}, {"p1", "P1"},
               {"p_1", "P1"},     {"_x", "X"},
               {"x_", "X"},       {"a__b", "AB"},
               {"k3_d4", "K3D4"}};
  for (const auto& c : cases) EXPECT_EQ(CamelCase(c.name), c.expected) << c.name;
}

TEST(TextTest, FileIdentifierIsAnIdentifier) {
  EXPECT_EQ(FileIdentifier("calibration_common/calibration.proto"),
            "calibration_5fcommon_2fcalibration_2eproto");
  EXPECT_EQ(FileIdentifier("a-b.proto"), "a_2db_2eproto");
  EXPECT_EQ(FileIdentifier("\xC3\xA4"), "_c3_a4");
  EXPECT_NE(FileIdentifier("a_b.proto"), FileIdentifier("a/b.proto"));
}

TEST(TextTest, Hex) {
  EXPECT_EQ(Hex(0), "0x0u");
  EXPECT_EQ(Hex(0x9F), "0x9Fu");
  EXPECT_EQ(Hex(0x80000000u), "0x80000000u");
  EXPECT_EQ(Hex(0xFFFFFFFFu), "0xFFFFFFFFu");
}

TEST(TextTest, LiteralsAreShort) {
  EXPECT_EQ(FloatLiteral(0.4064f), "0.4064f");
  EXPECT_EQ(FloatLiteral(1), "1.0f");
  EXPECT_EQ(FloatLiteral(-2.5f), "-2.5f");
  EXPECT_EQ(FloatLiteral(-0.0f), "-0.0f");
  EXPECT_EQ(FloatLiteral(16777216), "16777216.0f");
  EXPECT_EQ(FloatLiteral(1e30f), "1e+30f");
  EXPECT_EQ(DoubleLiteral(0.1), "0.1");
  EXPECT_EQ(DoubleLiteral(-0.0), "-0.0");
  EXPECT_EQ(DoubleLiteral(1e100), "1e+100");
}

bool IsNotFinite(double value) { return value - value != 0; }

// Checks the literal of one value: a C++ floating-point literal that reads back bit for bit.
void CheckFloat(float value) {
  if (IsNotFinite(value)) return;
  const std::string literal = FloatLiteral(value);
  SCOPED_TRACE(literal);
  ASSERT_EQ(literal.back(), 'f');
  EXPECT_NE(literal.find_first_of(".e"), std::string::npos);
  char* end;
  const float back = std::strtof(literal.c_str(), &end);
  EXPECT_STREQ(end, "f");
  EXPECT_EQ(back, value);
  EXPECT_EQ(std::signbit(back), std::signbit(value));
}

void CheckDouble(double value) {
  if (IsNotFinite(value)) return;
  const std::string literal = DoubleLiteral(value);
  SCOPED_TRACE(literal);
  EXPECT_NE(literal.find_first_of(".e"), std::string::npos);
  char* end;
  const double back = std::strtod(literal.c_str(), &end);
  EXPECT_STREQ(end, "");
  EXPECT_EQ(back, value);
  EXPECT_EQ(std::signbit(back), std::signbit(value));
}

TEST(TextTest, FloatingPointLiteralsAreExact) {
  for (const uint32_t bits : support::BoundaryFloatBits()) CheckFloat(support::FloatOf(bits));
  for (const uint64_t bits : support::BoundaryDoubleBits()) CheckDouble(support::DoubleOf(bits));
  std::mt19937 random(20);
  for (int i = 0; i < 2000; ++i) {
    const uint64_t high = random();
    CheckFloat(support::FloatOf(static_cast<uint32_t>(random())));
    CheckDouble(support::DoubleOf(high << 32 | random()));
  }
}

// The smallest integers have no literal of their own: -2147483648 is minus a number that is too
// big.
TEST(TextTest, IntegerLiterals) {
  EXPECT_EQ(Int32Literal(0), "0");
  EXPECT_EQ(Int32Literal(-1), "-1");
  EXPECT_EQ(Int32Literal(std::numeric_limits<int32_t>::max()), "2147483647");
  EXPECT_EQ(Int32Literal(std::numeric_limits<int32_t>::min() + 1), "-2147483647");
  EXPECT_EQ(Int32Literal(std::numeric_limits<int32_t>::min()), "(-2147483647 - 1)");
  EXPECT_EQ(Int64Literal(0), "0");
  EXPECT_EQ(Int64Literal(-2147483648LL), "-2147483648");
  EXPECT_EQ(Int64Literal(2147483647LL), "2147483647");
  EXPECT_EQ(Int64Literal(2147483648LL), "2147483648LL");
  EXPECT_EQ(Int64Literal(-2147483649LL), "-2147483649LL");
  EXPECT_EQ(Int64Literal(std::numeric_limits<int64_t>::max()), "9223372036854775807LL");
  EXPECT_EQ(Int64Literal(std::numeric_limits<int64_t>::min()), "(-9223372036854775807LL - 1)");
}

// Reads string literals as a compiler does, as far as the escapes go that ByteLiterals() may use.
std::string ReadLiterals(const std::string& literals) {
  std::string bytes;
  bool inside = false;
  for (size_t i = 0; i < literals.size(); ++i) {
    const char c = literals[i];
    if (c == '"') {
      inside = !inside;
    } else if (!inside) {
      EXPECT_EQ(c, '\n') << "at " << i;
    } else if (c != '\\') {
      EXPECT_TRUE(c >= ' ' && c <= '~' && c != '?') << "at " << i;
      bytes += c;
    } else if (literals[i + 1] >= '0' && literals[i + 1] <= '7') {
      bytes += static_cast<char>(std::stoi(literals.substr(i + 1, 3), nullptr, 8));
      i += 3;
    } else {
      EXPECT_TRUE(literals[i + 1] == '"' || literals[i + 1] == '\\') << "at " << i;
      bytes += literals[++i];
    }
  }
  EXPECT_FALSE(inside) << "the last literal does not end";
  return bytes;
}

TEST(TextTest, ByteLiteralsStandForTheirBytes) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  bytes += "9 digits behind \001";
  bytes += "1 an octal escape, \"quotes\", back\\slash, \?\?/";
  for (const size_t columns : {6, 7, 8, 60, 100, 10000}) {
    const std::string literals = ByteLiterals(bytes, columns);
    EXPECT_EQ(ReadLiterals(literals), bytes) << "in " << columns << " columns";
    EXPECT_LE(LongestLine(literals), columns);
  }
  EXPECT_EQ(ByteLiterals("abcde", 4), "\"ab\"\n\"cd\"\n\"e\"");
  EXPECT_EQ(ByteLiterals("abcd", 4), "\"ab\"\n\"cd\"");
  EXPECT_EQ(ByteLiterals(std::string("\n\0", 2), 60), "\"\\012\\000\"");
  EXPECT_EQ(ByteLiterals("", 60), "\"\"");
}

}  // namespace
}  // namespace protogen
