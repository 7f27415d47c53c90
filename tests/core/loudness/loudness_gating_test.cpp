#include "orvane/core/loudness/loudness_gating.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "orvane/core/loudness/gated_loudness.h"
#include "orvane/core/loudness/k_weighting.h"
#include "tests/reference/loudness_reference.h"
#include "tests/support/random.h"

namespace orvane::core {
namespace {

// Reference level: the same definition, compared as levels instead of powers.
constexpr double kToleranceLU = 1e-9;

constexpr double kMinusInfinity = -std::numeric_limits<double>::infinity();

std::vector<double> powersOf(const std::vector<double>& levels) {
  std::vector<double> powers;
  for (const double level : levels) powers.push_back(powerOfLoudness(level));
  return powers;
}

/// Loud and soft blocks, silent ones, and runs of the same power.
std::vector<double> randomPowers(std::uint64_t seed, std::size_t count) {
  test::Random random(seed);
  std::vector<double> powers;
  while (powers.size() < count) {
    const double level = random.between(-90, -5);
    for (std::uint64_t run = random.below(4) + 1; run > 0 && powers.size() < count; --run)
      powers.push_back(random.below(9) == 0 ? 0.0 : powerOfLoudness(level));
  }
  return powers;
}

void expectLevel(double power, double expectedLUFS) {
  const double level = loudnessOfPower(power);
  if (expectedLUFS == kMinusInfinity)
    EXPECT_EQ(level, expectedLUFS);
  else
    EXPECT_NEAR(level, expectedLUFS, kToleranceLU);
}

TEST(LoudnessGating, AgreesWithTheReference) {
  for (std::uint64_t seed = 81; seed < 121; ++seed) {
    const auto powers = randomPowers(seed, seed * 3 - 242);
    expectLevel(LoudnessGating::gatedPower(powers), test::reference::gatedLUFS(powers));
    EXPECT_EQ(LoudnessGating::gatedBlockCount(powers), test::reference::gatedBlockCount(powers));
  }
}

TEST(LoudnessGating, TakesOnlyBlocksStrictlyAboveTheAbsoluteGate) {
  const double gate = powerOfLoudness(-70);
  EXPECT_EQ(LoudnessGating::gatedBlockCount(std::vector<double>{gate, gate}), 0U);
  EXPECT_EQ(LoudnessGating::gatedPower(std::vector<double>{gate, gate}), 0.0);
  const double above = std::nextafter(gate, 1.0);
  EXPECT_EQ(LoudnessGating::gatedBlockCount(std::vector<double>{gate, above}), 1U);
}

TEST(LoudnessGating, TakesOnlyBlocksStrictlyAboveTheRelativeGate) {
  // Nineteen of power 10 and one of p: the gate is (190 + p) / 200; p = 190/199 lies on it.
  std::vector<double> powers(20, 10.0);
  const double edge = 190.0 / 199.0;
  powers[7] = edge * (1 - 1e-12);
  EXPECT_EQ(LoudnessGating::gatedBlockCount(powers), 19U);
  powers[7] = edge * (1 + 1e-12);
  EXPECT_EQ(LoudnessGating::gatedBlockCount(powers), 20U);
}

TEST(LoudnessGating, FormsTheRelativeGateFromBlocksAboveTheAbsoluteGateOnly) {
  // With the silent blocks in the mean the −45 block would pass a gate that much lower.
  auto powers = powersOf({-30, -30, -45});
  powers.resize(300, 0.0);
  EXPECT_EQ(LoudnessGating::gatedBlockCount(powers), 2U);
  expectLevel(LoudnessGating::gatedPower(powers), -30);
}

TEST(LoudnessGating, NeverAdmitsABlockBelowTheAbsoluteGate) {
  // The relative gate lies at −79 LUFS here.
  EXPECT_EQ(LoudnessGating::gatedBlockCount(powersOf({-69, -75})), 1U);
}

TEST(LoudnessGating, HasNoLoudnessWithoutBlocks) {
  EXPECT_EQ(LoudnessGating::gatedPower({}), 0.0);
  EXPECT_EQ(LoudnessGating::gatedBlockCount({}), 0U);
  EXPECT_TRUE(LoudnessGating::runningGatedPowers({}).empty());
}

TEST(LoudnessGating, RunsAsIfMeasuredAnewAtEveryBlock) {
  for (std::uint64_t seed = 121; seed < 131; ++seed) {
    const auto powers = randomPowers(seed, 400);
    const auto running = LoudnessGating::runningGatedPowers(powers);
    ASSERT_EQ(running.size(), powers.size());
    for (std::size_t i = 0; i < powers.size(); ++i)
      expectLevel(running[i], test::reference::gatedLUFS(std::span(powers).first(i + 1)));
  }
}

TEST(LoudnessGating, RunsThroughRisingFallingAndEqualBlocks) {
  std::vector<double> rising;
  for (int i = 0; i < 300; ++i) rising.push_back(powerOfLoudness(-80 + i * 0.25));
  auto falling = rising;
  std::reverse(falling.begin(), falling.end());
  for (const auto& powers : {rising, falling, std::vector<double>(300, 0.01)}) {
    const auto running = LoudnessGating::runningGatedPowers(powers);
    for (std::size_t i = 0; i < powers.size(); ++i)
      expectLevel(running[i], test::reference::gatedLUFS(std::span(powers).first(i + 1)));
  }
}

TEST(LoudnessRange, AgreesWithTheReference) {
  for (std::uint64_t seed = 131; seed < 171; ++seed) {
    const auto powers = randomPowers(seed, seed - 130);
    EXPECT_NEAR(loudnessRangeOfPowers(powers), test::reference::loudnessRange(powers),
                kToleranceLU);
  }
}

TEST(LoudnessRange, IsNothingForNoWindowOneWindowAndSilence) {
  EXPECT_EQ(loudnessRangeOfPowers({}), 0.0);
  EXPECT_EQ(loudnessRangeOfPowers(std::vector<double>{0.1}), 0.0);
  EXPECT_EQ(loudnessRangeOfPowers(std::vector<double>(50, 0.0)), 0.0);
}

TEST(LoudnessRange, CountsWindowsOnTheGate) {
  // At −70 LUFS a window still counts, unlike a gating block: range 0 … −70 without a relative gate
  // in the way, which needs them all within 20 LU.
  const double gate = powerOfLoudness(-70);
  EXPECT_NEAR(loudnessRangeOfPowers(std::vector<double>{gate, gate, powerOfLoudness(-60)}), 10,
              1e-9);
  EXPECT_EQ(
      loudnessRangeOfPowers(std::vector<double>{std::nextafter(gate, 0.0), powerOfLoudness(-60)}),
      0.0);
}

TEST(LoudnessRange, PicksTheNearestRankHalvesUpwards) {
  // Ranks of 1, 2 … 6 LU above −40: (6 − 1) × 0.1 = 0.5 rounds to the second, 4.75 to the sixth.
  EXPECT_NEAR(loudnessRangeOfPowers(powersOf({-39, -38, -37, -36, -35, -34})), 4, 1e-9);
}

TEST(LoudnessRange, StaysTheSameWhenTheProgrammeIsRepeated) {
  const auto once = randomPowers(171, 1001);
  auto twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_NEAR(loudnessRangeOfPowers(twice), loudnessRangeOfPowers(once), 0.1);
}

TEST(GatedLoudness, GatesTheAdmittedBlocksAlone) {
  const auto powers = powersOf({-20, -45, -20, -45, -80});
  const auto quiet = [](std::size_t block) { return block % 2 == 1; };
  EXPECT_EQ(GatedLoudness::gatedBlockCount(powers, [](std::size_t) { return true; }), 2U);
  EXPECT_EQ(GatedLoudness::gatedBlockCount(powers, quiet), 2U);
  EXPECT_NEAR(GatedLoudness::integratedLUFS(powers, quiet), -45, kToleranceLU);
  const auto last = [](std::size_t block) { return block == 4; };
  EXPECT_EQ(GatedLoudness::gatedBlockCount(powers, last), 0U);
  EXPECT_EQ(GatedLoudness::integratedLUFS(powers, last), kMinusInfinity);
}

TEST(GatedLoudness, OfAllBlocksIsTheProgrammesLoudness) {
  const auto powers = randomPowers(172, 500);
  const auto all = [](std::size_t) { return true; };
  EXPECT_EQ(GatedLoudness::integratedLUFS(powers, all),
            loudnessOfPower(LoudnessGating::gatedPower(powers)));
  EXPECT_EQ(GatedLoudness::gatedBlockCount(powers, all), LoudnessGating::gatedBlockCount(powers));
}

TEST(GatedLoudness, AsksForEachBlockOnceAndInOrder) {
  std::vector<std::size_t> asked;
  const auto none = [&asked](std::size_t block) {
    asked.push_back(block);
    return false;
  };
  EXPECT_EQ(GatedLoudness::integratedLUFS(powersOf({-20, -21, -22}), none), kMinusInfinity);
  EXPECT_EQ(asked, (std::vector<std::size_t>{0, 1, 2}));
  EXPECT_EQ(GatedLoudness::gatedBlockCount({}, none), 0U);
}

}  // namespace
}  // namespace orvane::core
