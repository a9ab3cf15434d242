// Text of any kind among the program's own.
#include "calib/console/printable.h"

#include <gtest/gtest.h>

#include <string>

namespace calib {
namespace {

TEST(PrintableTest, TakesCharactersAsTheyAre) {
  // The first and the last of each length, and those around what is taken out below.
  for (const char* character : {" ", "~", "\u00a0", "\u07ff", "\u0800", "\u0fff", "\u1000",
                                "\ud7ff", "\ue000", "\ufffd", "\u2029", "\u202f", "\u2065",
                                "\u206a", "\U00010000", "\U0003ffff", "\U00040000", "\U0010ffff"}) {
    EXPECT_EQ(Printable(character), character);
    EXPECT_EQ(Printable("a" + std::string(character) + "b"), "a" + std::string(character) + "b");
    EXPECT_EQ(CountCharacters(character), 1u) << character;
  }
}

struct NoCharacter {
  const char* what;
  std::string bytes;
  int marks;  // U+FFFD, in their place
};

TEST(PrintableTest, MarksWhatIsNoCharacter) {
  const NoCharacter cases[] = {
      {"control", std::string("\0", 1), 1},
      {"escape", "\x1b", 1},
      {"line end", "\n", 1},
      {"delete", "\x7f", 1},
      {"control of two", "\xc2\x80", 2},
      {"last of these", "\xc2\x9f", 2},
      {"lone rest", "\x80", 1},
      {"overlong of two", "\xc1\xbf", 2},
      {"overlong of three", "\xe0\x9f\xbf", 3},
      {"overlong of four", "\xf0\x8f\xbf\xbf", 4},
      {"surrogate", "\xed\xa0\x80", 3},
      {"last surrogate", "\xed\xbf\xbf", 3},
      {"U+FFFE", "\xef\xbf\xbe", 3},
      {"embedding of a direction", "\u202a", 3},
      {"override of the direction", "\u202e", 3},
      {"isolate", "\u2066", 3},
      {"end of an isolate", "\u2069", 3},
      {"too large", "\xf4\x90\x80\x80", 4},
      {"too large a lead", "\xf5\x80\x80\x80", 4},
      {"no lead", "\xff", 1},
      {"cut off", "\xe2\x82", 2},
      {"no rest", "\xe2\x82x", 2},
  };
  for (const NoCharacter& no : cases) {
    std::string marks;
    for (int i = 0; i < no.marks; ++i) marks += "\ufffd";
    const std::string rest = no.bytes.back() == 'x' ? "x" : "";
    EXPECT_EQ(Printable(no.bytes), marks + rest) << no.what;
    EXPECT_EQ(Printable("a" + no.bytes + "b"), "a" + marks + rest + "b") << no.what;
  }
}

TEST(PrintableTest, LeavesLinesApart) {
  EXPECT_EQ(PrintableLines(""), "");
  EXPECT_EQ(PrintableLines("\n\n"), "\n\n");
  EXPECT_EQ(PrintableLines("a\x1b\nb\rc\n"), "a\ufffd\nb\ufffdc\n");
  EXPECT_EQ(PrintableLines("a\n\tb"), "a\n\ufffdb");
}

}  // namespace
}  // namespace calib
