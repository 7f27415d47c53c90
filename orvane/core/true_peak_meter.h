#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "orvane/core/polyphase_upsampler.h"
#include "orvane/platform/export.h"

namespace orvane::core {

/// Largest interpolated magnitude of each channel, as linear amplitude.
class ORVANE_TESTING_API TruePeakMeter {
 public:
  TruePeakMeter(double sampleRate, std::size_t channelCount);

  /// Next piece; pieces of any size give the same peaks.
  void process(std::span<const float* const> channelData, std::size_t frameCount);
  /// Lets the filter run out over silence.
  void flush();

  std::span<const float> peaks() const noexcept { return peaks_; }

 private:
  using History = std::array<float, PolyphaseUpsampler4x::kPeakHistory>;

  void processChannel(std::size_t channel, const float* samples, std::size_t frameCount);

  PolyphaseUpsampler4x::Factor factor_;
  std::vector<History> histories_;
  std::vector<float> peaks_;
};

}  // namespace orvane::core
