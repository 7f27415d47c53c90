#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "orvane/core/peak/polyphase_upsampler.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::core {

/// The largest interpolated magnitude of each channel, as linear amplitude: ×4 below 96 kHz, ×2
/// below 192 kHz, the samples alone from there on and below 8 kHz (BS.1770-5, Annex 2). Never below
/// the sample peak. Non-finite samples count as 0.
class ORVANE_API TruePeakMeter {
 public:
  TruePeakMeter(double sampleRate, std::size_t channelCount);
  /// Interpolates by a factor of the caller's own, and looks for peaks above `floor` only: the
  /// figures are `floor` where there are none.
  TruePeakMeter(PolyphaseUpsampler4x::Factor factor, std::size_t channelCount, float floor);

  /// Next piece; pieces of any size give the same peaks.
  void process(PlanarView audio);
  /// Lets the filter run out over silence.
  void flush();

  /// Since the beginning, or since `resetPeaks`.
  std::span<const float> peaks() const noexcept { return peaks_; }
  /// Begins anew with the next piece, without forgetting the samples before it.
  void resetPeaks() noexcept;

 private:
  using History = std::array<float, PolyphaseUpsampler4x::kPeakHistory>;

  void processChannel(std::size_t channel, const float* samples, std::size_t frameCount);

  PolyphaseUpsampler4x::Factor factor_;
  std::vector<History> histories_;
  std::vector<float> peaks_;
};

}  // namespace orvane::core
