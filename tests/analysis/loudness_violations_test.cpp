#include "orvane/analysis/loudness_violations.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvane {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<LoudnessCurvePoint> curveOf(const std::vector<float>& momentary) {
  std::vector<LoudnessCurvePoint> curve;
  for (const float level : momentary)
    curve.push_back({.time = 0.1 * static_cast<double>(curve.size() + 1),
                     .momentary = level,
                     .shortTerm = level - 10,
                     .integrated = 0});
  return curve;
}

TEST(LoudnessViolations, AreTheRunsOfPointsAboveTheThreshold) {
  const auto curve = curveOf({-9, -20, -9, -8, -20, -20, -9});
  const std::vector<HalfOpenTimeRange> expected = {{0, 0.1}, {0.2, 0.4}, {0.6, 0.7}};
  EXPECT_EQ(LoudnessViolations::momentary(curve, -10), expected);
}

TEST(LoudnessViolations, LieStrictlyAbove) {
  EXPECT_TRUE(LoudnessViolations::momentary(curveOf({-10, -10.5F}), -10).empty());
  EXPECT_EQ(LoudnessViolations::momentary(curveOf({-9.999F}), -10).size(), 1U);
}

TEST(LoudnessViolations, OfShortTermLoudnessFollowItsCurve) {
  const auto curve = curveOf({-9, -1});
  EXPECT_EQ(LoudnessViolations::shortTerm(curve, -15),
            (std::vector<HalfOpenTimeRange>{{0.1, 0.2}}));
}

TEST(LoudnessViolations, NeverHoldWhatHasNoLevel) {
  const auto curve = curveOf({-kInfinity, std::numeric_limits<float>::quiet_NaN()});
  EXPECT_TRUE(LoudnessViolations::momentary(curve, -200).empty());
  EXPECT_TRUE(LoudnessViolations::momentary({}, -20).empty());
}

TEST(LoudnessViolations, OfALongProgrammeHaveExactTenths) {
  std::vector<float> levels(360'000, -20);
  levels[359'998] = -5;
  const auto ranges = LoudnessViolations::momentary(curveOf(levels), -10);
  ASSERT_EQ(ranges.size(), 1U);
  EXPECT_EQ(ranges[0], (HalfOpenTimeRange{35'999.8, 35'999.9}));
}

}  // namespace
}  // namespace orvane
