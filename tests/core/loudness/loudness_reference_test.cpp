// The meter against the slow reference, which filters sample by sample and sums every window anew.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

#include "orvane/core/channel_order.h"
#include "tests/core/loudness/metering.h"
#include "tests/reference/loudness_reference.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

using test::Programme;

// Reference level: another filter structure and other orders of summation, in double precision.
constexpr double kPowerToleranceLU = 1e-8;
// Half a step of the float that carries a level, up to 128 LU from zero, and the above.
constexpr double kLevelTolerance = 4e-6 + kPowerToleranceLU;

void expectReference(const Programme& programme, const std::vector<float>& weights) {
  const auto expected = test::reference::measureLoudness(programme, weights);
  const auto actual = metering::measure(programme, weights);
  metering::expectSamePowers(actual.blockPowers, expected.blockPowers, kPowerToleranceLU);
  ASSERT_EQ(actual.history.size(), expected.momentary.size());
  const auto same = [](float level, double reference, const char* what, std::size_t index) {
    metering::expectSameLevel(static_cast<double>(level), reference,
                              reference < -128 ? 2 * kLevelTolerance : kLevelTolerance, what,
                              index);
  };
  for (std::size_t i = 0; i < actual.history.size(); ++i) {
    same(actual.history[i].momentary, expected.momentary[i], "momentary", i);
    same(actual.history[i].shortTerm, expected.shortTerm[i], "short-term", i);
    same(actual.history[i].integrated, expected.integrated[i], "integrated", i);
  }
  same(actual.integrated, expected.integratedLUFS, "integrated", 0);
  EXPECT_NEAR(static_cast<double>(actual.range), expected.rangeLU, 4e-6);
}

void expectReference(const Programme& programme) {
  expectReference(programme, ChannelOrder::defaultWeights(
                                 static_cast<std::uint32_t>(programme.channels.size())));
}

class MeterAtRate : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(MeterAtRate, AgreesWithTheReferenceOnMusic) {
  expectReference(test::music(11, GetParam(), 2, GetParam() > 100000 ? 4.27 : 7.27));
}

TEST_P(MeterAtRate, AgreesWithTheReferenceOnBursts) {
  const std::uint32_t rate = GetParam();
  expectReference({static_cast<double>(rate), {test::noiseBursts(12, rate, rate * 4 + 17)}});
}

INSTANTIATE_TEST_SUITE_P(Rates, MeterAtRate,
                         ::testing::Values(8000, 11025, 22050, 32000, 44100, 48000, 88200, 96000,
                                           192000, 768000));

class MeterOfChannels : public ::testing::TestWithParam<std::size_t> {};

TEST_P(MeterOfChannels, AgreesWithTheReference) {
  // Long enough for stretches side by side, however many channels there are.
  expectReference(test::music(13, 16000, GetParam(), GetParam() < 9 ? 9.13 : 1.13));
}

INSTANTIATE_TEST_SUITE_P(Counts, MeterOfChannels,
                         ::testing::Values(1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 24, 33));

TEST(LoudnessReference, HoldsForClippedProgrammes) {
  auto programme = test::music(14, 48000, 2, 6);
  for (auto& channel : programme.channels) test::overdrive(channel, 8);
  expectReference(programme);
}

TEST(LoudnessReference, HoldsForConstantOffsets) {
  auto programme = test::music(15, 48000, 2, 6);
  for (auto& channel : programme.channels) test::offsetBy(channel, 0.3F);
  expectReference(programme);
}

TEST(LoudnessReference, HoldsForNoise) {
  expectReference(
      {44100, {test::whiteNoise(16, 44100 * 6, 0.5F), test::pinkNoise(17, 44100 * 6, 0.9F)}});
}

TEST(LoudnessReference, HoldsForSilenceAndForSilenceAfterSound) {
  Programme programme{48000, {std::vector<float>(48000 * 2)}};
  expectReference(programme);
  auto& channel = programme.channels.front();
  const auto sound = test::whiteNoise(18, 48000, 1.0F);
  channel.insert(channel.begin(), sound.begin(), sound.end());
  expectReference(programme);
}

TEST(LoudnessReference, CountsNonFiniteSamplesAsSilence) {
  auto programme = test::music(19, 48000, 2, 8.5);
  test::Random random(20);
  const float strange[] = {std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN()};
  for (auto& channel : programme.channels)
    for (int i = 0; i < 300; ++i) channel[random.below(channel.size())] = strange[random.below(3)];
  expectReference(programme);
}

TEST(LoudnessReference, HoldsForEveryLengthAroundTheWindows) {
  const auto whole = test::music(21, 8000, 1, 3.3);
  for (const std::size_t step : {1U, 4U, 30U, 31U})
    for (const int extra : {-401, -1, 0, 1, 79, 80, 81, 400}) {
      const auto frames = static_cast<std::ptrdiff_t>(step) * 800 + extra;
      const ::testing::ScopedTrace trace(__FILE__, __LINE__, std::to_string(frames) + " frames");
      const auto& samples = whole.channels.front();
      expectReference({8000, {{samples.begin(), samples.begin() + frames}}});
    }
}

TEST(LoudnessReference, HoldsForWeightsOfEveryKind) {
  const auto programme = test::music(22, 16000, 4, 5.3);
  expectReference(programme, {1.0F, 0.0F, 1.41F, 0.25F});
  expectReference(programme, {0.0F, 0.0F, 0.0F, 0.0F});
}

}  // namespace
}  // namespace orvane::core
