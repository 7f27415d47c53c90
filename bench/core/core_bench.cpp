// The meters' kernels. Throughput is in frames of one channel per second ("items").
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "orvane/core/loudness/k_weighting.h"
#include "orvane/core/loudness/k_weighting_kernel.h"
#include "orvane/core/loudness/loudness_gating.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/core/peak/polyphase_upsampler.h"
#include "tests/reference/loudness_reference.h"
#include "tests/reference/true_peak_reference.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

constexpr std::uint32_t kSampleRate = 48000;

bool isNear(double actual, double expected, double relative) {
  return std::abs(actual - expected) <= relative * std::abs(expected);
}

void countItems(benchmark::State& state, std::size_t perIteration) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(perIteration));
}

/// As many signals side by side as the kernel takes.
void kWeighting(benchmark::State& state) {
  constexpr std::size_t kFrames = 1 << 14;
  const auto programme = test::music(1, kSampleRate, kKWeightingLanes, 1.0);
  const auto lanes = programme.pointers();
  const KWeighting coefficients = designKWeighting(kSampleRate);
  double sums[kKWeightingLanes] = {};
  KWeightingState filters;
  kWeightedSums(coefficients, lanes.data(), kKWeightingLanes, kFrames, filters, sums);
  for (std::size_t lane = 0; lane < kKWeightingLanes; ++lane) {
    double expected = 0;
    for (const double y : test::reference::kWeighted(
             std::span(programme.channels[lane]).first(kFrames), kSampleRate))
      expected += y * y;
    if (!isNear(sums[lane], expected, 1e-10)) return state.SkipWithError("wrong sum");
  }
  for (auto _ : state) {
    kWeightedSums(coefficients, lanes.data(), kKWeightingLanes, kFrames, filters, sums);
    benchmark::DoNotOptimize(sums);
  }
  countItems(state, kFrames * kKWeightingLanes);
}
BENCHMARK(kWeighting);

void largestPeak(benchmark::State& state, PolyphaseUpsampler4x::Factor factor,
                 const std::vector<float>& signal) {
  std::vector<float> samples(PolyphaseUpsampler4x::kPeakHistory);
  samples.insert(samples.end(), signal.begin(), signal.end());
  samples.resize(samples.size() + PolyphaseUpsampler4x::kPeakHistory);
  const auto measure = [&] {
    return PolyphaseUpsampler4x::largestPeak(
        factor, samples.data() + PolyphaseUpsampler4x::kPeakHistory,
        samples.size() - PolyphaseUpsampler4x::kPeakHistory, 0.0F);
  };
  const double expected = test::reference::truePeak(
      signal, factor == PolyphaseUpsampler4x::Factor::four ? 48000 : 96000);
  if (!isNear(static_cast<double>(measure()), expected, 1e-5))
    return state.SkipWithError("wrong peak");
  for (auto _ : state) benchmark::DoNotOptimize(measure());
  countItems(state, signal.size());
}

/// A programme as it comes: most of it cannot raise the maximum.
void truePeakOfMusic(benchmark::State& state) {
  largestPeak(state, PolyphaseUpsampler4x::Factor::four,
              test::music(2, kSampleRate, 1, 3.0).channels.front());
}
BENCHMARK(truePeakOfMusic);

/// Ever louder: nothing can be passed over.
std::vector<float> risingNoise() {
  auto samples = test::whiteNoise(3, 1 << 16, 1.0F);
  for (std::size_t n = 0; n < samples.size(); ++n)
    samples[n] *= static_cast<float>(n) / static_cast<float>(samples.size());
  return samples;
}

void truePeakWithoutRest(benchmark::State& state) {
  largestPeak(state, PolyphaseUpsampler4x::Factor::four, risingNoise());
}
BENCHMARK(truePeakWithoutRest);

void truePeakAtTwiceTheRateWithoutRest(benchmark::State& state) {
  largestPeak(state, PolyphaseUpsampler4x::Factor::two, risingNoise());
}
BENCHMARK(truePeakAtTwiceTheRateWithoutRest);

void perSamplePeaks(benchmark::State& state) {
  constexpr std::size_t kFrames = 1 << 14;
  const auto signal = test::whiteNoise(4, kFrames, 1.0F);
  std::vector<float> work(PolyphaseUpsampler4x::kHistory);
  work.insert(work.end(), signal.begin(), signal.end());
  std::vector<float> peaks(kFrames);
  PolyphaseUpsampler4x::detectPerSamplePeaks(work.data(), kFrames, peaks.data());
  const auto expected = test::reference::windowPeaks(signal, test::reference::quarterFilters());
  for (std::size_t n = 0; n < kFrames; ++n)
    if (std::abs(static_cast<double>(peaks[n]) - expected[n]) > 1e-5)
      return state.SkipWithError("wrong peak");
  for (auto _ : state) {
    PolyphaseUpsampler4x::detectPerSamplePeaks(work.data(), kFrames, peaks.data());
    benchmark::DoNotOptimize(peaks.data());
  }
  countItems(state, kFrames);
}
BENCHMARK(perSamplePeaks);

/// Powers of the gating blocks of an hour.
std::vector<double> hourOfPowers() {
  test::Random random(5);
  std::vector<double> powers(36000);
  for (double& power : powers) power = powerOfLoudness(random.between(-80, -10));
  return powers;
}

void runningGate(benchmark::State& state) {
  const auto powers = hourOfPowers();
  const auto running = LoudnessGating::runningGatedPowers(powers);
  for (std::size_t i = 0; i < powers.size(); i += 1999)
    if (std::abs(loudnessOfPower(running[i]) -
                 test::reference::gatedLUFS(std::span(powers).first(i + 1))) > 1e-9)
      return state.SkipWithError("wrong loudness");
  for (auto _ : state) benchmark::DoNotOptimize(LoudnessGating::runningGatedPowers(powers));
  countItems(state, powers.size());
}
BENCHMARK(runningGate)->Unit(benchmark::kMillisecond);

void loudnessRange(benchmark::State& state) {
  const auto powers = hourOfPowers();
  if (std::abs(loudnessRangeOfPowers(powers) - test::reference::loudnessRange(powers)) > 1e-9)
    return state.SkipWithError("wrong range");
  for (auto _ : state) benchmark::DoNotOptimize(loudnessRangeOfPowers(powers));
  countItems(state, powers.size());
}
BENCHMARK(loudnessRange)->Unit(benchmark::kMillisecond);

/// The whole loudness meter over a minute of stereo in one piece, without true peak.
void loudnessMeter(benchmark::State& state) {
  const auto programme = test::music(6, kSampleRate, 2, 60);
  const auto measure = [&programme] {
    LoudnessProcessor meter(kSampleRate, 2);
    meter.process(programme.pointers(), programme.frameCount());
    meter.flushPartialBlock();
    return static_cast<double>(meter.integratedLUFS());
  };
  const std::vector<float> weights{1.0F, 1.0F};
  const double expected = test::reference::measureLoudness(programme, weights).integratedLUFS;
  if (std::abs(measure() - expected) > 1e-5) return state.SkipWithError("wrong loudness");
  for (auto _ : state) benchmark::DoNotOptimize(measure());
  countItems(state, programme.frameCount() * 2);
}
BENCHMARK(loudnessMeter)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvane::core
