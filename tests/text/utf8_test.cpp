#include "orvane/text/utf8.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(IsValidUTF8, TakesEveryLengthAtItsLimits) {
  EXPECT_TRUE(isValidUTF8(""));
  EXPECT_TRUE(isValidUTF8(std::string_view("\0\x7F", 2)));
  EXPECT_TRUE(isValidUTF8("\xC2\x80 \xDF\xBF"));
  EXPECT_TRUE(isValidUTF8("\xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xEF\xBF\xBF"));
  EXPECT_TRUE(isValidUTF8("\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"));
}

TEST(IsValidUTF8, RefusesOverlongFormsSurrogatesAndWhatLiesBeyondUnicode) {
  for (const char* text : {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
                           "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"})
    EXPECT_FALSE(isValidUTF8(text)) << testing::PrintToString(text);
}

TEST(IsValidUTF8, RefusesStrayAndMissingContinuations) {
  for (const char* text : {"\x80", "\xFF", "a\xBF", "\xC3", "\xC3 ", "\xE2\x82", "\xE2\x82 ",
                           "\xF0\x9F\x98", "\xF0\x9F\x98 "})
    EXPECT_FALSE(isValidUTF8(text)) << testing::PrintToString(text);
}

TEST(FirstUTF8Character, GivesCodePointAndLength) {
  EXPECT_EQ(firstUTF8Character("az"), (UTF8Character{U'a', 1}));
  EXPECT_EQ(firstUTF8Character("\u00E9z"), (UTF8Character{0xE9, 2}));
  EXPECT_EQ(firstUTF8Character("\u20ACz"), (UTF8Character{0x20AC, 3}));
  EXPECT_EQ(firstUTF8Character("\U0001F600z"), (UTF8Character{0x1F600, 4}));
}

TEST(FirstUTF8Character, TakesAMalformedByteAlone) {
  EXPECT_EQ(firstUTF8Character("\xE2\x82z"), (UTF8Character{0xFFFD, 1, false}));
  EXPECT_EQ(firstUTF8Character("\uFFFD"), (UTF8Character{0xFFFD, 3}));
}

TEST(AppendUTF8, WritesWhatIsReadAsTheSameCharacter) {
  for (const char32_t character :
       {0x0U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
    std::string text = "x";
    appendUTF8(text, character);
    const UTF8Character back = firstUTF8Character(text.substr(1));
    EXPECT_EQ(back.codePoint, character);
    EXPECT_EQ(back.length, text.size() - 1);
    EXPECT_TRUE(back.isWellFormed);
  }
}

TEST(WellFormedUTF8, ReplacesEachMalformedByte) {
  EXPECT_EQ(wellFormedUTF8("a\xFF\u00E9\xE2\x82"), "a\uFFFD\u00E9\uFFFD\uFFFD");
  EXPECT_EQ(wellFormedUTF8("plain"), "plain");
  EXPECT_EQ(wellFormedUTF8(""), "");
}

TEST(IsDeceptive, FindsControlsDirectionMarksAndInvisibleCharacters) {
  for (const char32_t character :
       {0x0U, 0x1BU, 0x7FU, 0x9FU, 0xADU, 0x200BU, 0x200FU, 0x202EU, 0x2066U, 0xFEFFU, 0xE0041U})
    EXPECT_TRUE(isDeceptive(character)) << static_cast<unsigned>(character);
}

TEST(IsDeceptive, LeavesTextAloneAndTheJoinersThatScriptsNeed) {
  for (const char32_t character :
       {0x20U, 0x41U, 0xA0U, 0xE9U, 0x5D0U, 0x200CU, 0x200DU, 0x4E2DU, 0x1F600U})
    EXPECT_FALSE(isDeceptive(character)) << static_cast<unsigned>(character);
}

}  // namespace
}  // namespace orvane
