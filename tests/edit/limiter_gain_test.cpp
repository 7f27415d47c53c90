#include "orvane/edit/limiter_gain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/reference/limiter_reference.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/random.h"

namespace orvane::EditOperations {
namespace {

constexpr float kCeiling = 0.8F;

/// Peaks at the ceiling with some above it, for long stretches none.
std::vector<float> peaksOf(std::uint64_t seed, std::size_t count) {
  test::Random random(seed);
  std::vector<float> peaks(count, kCeiling);
  for (std::size_t i = 0; i < count; i += random.below(random.below(4) == 0 ? 9000 : 300))
    peaks[i] = kCeiling * static_cast<float>(random.between(1, 4));
  return peaks;
}

std::vector<float> gainsOf(LimiterGain gain, const std::vector<float>& peaks,
                           const std::vector<std::size_t>& sizes, float behindTheEnd = kCeiling) {
  std::vector<float> gains;
  const auto keep = [&](std::span<const float> known) {
    gains.insert(gains.end(), known.begin(), known.end());
  };
  std::size_t at = 0;
  for (std::size_t i = 0; at < peaks.size(); ++i) {
    const std::size_t count = std::min(sizes[i % sizes.size()], peaks.size() - at);
    keep(gain.push(std::span(peaks).subspan(at, count)));
    at += count;
  }
  keep(gain.finish(behindTheEnd));
  return gains;
}

/// Equal to the next float.
void expectSameGains(const std::vector<float>& gains, const std::vector<double>& expected) {
  ASSERT_EQ(gains.size(), expected.size());
  for (std::size_t i = 0; i < gains.size(); ++i) {
    const auto rounded = static_cast<float>(expected[i]);
    ASSERT_GE(gains[i], std::nextafter(rounded, 0.0F)) << i;
    ASSERT_LE(gains[i], std::nextafter(rounded, 2.0F)) << i;
  }
}

TEST(LimiterGain, EqualsItsFormula) {
  test::onEachInstructionSet([] {
    std::uint64_t seed = 0;
    for (const double rate : {44100.0, 48000.0, 192000.0, 8000.0, 200.0, 100.0, 0.0, -5.0})
      for (const std::size_t count : {1U, 2U, 240U, 241U, 242U, 20000U}) {
        const auto peaks = peaksOf(++seed, count);
        expectSameGains(gainsOf({rate, kCeiling}, peaks, {count}),
                        reference::limiterGains(peaks, std::max(rate, 0.0), kCeiling));
      }
  });
}

TEST(LimiterGain, IsTheSameForPiecesOfAnySize) {
  const auto peaks = peaksOf(77, 30000);
  const auto whole = gainsOf({48000, kCeiling}, peaks, {peaks.size()});
  EXPECT_EQ(gainsOf({48000, kCeiling}, peaks, {1, 7, 240, 241, 4096, 5000}), whole);
  EXPECT_EQ(gainsOf({48000, kCeiling}, peaks, {0, 333}), whole);
}

TEST(LimiterGain, LooksAheadOfProgrammesShorterThanItsLookAhead) {
  auto peaks = std::vector<float>(100, kCeiling);
  peaks[60] = 2 * kCeiling;
  for (const double rate : {50'000.0, 1e9, 1e300}) {
    const auto gains = gainsOf({rate, kCeiling}, peaks, {30});
    for (std::size_t i = 0; i <= 60; ++i) EXPECT_EQ(gains[i], 0.5F);
    if (rate < 1e6) {
      EXPECT_GT(gains[61], 0.5F);
    }
  }
}

TEST(LimiterGain, CountsWhatIsBehindTheEndAsTheLastFramesPeak) {
  for (const double rate : {48000.0, 100.0}) {
    auto peaks = peaksOf(5, 3000);
    const auto gains = gainsOf({rate, kCeiling}, peaks, {1000}, 3.0F);
    peaks.back() = 3.0F;
    EXPECT_EQ(gains, gainsOf({rate, kCeiling}, peaks, {1000}));
  }
}

TEST(LimiterGain, FallsFiveMillisecondsBeforeAPeakAndComesBackToExactlyOne) {
  std::vector<float> peaks(96000 * 2, kCeiling);
  peaks[1000] = 1.6F;
  LimiterGain gain(48000, kCeiling);
  EXPECT_FALSE(gain.hasLimited());
  const auto gains = gainsOf(gain, peaks, {65536});
  EXPECT_EQ(gains[1000 - 241], 1.0F);
  for (std::size_t i = 1000 - 240; i <= 1000; ++i) EXPECT_EQ(gains[i], 0.5F);
  EXPECT_NEAR(gains[1000 + 4800], 1 - 0.5 * std::exp(-1), 1e-6);
  // In single precision it would stay at 0.99986.
  for (std::size_t i = 1000 + 96000; i < gains.size(); ++i) ASSERT_EQ(gains[i], 1.0F) << i;
}

TEST(LimiterGain, TellsWhetherItHasLimited) {
  std::vector<float> peaks(500, kCeiling);
  LimiterGain gain(48000, kCeiling);
  gain.push(peaks);
  EXPECT_FALSE(gain.hasLimited());
  gain.finish(kCeiling * 1.001F);
  EXPECT_TRUE(gain.hasLimited());
}

TEST(LimiterGain, MutesWhatHasNoCeilingAboveZero) {
  const std::vector<float> peaks = {0, 0, 0.5F, 0, std::numeric_limits<float>::infinity(), 0};
  for (const float gain : gainsOf({100, 0.0F}, {0.5F, 0.25F, 1.0F}, {2}, 0.0F)) EXPECT_EQ(gain, 0);
  for (const float gain : gainsOf({100, 0.0F}, peaks, {2}, 0.0F)) EXPECT_FALSE(std::isnan(gain));
}

TEST(LimiterGain, GivesNothingForNothing) {
  LimiterGain gain(48000, kCeiling);
  EXPECT_TRUE(gain.push({}).empty());
  EXPECT_TRUE(gain.finish(5).empty());
}

}  // namespace
}  // namespace orvane::EditOperations
