#include "orvane/text/caseless.h"

#include <gtest/gtest.h>

#include <string>

namespace orvane {
namespace {

TEST(AreCaselessEqual, PassesOverTheCaseOfLetters) {
  EXPECT_TRUE(areCaselessEqual("", ""));
  EXPECT_TRUE(areCaselessEqual("S16 Mono", "s16 mono"));
  EXPECT_TRUE(areCaselessEqual("ÄÖÜ Ωμέγα Ж", "äöü ωΜΈΓΑ ж"));
  EXPECT_TRUE(areCaselessEqual("straße", "STRASSE"));
  EXPECT_TRUE(areCaselessEqual("Ὀδυσσεύς", "ὈΔΥΣΣΕΎΣ"));
}

TEST(AreCaselessEqual, PassesOverTheCompositionOfCharacters) {
  EXPECT_TRUE(areCaselessEqual("caf\u00E9", "CAFE\u0301"));
  EXPECT_TRUE(areCaselessEqual("\u212B", "a\u030A"));        // the sign of Ångström
  EXPECT_TRUE(areCaselessEqual("\u1E69", "S\u0307\u0323"));  // marks in another order
}

TEST(AreCaselessEqual, TellsOtherTextsApart) {
  EXPECT_FALSE(areCaselessEqual("a", ""));
  EXPECT_FALSE(areCaselessEqual("a", "b"));
  EXPECT_FALSE(areCaselessEqual("mono", "mono "));
  EXPECT_FALSE(areCaselessEqual("cafe", "caf\u00E9"));
  EXPECT_FALSE(areCaselessEqual("\uFB01", "\uFF46i")) << "compatible, not equal";
  EXPECT_FALSE(areCaselessEqual(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(AreCaselessEqual, KnowsNoTurkishRules) {
  EXPECT_TRUE(areCaselessEqual("MIX", "mix"));
  EXPECT_FALSE(areCaselessEqual("MIX", "m\u0131x"));
  EXPECT_TRUE(areCaselessEqual("\u0130", "i\u0307"));
}

TEST(AreCaselessEqual, TakesMalformedBytes) {
  EXPECT_TRUE(areCaselessEqual("A\xFF", "a\uFFFD"));
  EXPECT_FALSE(areCaselessEqual("a\xFF", "a"));
}

}  // namespace
}  // namespace orvane
