#include "orvane/core/peak/polyphase_upsampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <numbers>
#include <numeric>
#include <span>
#include <string>

#include "tests/reference/true_peak_reference.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/fenced_bytes.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

using PolyphaseUpsampler4x::Factor;
using PolyphaseUpsampler4x::kHistory;
using PolyphaseUpsampler4x::kPeakHistory;

// Epsilon-scaled: up to 24 products, summed in float, of taps whose magnitudes sum up to 2.4.
constexpr double kFloatTolerance = 24 * 6e-8 * 2.4;

/// The samples with as much silence before them as the filters look back.
std::vector<float> afterSilence(const std::vector<float>& samples,
                                std::size_t history = kPeakHistory) {
  std::vector<float> work(history);
  work.insert(work.end(), samples.begin(), samples.end());
  return work;
}

double largestByReference(Factor factor, const std::vector<float>& samples) {
  if (factor == Factor::none) return test::reference::samplePeak(samples);
  auto peaks = test::reference::windowPeaks(samples, factor == Factor::four
                                                         ? test::reference::quarterFilters()
                                                         : test::reference::halfwayFilter());
  peaks.resize(samples.size());  // without the tail behind the last sample
  return peaks.empty() ? 0.0 : *std::max_element(peaks.begin(), peaks.end());
}

void expectLargest(const std::vector<float>& samples) {
  const auto work = afterSilence(samples);
  for (const Factor factor : {Factor::none, Factor::two, Factor::four}) {
    const double expected = largestByReference(factor, samples);
    const double actual = static_cast<double>(PolyphaseUpsampler4x::largestPeak(
        factor, work.data() + kPeakHistory, samples.size(), 0.0F));
    EXPECT_NEAR(actual, expected, kFloatTolerance * expected) << static_cast<int>(factor);
  }
}

TEST(PolyphaseUpsampler, FindsThePeakOfEveryWindow) {
  const auto samples = test::whiteNoise(51, 300, 1.0F);
  const auto work = afterSilence(samples, kHistory);
  const auto expected = test::reference::windowPeaks(samples, test::reference::quarterFilters());
  test::onEachInstructionSet([&] {
    for (std::size_t count = 0; count <= samples.size(); count += count < 70 ? 1 : 46) {
      std::vector<float> peaks(count + 1, -7.0F);
      PolyphaseUpsampler4x::detectPerSamplePeaks(work.data(), count, peaks.data());
      for (std::size_t i = 0; i < count; ++i)
        ASSERT_NEAR(static_cast<double>(peaks[i]), expected[i], kFloatTolerance) << i;
      ASSERT_EQ(peaks[count], -7.0F) << "written beyond the end";
    }
  });
}

TEST(PolyphaseUpsampler, NeverReadsAWindowBelowItsLastSample) {
  const auto samples = test::whiteNoise(52, 1000, 1.0F);
  const auto work = afterSilence(samples, kHistory);
  std::vector<float> peaks(samples.size());
  PolyphaseUpsampler4x::detectPerSamplePeaks(work.data(), samples.size(), peaks.data());
  for (std::size_t i = 0; i < samples.size(); ++i) EXPECT_GE(peaks[i], std::abs(samples[i]));
}

TEST(PolyphaseUpsampler, MissesNothingByPassingOverQuietStretches) {
  test::onEachInstructionSet([] {
    expectLargest(test::whiteNoise(53, 5000, 0.8F));
    expectLargest(test::noiseBursts(54, 8000, 20000));
    // Ever louder, ever softer: every stretch must be looked at, or none but the first.
    auto rising = test::whiteNoise(55, 4000, 1.0F);
    for (std::size_t n = 0; n < rising.size(); ++n) rising[n] *= static_cast<float>(n) / 4000;
    expectLargest(rising);
    std::reverse(rising.begin(), rising.end());
    expectLargest(rising);
  });
}

/// Three sines anywhere below half the rate, the lower ones louder, and some of them clipped: where
/// stretches are passed over because they are smooth.
std::vector<float> smoothProgramme(std::uint64_t seed) {
  test::Random random(seed);
  std::vector<float> samples(3000);
  for (int partial = 0; partial < 3; ++partial) {
    const double frequency = std::pow(10.0, -3.0 * random.fraction()) * std::numbers::pi;
    const double level = 0.8 / (1 + 3 * frequency) * random.fraction();
    const double phase = 2 * std::numbers::pi * random.fraction();
    const double swell = 0.002 * random.fraction();
    for (std::size_t n = 0; n < samples.size(); ++n) {
      const auto t = static_cast<double>(n);
      samples[n] += static_cast<float>(level * std::sin(frequency * t + phase) *
                                       (1 + 0.3 * std::sin(swell * t)));
    }
  }
  const auto limit = static_cast<float>(0.2 + random.fraction());
  for (float& x : samples) x = std::clamp(x, -limit, limit);
  return samples;
}

TEST(PolyphaseUpsampler, MissesNothingByPassingOverSmoothStretches) {
  test::onEachInstructionSet([] {
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
      SCOPED_TRACE(seed);
      const auto samples = smoothProgramme(seed);
      const auto work = afterSilence(samples);
      std::vector<float> peaks(samples.size());
      PolyphaseUpsampler4x::detectPerSamplePeaks(work.data() + kPeakHistory - kHistory,
                                                 samples.size(), peaks.data());
      ASSERT_EQ(PolyphaseUpsampler4x::largestPeak(Factor::four, work.data() + kPeakHistory,
                                                  samples.size(), 0.0F),
                std::ranges::max(peaks));
      if (seed < 20) expectLargest(samples);
    }
  });
}

TEST(PolyphaseUpsampler, FindsPeaksWhereverTheyLieAmongTheStretches) {
  test::onEachInstructionSet([] {
    // Four samples of one sign make an overshoot between the middle two.
    for (std::size_t at = 0; at < 150; ++at) {
      std::vector<float> samples(200, 0.01F);
      for (std::size_t i = 0; i < 4; ++i) samples[at + i] = 0.7F;
      expectLargest(samples);
    }
    for (std::size_t count = 0; count < 140; ++count)
      expectLargest(test::whiteNoise(56, count, 1.0F));
  });
}

TEST(PolyphaseUpsampler, CountsNonFiniteSamplesAsSilence) {
  test::onEachInstructionSet([] {
    test::Random random(57);
    for (int round = 0; round < 100; ++round) {
      auto samples = test::whiteNoise(random.next(), 400, 1.0F);
      for (std::uint64_t count = random.below(6); count > 0; --count)
        samples[random.below(400)] = random.below(2) == 0 ? std::numeric_limits<float>::quiet_NaN()
                                                          : -std::numeric_limits<float>::infinity();
      expectLargest(samples);
    }
    expectLargest(std::vector<float>(200, std::numeric_limits<float>::quiet_NaN()));
  });
}

TEST(PolyphaseUpsampler, NeverFallsBelowWhatWasFoundBefore) {
  const auto work = afterSilence(test::whiteNoise(58, 500, 0.5F));
  for (const Factor factor : {Factor::none, Factor::two, Factor::four})
    EXPECT_EQ(PolyphaseUpsampler4x::largestPeak(factor, work.data() + kPeakHistory, 500, 3.0F),
              3.0F);
}

/// Samples between pages that must not be touched, at the first or the last of which they lie.
std::span<float> asFloats(std::span<std::byte> bytes) {
  return {reinterpret_cast<float*>(bytes.data()), bytes.size() / sizeof(float)};
}

TEST(PolyphaseUpsampler, ReadsNoSampleButThoseOfItsWindows) {
  const test::FencedBytes memory(1);
  const auto atBothFences = [&memory](std::size_t floats, const auto& use) {
    use(asFloats(memory.all().first(floats * sizeof(float))).data());
    use(asFloats(memory.last(floats * sizeof(float))).data());
  };
  test::onEachInstructionSet([&] {
    for (std::size_t count = 1; count < 150; ++count) {
      atBothFences(kHistory + count, [count](const float* work) {
        std::vector<float> peaks(count);
        PolyphaseUpsampler4x::detectPerSamplePeaks(work, count, peaks.data());
      });
      for (const Factor factor : {Factor::none, Factor::two, Factor::four})
        atBothFences(kPeakHistory + count, [=](const float* work) {
          PolyphaseUpsampler4x::largestPeak(factor, work + kPeakHistory, count, 0.0F);
        });
    }
  });
}

// An empty run was once preceded by a look at the samples before it.
TEST(PolyphaseUpsampler, ReadsNothingForAnEmptyRun) {
  const test::FencedBytes memory(1);
  const float* start = asFloats(memory.all()).data();
  EXPECT_EQ(PolyphaseUpsampler4x::largestPeak(Factor::four, start, 0, 0.25F), 0.25F);
}

struct WorstReadings {
  double above = -100, below = 100;
  std::string aboveAt{}, belowAt{};

  void add(double levelDB, const std::string& where) {
    if (levelDB > above) above = levelDB, aboveAt = where;
    if (levelDB < below) below = levelDB, belowAt = where;
  }
};

/// Reads stationary sines of amplitude 1 with cycles/period of the sample rate, at many phases.
void readSines(WorstReadings& worst, Factor factor, std::uint32_t cycles, std::uint32_t period) {
  const std::size_t frames = std::clamp<std::size_t>(period, 64, 480);
  for (int phase = 0; phase < 48; ++phase) {
    const auto samples =
        test::lockedSine(kPeakHistory + frames, cycles, period, std::numbers::pi * phase / 48, 1.0);
    const float peak =
        PolyphaseUpsampler4x::largestPeak(factor, samples.data() + kPeakHistory, frames, 0.0F);
    worst.add(20 * std::log10(static_cast<double>(peak)),
              std::to_string(cycles) + "/" + std::to_string(period) + " of the rate");
  }
}

/// Physical: the stated accuracy, over sines locked to the sample rate, where the worst phase stays
/// the worst, and over a grid of others.
void expectSinesWithinBounds(Factor factor, std::uint32_t sampleRate) {
  constexpr std::uint32_t kHighestHz = 20000;
  WorstReadings worst;
  for (std::uint32_t period = 2; period <= 60; ++period)
    for (std::uint32_t cycles = 1; sampleRate * cycles <= kHighestHz * period; ++cycles)
      if (std::gcd(cycles, period) == 1) readSines(worst, factor, cycles, period);
  for (std::uint32_t hertz = 97; hertz <= kHighestHz; hertz += 97)
    readSines(worst, factor, hertz, sampleRate);
  std::printf("worst readings: %+.3f dB at %s, %+.3f dB at %s\n", worst.above,
              worst.aboveAt.c_str(), worst.below, worst.belowAt.c_str());
  EXPECT_LE(worst.above, 0.1);
  EXPECT_GE(worst.below, -0.6);
}

TEST(PolyphaseUpsampler, ReadsSinesUpTo20kHzWithinTheStatedBounds) {
  expectSinesWithinBounds(Factor::four, 48000);
}

TEST(PolyphaseUpsampler, ReadsSinesUpTo20kHzWithinTheStatedBoundsAtTwiceTheRate) {
  expectSinesWithinBounds(Factor::two, 96000);
}

}  // namespace
}  // namespace orvane::core
