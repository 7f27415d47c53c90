#include "orvane/core/generator/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "orvane/core/generator/signal_generator.h"
#include "tests/core/generator/spectrum.h"

namespace orvane::core {
namespace {

GeneratorSpec noise(GeneratorWaveform waveform, double seconds, std::uint64_t seed = 0) {
  GeneratorSpec spec;
  spec.waveform = waveform;
  spec.durationSeconds = seconds;
  spec.seed = seed;
  return spec;
}

/// Powers of the octave bands 31.5 Hz … 16 kHz in dB (IEC 61260-1, base ten).
std::vector<double> octaveLevels(std::span<const float> samples, double sampleRate) {
  constexpr std::size_t kSize = 1 << 17;
  std::vector<double> power(kSize / 2);
  for (std::size_t start = 0; start + kSize <= samples.size(); start += kSize / 2) {
    std::vector<float> windowed(kSize);
    for (std::size_t i = 0; i < kSize; ++i)
      windowed[i] = samples[start + i] *
                    static_cast<float>(1 - std::cos(2 * std::numbers::pi * static_cast<double>(i) /
                                                    static_cast<double>(kSize)));
    const auto spectrum = spectrumOf(windowed);
    for (std::size_t bin = 0; bin < power.size(); ++bin) power[bin] += std::norm(spectrum[bin]);
  }
  std::vector<double> levels;
  const double ratio = std::pow(10, 0.3);
  for (int band = -5; band <= 4; ++band) {
    const double middle = 1000 * std::pow(ratio, band);
    double sum = 0;
    for (std::size_t bin = 0; bin < power.size(); ++bin) {
      const double hertz = static_cast<double>(bin) * sampleRate / static_cast<double>(kSize);
      if (hertz >= middle / std::sqrt(ratio) && hertz < middle * std::sqrt(ratio))
        sum += power[bin];
    }
    levels.push_back(10 * std::log10(sum));
  }
  return levels;
}

/// How far any octave band lies from a line with that many decibels per octave.
double largestDeviation(const std::vector<double>& levels, double slope) {
  double mean = 0;
  for (std::size_t band = 0; band < levels.size(); ++band)
    mean += (levels[band] - slope * static_cast<double>(band)) / static_cast<double>(levels.size());
  double largest = 0;
  for (std::size_t band = 0; band < levels.size(); ++band)
    largest = std::max(largest, std::abs(levels[band] - slope * static_cast<double>(band) - mean));
  return largest;
}

TEST(Noise, FollowsItsSlopeInEveryOctave) {
  for (const double rate : {48'000.0, 192'000.0})
    for (const auto& [waveform, slope] : {std::pair{GeneratorWaveform::whiteNoise, 3.0},
                                          std::pair{GeneratorWaveform::pinkNoise, 0.0},
                                          std::pair{GeneratorWaveform::brownNoise, -3.0}}) {
      auto spec = noise(waveform, 30);
      spec.sampleRate = rate;
      const auto samples = SignalGenerator::render(spec).front();
      EXPECT_LT(largestDeviation(octaveLevels(samples, rate), slope), 0.5)
          << static_cast<int>(waveform) << " at " << rate;
    }
}

TEST(Noise, HasTheExactLevelInEveryChannel) {
  for (const auto waveform :
       {GeneratorWaveform::whiteNoise, GeneratorWaveform::pinkNoise, GeneratorWaveform::brownNoise})
    for (const double seconds : {0.001, 0.3, 5.0}) {
      auto spec = noise(waveform, seconds);
      spec.channelCount = 2;
      for (const auto& channel : SignalGenerator::render(spec)) {
        double sum = 0;
        for (const float x : channel) sum += static_cast<double>(x) * static_cast<double>(x);
        EXPECT_NEAR(10 * std::log10(sum / static_cast<double>(channel.size())), -20, 1e-6);
      }
    }
}

TEST(Noise, IsNormallyDistributed) {
  const auto samples = SignalGenerator::render(noise(GeneratorWaveform::whiteNoise, 20)).front();
  double mean = 0, fourth = 0;
  for (const float sample : samples) {
    const double x = 10 * static_cast<double>(sample);  // RMS 1
    mean += x / static_cast<double>(samples.size());
    fourth += x * x * x * x / static_cast<double>(samples.size());
  }
  // Five standard errors of 960,000 values.
  EXPECT_NEAR(mean, 0, 0.005);
  EXPECT_NEAR(fourth, 3, 0.025 * 2);
}

/// Of equally long signals, −1 … 1.
double correlation(std::span<const float> a, std::span<const float> b) {
  double ab = 0, aa = 0, bb = 0;
  for (std::size_t n = 0; n < a.size(); ++n) {
    const double x = static_cast<double>(a[n]), y = static_cast<double>(b[n]);
    ab += x * y;
    aa += x * x;
    bb += y * y;
  }
  return ab / std::sqrt(aa * bb);
}

TEST(Noise, IsIndependentBetweenChannelsAndSeeds) {
  for (const auto waveform : {GeneratorWaveform::whiteNoise, GeneratorWaveform::pinkNoise}) {
    auto spec = noise(waveform, 20);
    spec.channelCount = 3;
    const auto zero = SignalGenerator::render(spec);
    spec.seed = 1;
    const auto one = SignalGenerator::render(spec);
    // Five standard errors; pink noise has the fewer independent values.
    const double bound = waveform == GeneratorWaveform::whiteNoise ? 0.005 : 0.1;
    EXPECT_NEAR(correlation(zero[0], zero[1]), 0, bound);
    EXPECT_NEAR(correlation(zero[1], zero[2]), 0, bound);
    EXPECT_NEAR(correlation(zero[0], one[0]), 0, bound);
    // Channel 1 of one seed is not channel 0 of the next.
    EXPECT_NEAR(correlation(zero[1], one[0]), 0, bound);
  }
}

TEST(Noise, HasNoSeamWhereItsBlocksMeet) {
  // The mean power around the places where blocks of 65,536 frames overlap in equal parts, over
  // that where one of them is alone, of many seeds.
  const std::size_t hop = 32'768;
  double seams = 0, middles = 0;
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    const auto samples =
        SignalGenerator::render(noise(GeneratorWaveform::pinkNoise, 2.048, seed)).front();
    for (std::size_t i = 0; i < 2048; ++i) {
      seams += std::pow(static_cast<double>(samples[hop + hop / 2 - 1024 + i]), 2);
      middles += std::pow(static_cast<double>(samples[hop - 1024 + i]), 2);
    }
  }
  EXPECT_NEAR(10 * std::log10(seams / middles), 0, 0.5);
}

}  // namespace
}  // namespace orvane::core
