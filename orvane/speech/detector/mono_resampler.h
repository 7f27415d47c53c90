#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/platform/planar_view.h"

namespace orvane {

/// Mixes planar channels to mono and interpolates linearly between the mixed samples, piece by
/// piece through a small buffer. Equal results on every instruction set and for every cutting into
/// pieces.
struct MonoResampler {
  PlanarView audio{};           ///< of at least one channel
  std::int64_t frameCount = 0;  ///< of the source; at least 1
  double ratio = 1;             ///< source rate ÷ output rate, above 0
  std::int64_t firstFrame = 0;  ///< of the source: what the audio begins with

  /// Output samples `start` … `end` − 1, to `output`. With the mixed samples s, sample i is
  /// s[i0] + (s[i0 + 1] − s[i0]) × (ratio × i − i0), i0 = ⌊ratio × i⌋, indices clamped to the last
  /// frame; positions in 64-bit, values in 32-bit floats.
  void run(std::int64_t start, std::int64_t end, float* output, std::size_t threadCount = 1) const;
};

}  // namespace orvane
