#include "cli/output/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvane::cli {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(NumberText, RoundsToTheDecimalsAndHasNoNegativeZero) {
  EXPECT_EQ(NumberText::fixed(-23.04, 1), "-23.0");
  EXPECT_EQ(NumberText::fixed(-23.06, 1), "-23.1");
  EXPECT_EQ(NumberText::fixed(-0.04, 1), "0.0");
  EXPECT_EQ(NumberText::fixed(0, 2), "0.00");
  EXPECT_EQ(NumberText::fixed(7, 0), "7");
}

TEST(NumberText, NamesWhatIsNotFinite) {
  EXPECT_EQ(NumberText::fixed(-kInfinity, 1), "-inf");
  EXPECT_EQ(NumberText::fixed(kInfinity, 1), "inf");
  EXPECT_EQ(NumberText::fixed(std::nan(""), 1), "nan");
  EXPECT_EQ(NumberText::fixed(-std::nan(""), 1), "nan");
}

TEST(NumberText, SurvivesTheLargestNumbers) {
  EXPECT_EQ(NumberText::fixed(std::numeric_limits<double>::max(), 3).size(), 313U);
  EXPECT_EQ(NumberText::fixed(-std::numeric_limits<double>::max(), 3).size(), 314U);
}

TEST(NumberText, SignsPositiveNumbersOnRequest) {
  EXPECT_EQ(NumberText::signedFixed(0.5, 2), "+0.50");
  EXPECT_EQ(NumberText::signedFixed(-0.5, 2), "-0.50");
  EXPECT_EQ(NumberText::signedFixed(0.001, 2), "0.00");
  EXPECT_EQ(NumberText::signedFixed(kInfinity, 2), "+inf");
  EXPECT_EQ(NumberText::signedFixed(std::nan(""), 2), "nan");
}

TEST(NumberText, WritesDurations) {
  EXPECT_EQ(NumberText::duration(0), "0:00.000");
  EXPECT_EQ(NumberText::duration(3.5), "0:03.500");
  EXPECT_EQ(NumberText::duration(59.9999), "0:59.999");
  EXPECT_EQ(NumberText::duration(61), "1:01.000");
  EXPECT_EQ(NumberText::duration(3723.004), "1:02:03.004");
  EXPECT_EQ(NumberText::duration(360000), "100:00:00.000");
  EXPECT_EQ(NumberText::duration(-1), "?");
  EXPECT_EQ(NumberText::duration(std::nan("")), "?");
  EXPECT_EQ(NumberText::duration(kInfinity), "?");
}

TEST(NumberText, WritesRatesSizesAndCounts) {
  EXPECT_EQ(NumberText::sampleRate(48000), "48 kHz");
  EXPECT_EQ(NumberText::sampleRate(44100), "44.1 kHz");
  EXPECT_EQ(NumberText::sampleRate(500), "500 Hz");
  EXPECT_EQ(NumberText::sampleRate(1e7), "10000 kHz");
  // Rates of pulled-down recordings once had fifteen digits.
  EXPECT_EQ(NumberText::sampleRate(48'000 / 1.001), "47.952 kHz");
  EXPECT_EQ(NumberText::byteCount(0), "0 B");
  EXPECT_EQ(NumberText::byteCount(1023), "1023 B");
  EXPECT_EQ(NumberText::byteCount(1536), "1.5 KiB");
  EXPECT_EQ(NumberText::byteCount(std::int64_t{5} << 30), "5.0 GiB");
  EXPECT_EQ(NumberText::byteCount(std::numeric_limits<std::int64_t>::max()), "8.0 EiB");
  EXPECT_EQ(NumberText::counted(1, "run"), "1 run");
  EXPECT_EQ(NumberText::counted(0, "run"), "0 runs");
  EXPECT_EQ(NumberText::counted(999, "run"), "999 runs");
  EXPECT_EQ(NumberText::counted(1234567, "run"), "1,234,567 runs");
}

}  // namespace
}  // namespace orvane::cli
