#include "cli/terminal/terminal_text.h"

#include <gtest/gtest.h>

namespace orvane::cli {
namespace {

TEST(TerminalText, LeavesHarmlessTextAsItIs) {
  for (const char* text : {"", "song.wav", "Ünïcode – 音楽 🎵.flac", "back\\slash 'quote'"})
    EXPECT_EQ(TerminalText::escaped(text), text);
}

TEST(TerminalText, KeepsTheLinesOfATable) {
  EXPECT_EQ(TerminalText::escapedLines("a\tb\x1B\r\nc\rd\u202E\n"), "a\tb\\x1B\nc\\rd\\u202E\n");
}

TEST(TerminalText, EscapesControlCharacters) {
  EXPECT_EQ(TerminalText::escaped("a\nb\rc\td"), "a\\nb\\rc\\td");
  EXPECT_EQ(TerminalText::escaped("\x1B[31mred\x07"), "\\x1B[31mred\\x07");
  EXPECT_EQ(TerminalText::escaped(std::string_view("nul\0del\x7F", 8)), "nul\\x00del\\x7F");
  EXPECT_EQ(TerminalText::escaped("c1 \xC2\x9B"), "c1 \\x9B");
}

TEST(TerminalText, EscapesDirectionMarksAndInvisibleCharacters) {
  EXPECT_EQ(TerminalText::escaped("evil\u202Efdp.wav"), "evil\\u202Efdp.wav");
  EXPECT_EQ(TerminalText::escaped("\u2066x\u2069"), "\\u2066x\\u2069");
  EXPECT_EQ(TerminalText::escaped("a\u200Bb\uFEFF"), "a\\u200Bb\\uFEFF");
  EXPECT_EQ(TerminalText::escaped("line\u2028end"), "line\\u2028end");
  EXPECT_EQ(TerminalText::escaped("\U000E0041"), "\\U000E0041");
}

// Persian and Indic scripts spell with them.
TEST(TerminalText, KeepsJoiners) {
  for (const char* text : {"می\u200Cخواهم", "क्\u200Dष"})
    EXPECT_EQ(TerminalText::escaped(text), text);
}

TEST(TerminalText, EscapesBytesThatAreNoUTF8) {
  EXPECT_EQ(TerminalText::escaped("caf\xE9.wav"), "caf\\xE9.wav");
  EXPECT_EQ(TerminalText::escaped("\xFF\xFE"), "\\xFF\\xFE");
  EXPECT_EQ(TerminalText::escaped("\xC0\x8A"), "\\xC0\\x8A");           // not the shortest form
  EXPECT_EQ(TerminalText::escaped("\xED\xA0\x80"), "\\xED\\xA0\\x80");  // half of a surrogate pair
  EXPECT_EQ(TerminalText::escaped("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");  // beyond U+10FFFF
  EXPECT_EQ(TerminalText::escaped("cut \xE9\x9F"), "cut \\xE9\\x9F");
}

TEST(TerminalText, CountsTheColumnsOfATerminal) {
  EXPECT_EQ(TerminalText::width(""), 0U);
  EXPECT_EQ(TerminalText::width("song"), 4U);
  EXPECT_EQ(TerminalText::width("Ünï"), 3U);
  EXPECT_EQ(TerminalText::width("音楽"), 4U);
  EXPECT_EQ(TerminalText::width("e\u0301"), 1U);
  EXPECT_EQ(TerminalText::width("🎵"), 2U);
  EXPECT_EQ(TerminalText::width("a\u200Db"), 2U);
}

TEST(TerminalText, ShortensInTheMiddleAndKeepsBothEnds) {
  EXPECT_EQ(TerminalText::shortened("song.wav", 8), "song.wav");
  EXPECT_EQ(TerminalText::shortened("a long name.wav", 9), "a lo….wav");
  EXPECT_EQ(TerminalText::shortened("音楽音楽", 5), "音…楽");
  EXPECT_EQ(TerminalText::shortened("name", 1), "…");
  EXPECT_EQ(TerminalText::shortened("name", 0), "");
  for (std::size_t columns = 0; columns < 12; ++columns)
    EXPECT_LE(TerminalText::width(TerminalText::shortened("音a楽b音c楽", columns)), columns);
}

TEST(TerminalText, BreaksTextAtSpaces) {
  EXPECT_EQ(TerminalText::wrapped("one two three", 7), "one two\nthree");
  EXPECT_EQ(TerminalText::wrapped("one two", 7), "one two");
  EXPECT_EQ(TerminalText::wrapped("indivisible", 4), "indivisible");
  EXPECT_EQ(TerminalText::wrapped("a  b\nc", 80), "a b\nc");
  EXPECT_EQ(TerminalText::wrapped("", 10), "");
}

}  // namespace
}  // namespace orvane::cli
