// True peak as the loudness meter tells it.
#include "orvane/core/peak/true_peak_meter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvane/core/decibels.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "tests/core/loudness/metering.h"
#include "tests/reference/true_peak_reference.h"
#include "tests/support/fenced_bytes.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

using test::Programme;

constexpr float kMinusInfinity = -std::numeric_limits<float>::infinity();

// Epsilon-scaled: 24 float products and the step of a float in decibels.
constexpr double kToleranceDB = 24 * 6e-8 * 2.4 * 8.7 + 4e-6;

TEST(TruePeakMeter, LooksAboveAFloorOnly) {
  const auto noise = test::whiteNoise(60, 5000, 1.0F);
  const float* const samples = noise.data();
  const auto peakAbove = [&](float floor) {
    TruePeakMeter meter(PolyphaseUpsampler4x::Factor::four, 1, floor);
    meter.process({{&samples, 1}, noise.size()});
    return meter.peaks()[0];
  };
  const float peak = peakAbove(0);
  EXPECT_EQ(peakAbove(0.9F * peak), peak);
  EXPECT_EQ(peakAbove(peak), peak);
  EXPECT_EQ(peakAbove(1.1F * peak), 1.1F * peak);
}

class TruePeakAtRate : public ::testing::TestWithParam<double> {};

// ×4 below 96 kHz, ×2 below 192 kHz, ×1 above; the filter's tail included.
TEST_P(TruePeakAtRate, EqualsTheReferenceAndIsNeverBelowTheSamplePeak) {
  for (std::uint64_t seed = 61; seed < 66; ++seed) {
    auto noise = test::whiteNoise(seed, 3000, 0.9F);
    noise.back() = 1.0F;  // the highest interpolated value may lie behind the last sample
    const Programme programme{GetParam(), {noise, test::noiseBursts(seed, 16000, 3000)}};
    const auto figures = metering::measure(programme);
    for (std::size_t c = 0; c < 2; ++c) {
      const auto& channel = programme.channels[c];
      const auto actual = static_cast<double>(figures.channelPeaks[c]);
      EXPECT_NEAR(actual, linearToDB(test::reference::truePeak(channel, GetParam())), kToleranceDB);
      EXPECT_GE(figures.channelPeaks[c],
                linearToDB(static_cast<float>(test::reference::samplePeak(channel))));
    }
    EXPECT_EQ(figures.truePeak, std::max(figures.channelPeaks[0], figures.channelPeaks[1]));
  }
}

INSTANTIATE_TEST_SUITE_P(Rates, TruePeakAtRate,
                         ::testing::Values(8000.0, 44100.0, 48000.0, 95999.0, 96000.0, 176400.0,
                                           191999.0, 192000.0, 768000.0));

TEST(TruePeakMeter, FollowsTheFilterBehindTheLastSample) {
  // An alternating run that ends with two equal samples: the curve swings out between and after.
  std::vector<float> samples(64);
  for (std::size_t n = 0; n < samples.size(); ++n) samples[n] = n % 2 == 0 ? 0.5F : -0.5F;
  samples.back() = samples[samples.size() - 2];
  TruePeakMeter meter(48000, 1);
  meter.process({std::vector<const float*>{samples.data()}, samples.size()});
  const float before = meter.peaks()[0];
  meter.flush();
  EXPECT_GT(meter.peaks()[0], before);
  EXPECT_NEAR(static_cast<double>(meter.peaks()[0]), test::reference::truePeak(samples, 48000),
              1e-6);
}

// A piece shorter than the filter was once preceded by a look at the samples before it.
TEST(TruePeakMeter, ReadsNoSampleBeforeAPiece) {
  const test::FencedBytes memory(1);
  const auto* start = reinterpret_cast<const float*>(memory.all().data());
  TruePeakMeter meter(48000, 1);
  for (std::size_t frames = 0; frames < 50; ++frames)
    meter.process({std::vector<const float*>{start}, frames});
  EXPECT_EQ(meter.peaks()[0], 0.0F);
}

TEST(TruePeakMeter, ReadsSilenceAsMinusInfinity) {
  const auto figures = metering::measure({48000, {std::vector<float>(5000)}});
  EXPECT_EQ(figures.truePeak, kMinusInfinity);
  EXPECT_EQ(figures.channelPeaks, std::vector<float>{kMinusInfinity});
}

TEST(TruePeakMeter, IsTheSamplePeakWhereThereIsNoLoudness) {
  for (const double rate : {0.0, 100.0, 7999.0, 768001.0, 1e7}) {
    const auto samples = test::whiteNoise(66, 500, 0.7F);
    const auto figures = metering::measure({rate, {samples}});
    EXPECT_EQ(figures.truePeak,
              linearToDB(static_cast<float>(test::reference::samplePeak(samples))))
        << rate;
  }
}

TEST(TruePeakMeter, MeasuresChannelsWithoutAWeightToo) {
  Programme programme{48000, {6, std::vector<float>(4800)}};
  programme.channels[3] = test::whiteNoise(67, 4800, 0.5F);
  const auto figures = metering::measure(programme);
  EXPECT_GT(figures.truePeak, -7);
  EXPECT_EQ(figures.truePeak, figures.channelPeaks[3]);
  EXPECT_EQ(figures.channelPeaks[0], kMinusInfinity);
}

TEST(TruePeakMeter, IgnoresNonFiniteSamples) {
  auto samples = test::whiteNoise(68, 2000, 0.5F);
  samples[700] = std::numeric_limits<float>::infinity();
  samples[1400] = std::numeric_limits<float>::quiet_NaN();
  const auto figures = metering::measure({48000, {samples}});
  EXPECT_NEAR(static_cast<double>(figures.truePeak),
              linearToDB(test::reference::truePeak(samples, 48000)), kToleranceDB);
}

}  // namespace
}  // namespace orvane::core
