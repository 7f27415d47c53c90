#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "orvane/core/peak/polyphase_upsampler.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// What a limiter goes by: how high each frame of a programme peaks between and at its samples,
/// over all channels, where that exceeds a ceiling. A frame's peak is that of the windows which end
/// at it, at four times the rate whatever the rate is. Slices of any size give the same peaks.
class ORVANE_TESTING_API LimiterPeaks {
 public:
  LimiterPeaks(std::size_t channelCount, float ceiling);

  /// One peak per frame of the next slice, the ceiling where it is not exceeded. Samples that are
  /// not finite become 0 in the slice.
  void find(MutablePlanarView slice, std::span<float> peaks);

  /// The same of the windows that end behind the last sample. They belong to the last frame: audio
  /// that breaks off on a crest overshoots behind its end.
  float behindTheEnd() const;

  bool hasSilencedSamples() const noexcept { return hasSilencedSamples_; }

 private:
  static constexpr std::size_t kHistory = core::PolyphaseUpsampler4x::kHistory;
  using History = std::array<float, kHistory>;

  float ceiling_;
  std::vector<History> histories_;  ///< the samples before the next slice
  bool hasSilencedSamples_ = false;
};

}  // namespace orvane::EditOperations
