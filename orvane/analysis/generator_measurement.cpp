#include "orvane/analysis/generator_measurement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "orvane/core/decibels.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane {
namespace {

/// Absent where there is no signal.
std::optional<float> levelOf(double amplitude) {
  if (!(amplitude > 0)) return std::nullopt;
  return static_cast<float>(core::linearToDB(amplitude));
}

std::optional<float> loudnessOf(const std::vector<std::vector<float>>& channels,
                                double sampleRate) {
  std::optional<std::vector<float>> weights;
  if (channels.size() >= 3) weights.emplace(channels.size(), 1.0F);
  core::LoudnessProcessor meter(sampleRate, static_cast<std::uint32_t>(channels.size()),
                                std::nullopt, std::move(weights));
  std::vector<const float*> pointers;
  for (const auto& channel : channels) pointers.push_back(channel.data());
  meter.process(pointers, channels.front().size());
  meter.flushPartialBlock();
  const float loudness = meter.integratedLUFS();
  return std::isfinite(loudness) ? std::optional(loudness) : std::nullopt;
}

}  // namespace

GeneratorMeasurement::Metrics GeneratorMeasurement::measure(
    const std::vector<std::vector<float>>& channels, double sampleRate) {
  if (channels.empty() || channels.front().empty()) return {};
  const std::size_t frames = channels.front().size();
  float peak = 0;
  double meanSquares = 0;
  for (const auto& channel : channels) {
    precondition(channel.size() == frames, "All channels have the same length");
    const auto statistics = SignalKernels::runStatistics(channel.data(), frames);
    peak = std::max(peak, statistics.peak);
    meanSquares += statistics.sumOfSquares / static_cast<double>(frames);
  }
  return {.peakDB = levelOf(static_cast<double>(peak)),
          .rmsDB = levelOf(std::sqrt(meanSquares / static_cast<double>(channels.size()))),
          .integratedLUFS = loudnessOf(channels, sampleRate)};
}

}  // namespace orvane
