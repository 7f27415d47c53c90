#include "orvane/text/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvane {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();

TEST(NumberText, ShortestTakesTheFewestCharacters) {
  EXPECT_EQ(NumberText::shortest(44100), "44100");
  EXPECT_EQ(NumberText::shortest(0.1), "0.1");
  EXPECT_EQ(NumberText::shortest(100000), "1e+05");
}

TEST(NumberText, PlainHasAnExponentOutsideFourAndFifteenDigitsOnly) {
  EXPECT_EQ(NumberText::plain(100000.0), "100000");
  EXPECT_EQ(NumberText::plain(999999999999999.0), "999999999999999");
  EXPECT_EQ(NumberText::plain(1e15), "1e+15");
  EXPECT_EQ(NumberText::plain(0.0001), "0.0001");
  EXPECT_EQ(NumberText::plain(0.00009), "9e-05");
  EXPECT_EQ(NumberText::plain(-0.0), "-0");
}

TEST(NumberText, PlainHasTheDigitsOfTheNumbersOwnWidth) {
  EXPECT_EQ(NumberText::plain(0.1F), "0.1");
  EXPECT_EQ(NumberText::plain(-23.000002F), "-23.000002");
}

TEST(NumberText, WithoutExponentWritesEveryDigitOut) {
  EXPECT_EQ(NumberText::withoutExponent(1e20), "100000000000000000000");
  EXPECT_EQ(NumberText::withoutExponent(1e-7), "0.0000001");
  EXPECT_EQ(NumberText::withoutExponent(kLargest).size(), 309U);
}

TEST(NumberText, FixedRoundsToTheDecimals) {
  EXPECT_EQ(NumberText::fixed(-23.06, 1), "-23.1");
  EXPECT_EQ(NumberText::fixed(-0.04, 1), "-0.0");
  EXPECT_EQ(NumberText::fixed(-kLargest, 3).size(), 314U);
}

TEST(NumberText, PaddedHasZerosInFront) {
  EXPECT_EQ(NumberText::padded(7, 2), "07");
  EXPECT_EQ(NumberText::padded(123, 2), "123");
  EXPECT_EQ(NumberText::padded(0, 4), "0000");
}

TEST(NumberText, ParsedTakesTheWholeText) {
  EXPECT_EQ(NumberText::parsed<double>("1.5"), 1.5);
  EXPECT_EQ(NumberText::parsed<int>("-7"), -7);
  for (const char* text : {"", " 1", "1 ", "+1", "1x", "1.5"})
    EXPECT_EQ(NumberText::parsed<int>(text), std::nullopt) << text;
}

TEST(NumberText, NamesWhatIsNotFinite) {
  for (const auto text : {NumberText::shortest, NumberText::withoutExponent}) {
    EXPECT_EQ(text(kInfinity), "inf");
    EXPECT_EQ(text(-kInfinity), "-inf");
    EXPECT_EQ(text(-std::nan("")), "nan");
  }
  EXPECT_EQ(NumberText::fixed(-kInfinity, 2), "-inf");
  EXPECT_EQ(NumberText::plain(-static_cast<float>(kInfinity)), "-inf");
}

}  // namespace
}  // namespace orvane
