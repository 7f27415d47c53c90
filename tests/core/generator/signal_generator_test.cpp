#include "orvane/core/generator/signal_generator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <map>
#include <numbers>

namespace orvane::core {
namespace {

using ::testing::Each;
using ::testing::SizeIs;
using W = GeneratorWaveform;
using Samples = std::vector<float>;

GeneratorSpec specOf(W waveform, double seconds = 1) {
  GeneratorSpec spec;
  spec.waveform = waveform;
  spec.durationSeconds = seconds;
  return spec;
}

double peakDB(const Samples& samples) {
  float peak = 0;
  for (const float x : samples) peak = std::max(peak, std::abs(x));
  return 20 * std::log10(static_cast<double>(peak));
}

TEST(SignalGenerator, PeaksAtTheLevel) {
  for (const auto waveform : {W::sine, W::dualTone, W::square, W::saw, W::triangle, W::linearSweep,
                              W::logarithmicSweep, W::impulse, W::clickTrain, W::channelIdent})
    for (const double rate : {44'100.0, 48'000.0, 192'000.0})
      for (const double level : {-20.0, -0.3, 3.0}) {
        auto spec = specOf(waveform, 10);
        spec.sampleRate = rate;
        spec.levelDB = level;
        // Comes by every place of the period, so that a sample lies on the highest one.
        spec.frequency = 997.0 / std::numbers::sqrt2;
        EXPECT_NEAR(peakDB(SignalGenerator::render(spec).front()), level, 0.01)
            << static_cast<int>(waveform) << " at " << rate;
      }
}

TEST(SignalGenerator, BeginsAtTheRisingZeroOrAheadByThePhase) {
  for (const auto waveform : {W::sine, W::dualTone, W::square, W::saw, W::triangle, W::linearSweep,
                              W::logarithmicSweep}) {
    auto spec = specOf(waveform, 0.01);
    spec.channelCount = 3;
    spec.channelPhases = {0, 180, 360};
    const auto channels = SignalGenerator::render(spec);
    EXPECT_NEAR(channels[0][0], 0, 1e-9) << static_cast<int>(waveform);
    EXPECT_GT(channels[0][1], 0) << static_cast<int>(waveform);
    EXPECT_LT(channels[1][1], 0) << static_cast<int>(waveform);
    EXPECT_EQ(channels[2], channels[0]) << static_cast<int>(waveform);
  }
}

TEST(SignalGenerator, IsAheadByTheExactPhase) {
  auto spec = specOf(W::sine);
  spec.levelDB = 0;
  spec.frequency = 997;
  spec.channelPhases = {36};
  const auto samples = SignalGenerator::render(spec).front();
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const double turns = 997 * static_cast<double>(n) / 48'000 + 0.1;
    ASSERT_NEAR(samples[n], std::sin(2 * std::numbers::pi * turns), 1e-7) << n;
  }
}

TEST(SignalGenerator, SoundsInTheChannelsOfTheMask) {
  for (const auto waveform : {W::sine, W::pinkNoise, W::impulse, W::channelIdent}) {
    auto spec = specOf(waveform, 2);
    spec.channelCount = 3;
    const auto all = SignalGenerator::render([&] {
      auto longer = spec;
      longer.durationSeconds = 4;
      return waveform == W::channelIdent ? longer : spec;
    }());
    spec.channelMask = {false, true, false};
    const auto channels = SignalGenerator::render(spec);
    ASSERT_THAT(channels, SizeIs(3));
    EXPECT_THAT(channels[0], Each(0.0F));
    EXPECT_THAT(channels[1], testing::Contains(testing::Ne(0.0F)));
    EXPECT_THAT(channels[2], Each(0.0F));
    if (waveform != W::channelIdent) {
      EXPECT_EQ(channels[1], all[1]);
    }
  }
}

TEST(SignalGenerator, RoundsTheDurationToFrames) {
  auto spec = specOf(W::silence, 0.1);
  spec.sampleRate = 44'099;
  spec.channelCount = 2;
  const auto channels = SignalGenerator::render(spec);
  EXPECT_THAT(channels, SizeIs(2));
  EXPECT_THAT(channels, Each(Each(0.0F)));
  EXPECT_THAT(channels, Each(SizeIs(4410)));
}

TEST(SignalGenerator, RefusesWhatCannotBeRendered) {
  auto spec = specOf(W::sine);
  spec.frequency = 24'000;
  EXPECT_THROW(SignalGenerator::render(spec), GeneratorSpecError);
}

TEST(SignalGenerator, SweepsWithoutAJump) {
  for (const auto waveform : {W::linearSweep, W::logarithmicSweep})
    for (const auto& [from, to] : {std::pair{20.0, 20'000.0}, std::pair{23'999.0, 0.5},
                                   std::pair{1000.0, 1000.0}, std::pair{1000.0, 1000.001}})
      for (const double seconds : {0.01, 30.0}) {
        auto spec = specOf(waveform, seconds);
        spec.levelDB = 0;
        spec.startFrequency = from;
        spec.endFrequency = to;
        const auto samples = SignalGenerator::render(spec).front();
        const long double f0 = from, f1 = to, length = seconds, rate = std::log(f1 / f0) / length;
        for (std::size_t n = 0; n < samples.size(); ++n) {
          const long double t = static_cast<long double>(n) / 48'000;
          // The frequency's integral.
          const bool isConstant = waveform == W::linearSweep || from == to;
          const long double turns = isConstant ? t * (f0 + (f1 - f0) * t / (2 * length))
                                               : f0 * std::expm1(rate * t) / rate;
          const long double expected = std::sin(2 * std::numbers::pi_v<long double> * turns);
          // The rounding to 32 bits, and of the reference where its rate is nearly 0.
          ASSERT_NEAR(samples[n], static_cast<double>(expected), 1e-7)
              << static_cast<int>(waveform) << " from " << from << " to " << to << ", frame " << n;
        }
      }
}

TEST(SignalGenerator, GivesOneImpulse) {
  auto spec = specOf(W::impulse);
  spec.levelDB = 0;
  const auto samples = SignalGenerator::render(spec).front();
  EXPECT_EQ(samples.front(), 1);
  EXPECT_THAT((Samples{samples.begin() + 1, samples.end()}), Each(0.0F));
}

TEST(SignalGenerator, ClicksOnSingleSamplesWhereTheyLieOnFrames) {
  auto spec = specOf(W::clickTrain, 3);
  spec.frequency = 2;
  spec.levelDB = 0;
  spec.channelCount = 2;
  spec.channelPhases = {0, -90};
  const auto channels = SignalGenerator::render(spec);
  for (std::size_t n = 0; n < channels[0].size(); ++n) {
    ASSERT_EQ(channels[0][n], n % 24'000 == 0 ? 1 : 0) << n;
    ASSERT_EQ(channels[1][n], n % 24'000 == 6'000 ? 1 : 0) << n;
  }
}

TEST(SignalGenerator, ClicksBetweenFramesLikeAnInterpolatedPulse) {
  auto spec = specOf(W::clickTrain);
  spec.frequency = 48'000 / 1000.5;
  spec.levelDB = 0;
  const auto samples = SignalGenerator::render(spec).front();
  EXPECT_EQ(samples[0], 1);
  EXPECT_EQ(samples[2001], 1);
  // Half a frame from its middle a pulse has 2 ÷ π.
  EXPECT_NEAR(samples[1000], 2 / std::numbers::pi, 1e-3);
  EXPECT_NEAR(samples[1001], 2 / std::numbers::pi, 1e-3);
}

/// How many bursts, runs of tone with at least 50 ms of silence behind them, begin in a stretch.
std::size_t burstsIn(const Samples& samples, std::size_t begin, std::size_t end) {
  std::size_t bursts = 0, silent = 2400;
  for (std::size_t n = begin; n < std::min(end, samples.size()); ++n) {
    if (samples[n] == 0) {
      ++silent;
      continue;
    }
    if (silent >= 2400) ++bursts;
    silent = 0;
  }
  return bursts;
}

TEST(SignalGenerator, NamesOneChannelAfterAnotherByBursts) {
  auto spec = specOf(W::channelIdent, 15);
  spec.channelCount = 6;
  const auto channels = SignalGenerator::render(spec);
  // Six seconds for six channels: two whole sequences, and silence for the rest.
  const double rate = spec.sampleRate;
  for (std::size_t channel = 0; channel < 6; ++channel) {
    double start = 0;
    for (std::size_t turn = 0; turn < 6; ++turn) {
      const double end = start + 0.2 * static_cast<double>(turn + 1) + 0.3;
      for (const double sequence : {0.0, 6.0})
        EXPECT_EQ(burstsIn(channels[channel], static_cast<std::size_t>((start + sequence) * rate),
                           static_cast<std::size_t>((end + sequence) * rate)),
                  turn == channel ? channel + 1 : 0)
            << channel << " in the turn of " << turn;
      start = end;
    }
    EXPECT_NEAR(start, 6, 1e-9);
    EXPECT_EQ(burstsIn(channels[channel], 576'000, 720'000), 0U);
  }
}

/// The FNV-1a hash of 64 bits.
std::uint64_t hashOf(const std::vector<Samples>& channels) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const Samples& channel : channels)
    for (const float sample : channel)
      for (int byte = 0; byte < 32; byte += 8)
        hash = (hash ^ (std::bit_cast<std::uint32_t>(sample) >> byte & 0xFF)) * 0x100000001B3;
  return hash;
}

TEST(SignalGenerator, GivesTheSameBitsOnEveryMachine) {
  const std::map<W, std::uint64_t> pinned = {
      {W::sine, 0x98EB03CE238791EB},
      {W::dualTone, 0xD1B4619A3B1E777F},
      {W::square, 0x5F06E48D6D611B67},
      {W::saw, 0xD4D309AD17689B39},
      {W::triangle, 0x1990D332C1D5DAB5},
      {W::linearSweep, 0x88E77D4D62B01CC9},
      {W::logarithmicSweep, 0x14A53E49EB88F44C},
      {W::whiteNoise, 0x00334F6461DDBA59},
      {W::pinkNoise, 0xF3D680A7D689ECF5},
      {W::brownNoise, 0x045AC68917E0677D},
      {W::impulse, 0x3FC60184491ED599},
      {W::clickTrain, 0xFB9CC435F8D182C7},
      {W::silence, 0xB3EE7353128F54C5},
      {W::channelIdent, 0x24FAB27F71FADB8D},
  };
  for (const auto& [waveform, hash] : pinned) {
    auto spec = specOf(waveform, 3.21);
    spec.sampleRate = 44'100;
    spec.frequency = 440.1;
    spec.channelCount = 2;
    spec.channelPhases = {0, 33};
    EXPECT_EQ(hashOf(SignalGenerator::render(spec)), hash) << static_cast<int>(waveform);
  }
}

}  // namespace
}  // namespace orvane::core
