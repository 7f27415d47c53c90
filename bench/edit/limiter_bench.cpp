// The limiter and its stages on ten minutes of stereo, and what is built on it. Times are for the
// whole programme; "items" are its frames.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "orvane/edit/level.h"
#include "orvane/edit/limiter_gain.h"
#include "orvane/edit/limiter_peaks.h"
#include "orvane/edit/loudness_normalizer.h"
#include "orvane/edit/non_speech_expander.h"
#include "orvane/edit/true_peak_limiter.h"
#include "tests/reference/limiter_reference.h"
#include "tests/support/signals.h"

namespace orvane::EditOperations {
namespace {

constexpr std::uint32_t kRate = 48000;
constexpr std::size_t kFrames = std::size_t{600} * kRate;
constexpr double kCeilingDB = -1;

/// A minute of music, over and over: as it is its peaks reach −0.9 dBFS, `gainDB` above that they
/// are to be limited.
struct Programme {
  ChannelArrays channels = ChannelArrays(2, std::vector<float>(kFrames));
  std::vector<float*> pointers = {channels[0].data(), channels[1].data()};

  explicit Programme(double gainDB) {
    static const auto kMinute = test::music(71, kRate, 2, 60.0).channels;
    const float gain = linearGain(gainDB);
    for (std::size_t c = 0; c < 2; ++c)
      for (std::size_t i = 0; i < kFrames; ++i)
        channels[c][i] = gain * kMinute[c][i % kMinute[c].size()];
  }
  MutablePlanarView view() { return {pointers, kFrames}; }
};

bool limitsAsTheFormulasSay(double gainDB) {
  auto channels = test::music(72, kRate, 2, 2.0).channels;
  for (auto& channel : channels)
    for (float& x : channel) x *= linearGain(gainDB);
  const auto expected = reference::limited(channels, kRate, linearGain(kCeilingDB));
  const auto result = limitTruePeak(std::move(channels), kRate, kCeilingDB);
  for (std::size_t c = 0; c < 2; ++c)
    for (std::size_t i = 0; i < expected.channels[c].size(); ++i)
      if (std::abs(result.channelData[c][i] - expected.channels[c][i]) > 3e-7F) return false;
  return true;
}

/// Times `work` on a programme that is made anew for every turn.
template <class Work>
void timeOnProgramme(benchmark::State& state, double gainDB, Work work) {
  if (!limitsAsTheFormulasSay(gainDB)) return state.SkipWithError("wrong samples");
  const Programme source(gainDB);
  Programme programme = source;
  programme.pointers = {programme.channels[0].data(), programme.channels[1].data()};
  for (auto _ : state) {
    state.PauseTiming();
    for (std::size_t c = 0; c < 2; ++c)
      std::copy(source.channels[c].begin(), source.channels[c].end(), programme.pointers[c]);
    state.ResumeTiming();
    work(programme.view());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFrames));
}

/// Arguments: how far the music is raised, in decibels, and threads.
void limiter(benchmark::State& state) {
  const Execution execution{.threadCount = static_cast<std::size_t>(state.range(1))};
  timeOnProgramme(state, static_cast<double>(state.range(0)), [&](MutablePlanarView audio) {
    applyTruePeakLimiter(audio, linearGain(kCeilingDB), kRate, execution);
  });
}
BENCHMARK(limiter)
    ->ArgsProduct({{0, 6, 15}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void limiterPeaks(benchmark::State& state) {
  std::vector<float> peaks(1 << 16);
  timeOnProgramme(state, static_cast<double>(state.range(0)), [&](MutablePlanarView audio) {
    LimiterPeaks finder(2, linearGain(kCeilingDB));
    for (std::size_t at = 0; at < kFrames; at += peaks.size()) {
      const auto slice = audio.slice(at, std::min(peaks.size(), kFrames - at));
      finder.find(slice, std::span(peaks).first(slice.frameCount()));
    }
  });
}
BENCHMARK(limiterPeaks)->Arg(0)->Arg(6)->Arg(15)->Unit(benchmark::kMillisecond);

void limiterGain(benchmark::State& state) {
  Programme programme(static_cast<double>(state.range(0)));
  std::vector<float> peaks(kFrames);
  const float ceiling = linearGain(kCeilingDB);
  LimiterPeaks(2, ceiling).find(programme.view(), peaks);
  for (auto _ : state) {
    LimiterGain gain(kRate, ceiling);
    constexpr std::size_t kSlice = 1 << 16;
    for (std::size_t at = 0; at < kFrames; at += kSlice)
      benchmark::DoNotOptimize(
          gain.push(std::span(peaks).subspan(at, std::min(kSlice, kFrames - at))).data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFrames));
}
BENCHMARK(limiterGain)->Arg(0)->Arg(6)->Arg(15)->Unit(benchmark::kMillisecond);

/// To a target that takes one pass of the limiter, and to one that takes three.
void loudnessNormalization(benchmark::State& state) {
  const Execution execution{.threadCount = static_cast<std::size_t>(state.range(1))};
  timeOnProgramme(state, 0, [&](MutablePlanarView audio) {
    const auto outcome = normalizeLUFSInPlace(audio, kRate, static_cast<double>(state.range(0)),
                                              kCeilingDB, std::nullopt, execution);
    state.counters["passes"] = outcome.limiterPasses;
    state.counters["LUFS"] = outcome.loudnessAfter;
  });
}
BENCHMARK(loudnessNormalization)
    ->ArgsProduct({{-23, -9}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void nonSpeechExpansion(benchmark::State& state) {
  std::vector<bool> mask(6000);
  for (std::size_t block = 0; block < mask.size(); ++block) mask[block] = block % 100 < 60;
  timeOnProgramme(state, 0, [&](MutablePlanarView audio) {
    expandNonSpeechInPlace(audio, kRate, mask, kRate / 10, {.reductionDB = -12});
  });
}
BENCHMARK(nonSpeechExpansion)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvane::EditOperations
