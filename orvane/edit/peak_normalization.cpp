#include "orvane/edit/peak_normalization.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orvane/core/decibels.h"
#include "orvane/edit/channel_arrays.h"
#include "orvane/edit/level.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane::EditOperations {
namespace {

float largestFinite(std::span<const float> samples) {
  const float largest = SignalKernels::maximumMagnitude(samples.data(), samples.size());
  if (std::isfinite(largest)) return largest;
  float peak = 0;
  for (const float x : samples)
    if (std::isfinite(x)) peak = std::max(peak, std::abs(x));
  return peak;
}

}  // namespace

EditResult normalizePeak(ChannelArrays channelData, double sampleRate, double targetDB) {
  return edited(std::move(channelData), sampleRate,
                [&](MutablePlanarView audio) { normalizePeakInPlace(audio, targetDB); });
}

void normalizePeakInPlace(MutablePlanarView audio, double targetDB) {
  changeLevelInPlace(audio, peakNormalizationGainDB(finitePeak(audio), targetDB), 0,
                     static_cast<std::int64_t>(audio.frameCount()));
}

float finitePeak(PlanarView audio) noexcept {
  float peak = 0;
  for (std::size_t c = 0; c < audio.channelCount(); ++c)
    peak = std::max(peak, largestFinite(audio.samples(c)));
  return peak;
}

double peakNormalizationGainDB(float peak, double targetDB) noexcept {
  if (peak == 0) return 0;  // the formula's gain would be infinite, and ∞ · 0 is NaN
  return targetDB - core::linearToDB(static_cast<double>(peak));
}

}  // namespace orvane::EditOperations
