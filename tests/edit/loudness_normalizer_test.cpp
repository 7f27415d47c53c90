#include "orvane/edit/loudness_normalizer.h"

#include <ebur128.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/core/peak/true_peak_meter.h"
#include "orvane/edit/level.h"
#include "orvane/edit/true_peak_limiter.h"
#include "tests/support/signals.h"

namespace orvane::EditOperations {
namespace {

constexpr double kSilent = -std::numeric_limits<double>::infinity();

/// By a meter that nobody here wrote; up to two channels.
double integratedByPeer(const ChannelArrays& channels, double sampleRate) {
  const auto destroy = [](ebur128_state* state) { ebur128_destroy(&state); };
  const std::unique_ptr<ebur128_state, decltype(destroy)> state(
      ebur128_init(static_cast<unsigned>(channels.size()), static_cast<unsigned long>(sampleRate),
                   EBUR128_MODE_I),
      destroy);
  if (channels.size() == 1) ebur128_set_channel(state.get(), 0, EBUR128_CENTER);
  std::vector<float> interleaved;
  for (std::size_t i = 0; i < channels[0].size(); ++i)
    for (const auto& channel : channels) interleaved.push_back(channel[i]);
  ebur128_add_frames_float(state.get(), interleaved.data(), channels[0].size());
  double level = 0;
  ebur128_loudness_global(state.get(), &level);
  return level;
}

double integrated(const ChannelArrays& channels, double sampleRate,
                  const std::optional<std::vector<float>>& weights = std::nullopt) {
  core::LoudnessProcessor meter(sampleRate, static_cast<std::uint32_t>(channels.size()),
                                std::nullopt, weights);
  std::vector<const float*> pointers;
  for (const auto& channel : channels) pointers.push_back(channel.data());
  meter.process(pointers, channels[0].size());
  meter.flushPartialBlock();
  return static_cast<double>(meter.integratedLUFS());
}

NormalizationOutcome normalized(ChannelArrays& channels, double sampleRate, double target,
                                double ceiling, const Execution& execution = {}) {
  std::vector<float*> pointers;
  for (auto& channel : channels) pointers.push_back(channel.data());
  return normalizeLUFSInPlace({pointers, channels[0].size()}, sampleRate, target, ceiling,
                              std::nullopt, execution);
}

/// The loop as it is defined, every pass kept.
ChannelArrays normalizedByDefinition(ChannelArrays audio, double rate, double target,
                                     double ceiling, int* passes, bool* isLastBest) {
  const auto gain = [&](double dB) {
    for (auto& channel : audio)
      for (float& x : channel) x *= linearGain(dB);
  };
  const double before = integrated(audio, rate);
  if (target != before) gain(target - before);
  ChannelArrays best;
  double leastError = 1e9;
  for (*passes = 1;; ++*passes) {
    audio = limitTruePeak(audio, rate, ceiling).channelData;
    const double error = std::abs(target - integrated(audio, rate));
    *isLastBest = error < leastError;
    if (*isLastBest) {
      leastError = error;
      best = audio;
    }
    if (error <= 0.1 || error > leastError + 0.05 || *passes == 3) return best;
    gain(target - integrated(audio, rate));
  }
}

TEST(NormalizeLUFS, MeetsTheTargetByAnotherMeter) {
  for (const std::uint32_t rate : {44100U, 48000U, 96000U})
    for (const std::size_t channelCount : {1U, 2U})
      for (const double target : {-20.0, -23.0, -31.5}) {
        const auto programme = test::music(rate + channelCount, rate, channelCount, 6);
        const auto result = normalizeLUFS(programme.channels, rate, target, -1);
        EXPECT_EQ(result.sampleRate, rate);
        EXPECT_NEAR(integratedByPeer(result.channelData, rate), target, 0.15)
            << rate << ' ' << channelCount;
      }
}

TEST(NormalizeLUFS, RepeatsGainAndLimiterAndKeepsTheBestPass) {
  bool isRepeated = false, isMissed = false, isEarlierBest = false;
  std::vector<ChannelArrays> programmes = {test::music(1, 48000, 2, 4).channels,
                                           test::music(2, 48000, 2, 4).channels};
  for (const float quiet : {0.1F, 0.03F}) {
    // What is quiet passes the gate once it is raised, and the whole becomes softer.
    programmes.push_back({test::whiteNoise(3, 48000 * 4, 0.5F)});
    for (std::size_t i = 48000; i < programmes.back()[0].size(); ++i)
      programmes.back()[0][i] *= quiet;
  }
  for (const double target : {-23.0, -12.0, -9.0, -6.0, -3.0, 4.0})
    for (auto channels : programmes) {
      int passes = 0;
      bool isLastBest = true;
      const auto expected =
          normalizedByDefinition(channels, 48000, target, -1, &passes, &isLastBest);
      const double before = integrated(channels, 48000);
      const auto outcome = normalized(channels, 48000, target, -1);
      EXPECT_EQ(outcome.limiterPasses, passes);
      EXPECT_EQ(channels, expected) << target;
      EXPECT_NEAR(outcome.loudnessBefore, before, 1e-5);
      EXPECT_NEAR(outcome.loudnessAfter, integrated(channels, 48000), 1e-5);
      isEarlierBest = isEarlierBest || !isLastBest;
      isRepeated = isRepeated || passes > 1;
      isMissed = isMissed || outcome.loudnessAfter < target - 0.1;
    }
  EXPECT_TRUE(isEarlierBest);
  EXPECT_TRUE(isRepeated);
  EXPECT_TRUE(isMissed);
}

TEST(NormalizeLUFS, NeverPassesTheCeiling) {
  auto channels = test::music(9, 48000, 2, 4).channels;
  normalized(channels, 48000, 0, -2);
  core::TruePeakMeter meter(48000, 2);
  std::vector<const float*> pointers = {channels[0].data(), channels[1].data()};
  meter.process({pointers, channels[0].size()});
  meter.flush();
  for (const float peak : meter.peaks()) EXPECT_LE(peak, linearGain(-2 + 0.001));
}

TEST(NormalizeLUFS, OnlyLimitsWhatHasNoLoudness) {
  ChannelArrays channels = {std::vector<float>(48000)};
  channels[0][20000] = std::numeric_limits<float>::quiet_NaN();
  const auto outcome = normalized(channels, 48000, -14, -1);
  EXPECT_EQ(outcome, (NormalizationOutcome{kSilent, kSilent, 1}));
  EXPECT_EQ(channels[0], std::vector<float>(48000));
  // Below the absolute gate.
  channels[0] = test::whiteNoise(1, 48000, 1e-5F);
  const auto before = channels;
  normalized(channels, 48000, -14, -1);
  EXPECT_EQ(channels, before);
  // At a rate that is not metered.
  channels[0] = test::whiteNoise(1, 4000, 2);
  const auto limited = limitTruePeak(channels, 4000, -1).channelData;
  EXPECT_EQ(normalizeLUFS(channels, 4000, -14, -1).channelData, limited);
}

TEST(NormalizeLUFS, TakesWeightsOfTheCaller) {
  auto channels = test::music(4, 48000, 2, 4).channels;
  channels.push_back(test::whiteNoise(4, channels[0].size(), 0.2F));
  const std::vector<float> weights = {1, 1, 0};
  const auto result = normalizeLUFS(channels, 48000, -26, -1, weights).channelData;
  EXPECT_NEAR(integrated(result, 48000, weights), -26, 0.1);
  EXPECT_GT(integrated(result, 48000), -25.5);
}

TEST(NormalizeLUFS, EndsWhateverItIsGiven) {
  const auto noise = ChannelArrays{test::whiteNoise(1, 48000, 0.5F)};
  auto channels = noise;
  normalized(channels, 48000, -14, kSilent);
  EXPECT_EQ(channels[0], std::vector<float>(48000));
  channels = noise;
  normalized(channels, 48000, 900, -1);
  for (const float x : channels[0]) ASSERT_TRUE(std::isfinite(x));
  EXPECT_EQ(normalizeLUFS({}, 48000, -14, -1), (EditResult{{}, 48000, 0}));
  EXPECT_EQ(normalizeLUFS({{}, {}}, 48000, -14, -1), (EditResult{{{}, {}}, 48000, 2}));
}

TEST(NormalizeLUFS, GivesTheSameBitsForAnyNumberOfThreads) {
  auto one = test::music(5, 48000, 2, 6).channels;
  auto two = one;
  const auto outcome = normalized(one, 48000, -9, -1);
  EXPECT_EQ(normalized(two, 48000, -9, -1, {.threadCount = 2}), outcome);
  EXPECT_EQ(two, one);
}

TEST(NormalizeByGain, IsAGainThenTheLimiter) {
  const auto channels = test::music(6, 44100, 2, 2).channels;
  const auto louder = changeLevel(channels, 44100, 30, 0, 1'000'000);
  EXPECT_EQ(normalizeByGain(channels, 44100, 30, -1), limitTruePeak(louder.channelData, 44100, -1));
  EXPECT_NE(normalizeByGain(channels, 44100, 30, -1), louder);
  EXPECT_EQ(normalizeByGain(channels, 44100, -9, -1),
            changeLevel(channels, 44100, -9, 0, 1'000'000));
  EXPECT_EQ(normalizeByGain({}, 44100, 30, -1), (EditResult{{}, 44100, 0}));
}

TEST(LevelRangesThenLimit, AddsUpTheDecibelsOfOverlappingRanges) {
  const auto channels = test::music(7, 48000, 2, 1).channels;
  const std::vector<RangeGain> gains = {
      {{-5, 20000}, -6}, {{10000, 30000}, 12}, {{50, 50}, 40}, {{40000, 90000}, 30}};
  auto expected = changeLevel(channels, 48000, -6, 0, 20000);
  expected = changeLevel(expected.channelData, 48000, 12, 10000, 30000);
  expected = changeLevel(expected.channelData, 48000, 30, 40000, 48000);
  const auto result = levelRangesThenLimit(channels, 48000, gains, -1);
  EXPECT_EQ(result, limitTruePeak(expected.channelData, 48000, -1));
  EXPECT_NE(result, expected);
  EXPECT_EQ(levelRangesThenLimit(channels, 48000, {}, 20).channelData, channels);
}

}  // namespace
}  // namespace orvane::EditOperations
