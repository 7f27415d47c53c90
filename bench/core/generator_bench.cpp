// Rendering of test signals. Throughput is in frames of one channel per second ("items").
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "orvane/core/generator/signal_generator.h"

namespace orvane::core {
namespace {

/// A minute of one waveform, which must come out at its level: its peak, or its RMS.
void render(benchmark::State& state, GeneratorWaveform waveform, bool isNoise) {
  GeneratorSpec spec;
  spec.waveform = waveform;
  spec.frequency = 20.1;
  spec.durationSeconds = 60;
  double peak = 0, squares = 0;
  const auto channels = SignalGenerator::render(spec);
  for (const float sample : channels.front()) {
    const auto x = static_cast<double>(sample);
    peak = std::max(peak, std::abs(x));
    squares += x * x;
  }
  const auto frames = static_cast<double>(spec.frameCount());
  const double level = 20 * std::log10(isNoise ? std::sqrt(squares / frames) : peak);
  if (std::abs(level - spec.levelDB) > 0.01) return state.SkipWithError("wrong level");
  for (auto _ : state) benchmark::DoNotOptimize(SignalGenerator::render(spec));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(spec.frameCount()));
}
BENCHMARK_CAPTURE(render, sine, GeneratorWaveform::sine, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(render, saw, GeneratorWaveform::saw, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(render, sweep, GeneratorWaveform::logarithmicSweep, false)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(render, clicks, GeneratorWaveform::clickTrain, false)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(render, whiteNoise, GeneratorWaveform::whiteNoise, true)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(render, pinkNoise, GeneratorWaveform::pinkNoise, true)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvane::core
