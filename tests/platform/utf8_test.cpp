#include "orvane/platform/utf8.h"

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

}  // namespace
}  // namespace orvane
