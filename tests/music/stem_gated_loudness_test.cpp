#include "orvane/music/stem_gated_loudness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace orvane {
namespace {

using Stem = MusicAnalysisResult::Stem;
using TimeSpan = MusicAnalysisResult::TimeSpan;
using Spans = std::vector<TimeSpan>;

constexpr double kStep = 0.1;

/// The power of a block of that loudness: BS.1770-5, Annex 1, equation 2 solved for the sum.
double power(double lufs) {
  return std::pow(10, (lufs + 0.691) / 10);
}

std::vector<bool> mask(std::size_t count, const Spans& spans) {
  return StemGatedLoudness::presenceMask(count, kStep, spans);
}

MusicAnalysisResult withVocals(Spans ranges) {
  return {.stems = {{.stem = Stem::vocal, .ranges = std::move(ranges)}}};
}

TEST(PresenceMask, TellsPresenceByTheCentreOfABlock) {
  EXPECT_EQ(mask(3, {{0.0, 0.05}}), (std::vector<bool>{false, false, false}));
  EXPECT_EQ(mask(3, {{0.0, 0.06}}), (std::vector<bool>{true, false, false}));
  EXPECT_EQ(mask(3, {{0.05, 0.16}}), (std::vector<bool>{true, true, false}));
}

TEST(PresenceMask, TakesSpansInOrderOfTheirStarts) {
  EXPECT_EQ(mask(5, {{0.4, 0.5}, {0.0, 0.1}}),
            (std::vector<bool>{true, false, false, false, true}));
}

TEST(PresenceMask, CountsALaterOverlappingSpanOnlyFromWhereTheEarlierOneEnds) {
  EXPECT_EQ(mask(6, {{0.0, 0.3}, {0.1, 0.5}}),
            (std::vector<bool>{true, true, true, true, true, false}));
  EXPECT_EQ(mask(6, {{0.0, 0.6}, {0.1, 0.2}}),
            (std::vector<bool>{true, true, true, true, true, true}));
}

TEST(PresenceMask, PassesOverSpansThatEndBeforeTheyStart) {
  EXPECT_EQ(mask(3, {{0.2, 0.1}}), (std::vector<bool>{false, false, false}));
}

TEST(PresenceMask, IsEmptyForNoBlocksAndFalseForNoSpans) {
  EXPECT_TRUE(mask(0, {{0, 1}}).empty());
  EXPECT_EQ(mask(2, {}), (std::vector<bool>{false, false}));
}

TEST(StemGatedLoudness, IsNoneWithoutStemsOrBlocks) {
  const std::vector<double> blocks(500, power(-20));
  EXPECT_EQ(StemGatedLoudness::compute(blocks, kStep, MusicAnalysisResult{}), std::nullopt);
  EXPECT_EQ(StemGatedLoudness::compute({}, kStep, withVocals({{0, 50}})), std::nullopt);
}

TEST(StemGatedLoudness, HasNoAbsentPartWithVocalsThroughout) {
  const std::vector<double> blocks(500, power(-20));
  const auto result = StemGatedLoudness::compute(blocks, kStep, withVocals({{0, 50}}));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->vocal.absentSeconds, 0);
  EXPECT_EQ(result->vocal.absentLUFS, std::nullopt);
  EXPECT_EQ(result->vocal.balanceLU, std::nullopt);
  EXPECT_EQ(result->vocal.presentSeconds, 50);
  // One logarithm and its inverse: a few eps of 32-bit numbers.
  EXPECT_NEAR(result->vocal.presentLUFS.value(), -20, 1e-5);
}

TEST(StemGatedLoudness, TakesAMissingLaneAsAbsentThroughout) {
  const std::vector<double> blocks(500, power(-20));
  const auto result = StemGatedLoudness::compute(blocks, kStep, withVocals({{0, 50}}));
  EXPECT_EQ(result->drums.presentSeconds, 0);
  EXPECT_EQ(result->drums.presentLUFS, std::nullopt);
  EXPECT_EQ(result->drums.absentSeconds, 50);
  EXPECT_TRUE(result->drums.absentLUFS);
}

TEST(StemGatedLoudness, NeedsTenSecondsOfGatedBlocks) {
  const std::vector<double> blocks(500, power(-20));
  const auto enough = StemGatedLoudness::pair(blocks, kStep, Spans{{0, 10}});
  EXPECT_EQ(enough.presentSeconds, 10.0);
  EXPECT_TRUE(enough.presentLUFS);
  const auto tooFew = StemGatedLoudness::pair(blocks, kStep, Spans{{0, 9.9}});
  EXPECT_EQ(tooFew.presentSeconds, 0.1 * 99);
  EXPECT_EQ(tooFew.presentLUFS, std::nullopt);
  EXPECT_EQ(tooFew.balanceLU, std::nullopt);
}

TEST(StemGatedLoudness, CountsOnlyBlocksThatPassTheGates) {
  std::vector<double> blocks(400, power(-20));
  std::fill(blocks.begin() + 100, blocks.begin() + 200, power(-80));
  const auto pair = StemGatedLoudness::pair(blocks, kStep, Spans{{0, 20}});
  EXPECT_EQ(pair.presentSeconds, 10.0);
  EXPECT_EQ(pair.absentSeconds, 20.0);
}

TEST(StemGatedLoudness, BalancesThePartsInThirtyTwoBits) {
  std::vector<double> blocks(400, power(-14.3));
  std::fill(blocks.begin() + 200, blocks.end(), power(-19.8));
  const auto pair = StemGatedLoudness::pair(blocks, kStep, Spans{{0, 20}});
  ASSERT_TRUE(pair.presentLUFS && pair.absentLUFS && pair.balanceLU);
  EXPECT_EQ(*pair.balanceLU, *pair.presentLUFS - *pair.absentLUFS);
  EXPECT_NEAR(*pair.balanceLU, 5.5, 1e-5);
}

TEST(StemGatedLoudness, SaysHowItWasMeasured) {
  const std::vector<double> blocks(10, power(-20));
  EXPECT_EQ(StemGatedLoudness::compute(blocks, kStep, withVocals({}))->source,
            "Orvane BS.1770-4, gated by Apple Music Understanding stem presence");
}

/// Gated loudness as the standard words it, without regard to speed.
struct PlainGating {
  double loudness = -INFINITY;
  std::size_t count = 0;
};
PlainGating gatedPlainly(const std::vector<double>& powers) {
  const auto mean = [](const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) sum += value;
    return sum / static_cast<double>(values.size());
  };
  const auto above = [](const std::vector<double>& values, double threshold) {
    std::vector<double> kept;
    for (const double value : values)
      if (-0.691 + 10 * std::log10(value) > threshold) kept.push_back(value);
    return kept;
  };
  const auto audible = above(powers, -70);
  if (audible.empty()) return {};
  const auto loud = above(audible, -0.691 + 10 * std::log10(mean(audible)) - 10);
  return {-0.691 + 10 * std::log10(mean(loud)), loud.size()};
}

TEST(StemGatedLoudness, EqualsPlainGatingOfEachHalf) {
  std::mt19937 generator(7);
  std::uniform_real_distribution<double> level(-75, -8);
  std::uniform_real_distribution<double> time(0, 90);
  for (int round = 0; round < 20; ++round) {
    std::vector<double> blocks(900);
    for (double& block : blocks) block = power(level(generator));
    Spans spans;
    for (double t = time(generator) / 20; t < 90; t += 5 + time(generator) / 10)
      spans.push_back({t, t + 4.03});
    std::vector<double> present, absent;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      const double centre = kStep * (static_cast<double>(i) + 0.5);
      const bool isPresent = std::any_of(
          spans.begin(), spans.end(), [centre](const TimeSpan& s) { return s.contains(centre); });
      (isPresent ? present : absent).push_back(blocks[i]);
    }
    const auto pair = StemGatedLoudness::pair(blocks, kStep, spans);
    const PlainGating expectedPresent = gatedPlainly(present);
    const PlainGating expectedAbsent = gatedPlainly(absent);
    EXPECT_EQ(pair.presentSeconds, kStep * static_cast<double>(expectedPresent.count));
    EXPECT_EQ(pair.absentSeconds, kStep * static_cast<double>(expectedAbsent.count));
    // Another order of additions: far below the 32 bits of the result.
    if (pair.presentLUFS) {
      EXPECT_NEAR(*pair.presentLUFS, expectedPresent.loudness, 2e-6);
    }
    if (pair.absentLUFS) {
      EXPECT_NEAR(*pair.absentLUFS, expectedAbsent.loudness, 2e-6);
    }
  }
}

}  // namespace
}  // namespace orvane
