#include "orvane/analysis/programme_statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace orvane {
namespace {

std::shared_ptr<PCMBuffer> noiseBuffer(double sampleRate, std::uint32_t channels,
                                       std::uint32_t frames) {
  const auto buffer = PCMBuffer::make({.sampleRate = sampleRate, .channelCount = channels}, frames);
  std::mt19937 generator(channels * 1000 + frames);
  std::uniform_real_distribution<float> level(-0.9F, 0.9F);
  for (std::uint32_t c = 0; c < channels; ++c)
    for (std::uint32_t i = 0; i < frames; ++i) buffer->channel(c)[i] = level(generator);
  buffer->setFrameLength(frames);
  return buffer;
}

ProgrammeStatistics statisticsOf(const PCMBuffer& buffer) {
  ProgrammeStatisticsMeter meter(buffer.sampleRate(), buffer.channelCount(), true);
  meter.process(buffer.view());
  return meter.finish();
}

// Two ways of adding up the same numbers: 1e-12 leaves room for the rounding of a few million.
void expectClose(double actual, double expected) {
  EXPECT_NEAR(actual, expected, 1e-12 * std::max(1.0, std::fabs(expected)));
}

TEST(ProgrammeStatistics, EqualsPlainLoops) {
  for (const double rate : {8000.0, 11025.0, 44100.0}) {
    const auto buffer = noiseBuffer(rate, 3, 150'001);
    const auto statistics = statisticsOf(*buffer);
    for (std::uint32_t c = 0; c < 3; ++c) {
      double sum = 0, squares = 0;
      float peak = 0;
      for (std::uint32_t i = 0; i < 150'001; ++i) {
        const float x = buffer->channel(c)[i];
        sum += static_cast<double>(x);
        squares += static_cast<double>(x) * static_cast<double>(x);
        peak = std::max(peak, std::fabs(x));
      }
      expectClose(statistics.channels[c].sum, sum);
      expectClose(statistics.channels[c].sumOfSquares, squares);
      EXPECT_EQ(statistics.channels[c].peak, peak);
    }
  }
}

TEST(ProgrammeStatistics, GivesTheDRBlocksOfTheDRProcessor) {
  for (const double rate : {8000.0, 44100.0}) {
    const auto buffer = noiseBuffer(rate, 2, 400'000);
    const auto statistics = statisticsOf(*buffer);
    const std::vector<const float*> channels{buffer->channel(0), buffer->channel(1)};
    const auto expected = core::DRProcessor::computeChannelDR(channels, 2, 400'000, rate);
    for (std::size_t c = 0; c < 2; ++c)
      expectClose(core::DRProcessor::channelDR(statistics.drBlocks[c]), expected[c]);
  }
}

TEST(ProgrammeStatistics, CorrelatesWindowByWindow) {
  const auto buffer = noiseBuffer(11025, 2, 50'000);
  const auto curve = statisticsOf(*buffer).stereoWidthCurve;
  ASSERT_EQ(curve.size(), 50'000U / 1102U);
  for (std::size_t w = 0; w < curve.size(); ++w) {
    double dot = 0, left = 0, right = 0;
    for (std::size_t i = w * 1102; i < (w + 1) * 1102; ++i) {
      const auto l = static_cast<double>(buffer->channel(0)[i]);
      const auto r = static_cast<double>(buffer->channel(1)[i]);
      dot += l * r;
      left += l * l;
      right += r * r;
    }
    EXPECT_NEAR(curve[w].correlation, dot / std::sqrt(left * right), 1e-6);
    EXPECT_DOUBLE_EQ(curve[w].time, static_cast<double>(w + 1) * 0.1);
  }
}

TEST(ProgrammeStatistics, CountsNonFiniteSamples) {
  const auto buffer = noiseBuffer(8000, 3, 40'000);
  buffer->channel(2)[7] = NAN;
  buffer->channel(2)[39'999] = INFINITY;
  buffer->channel(0)[20'000] = -INFINITY;
  EXPECT_EQ(statisticsOf(*buffer).nonFiniteSampleCount, 3);
}

TEST(ProgrammeStatistics, CallsAWindowOfFaintNoiseUncorrelated) {
  const auto buffer = noiseBuffer(8000, 2, 8000);
  for (std::uint32_t i = 0; i < 8000; ++i) buffer->channel(0)[i] = buffer->channel(1)[i] = 1e-9F;
  for (const auto& point : statisticsOf(*buffer).stereoWidthCurve)
    EXPECT_EQ(point.correlation, 0.0F);
}

}  // namespace
}  // namespace orvane
