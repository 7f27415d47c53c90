#pragma once

#include "orvane/platform/export.h"

namespace orvane::core {

/// The K-weighting of ITU-R BS.1770-5, Annex 1: a shelf that stands for the head's acoustic effect
/// (stage 1) and a high-pass (stage 2, the RLB weighting). Both stages are second-order sections
/// with a0 = 1; stage 2 has the numerator 1, −2, 1 at every rate.
struct KWeighting {
  double shelfB0 = 0, shelfB1 = 0, shelfB2 = 0, shelfA1 = 0, shelfA2 = 0;
  double highPassA1 = 0, highPassA2 = 0;

  bool operator==(const KWeighting&) const = default;
};

/// The coefficients for a sample rate in hertz. The standard lists them for 48 kHz only and asks
/// for the same response elsewhere; they are re-derived by the bilinear transform of the analogue
/// prototype that is in common use for this purpose, which gives the standard's own figures at
/// 48 kHz to 1e-14. `sampleRate` must be at least 8000.
ORVANE_API KWeighting designKWeighting(double sampleRate);

/// Level of K-weighted power: −0.691 + 10·log10(power) (BS.1770-5, Annex 1, eq. 2); minus infinity
/// for a power of 0 or less.
ORVANE_API double loudnessOfPower(double power) noexcept;

/// The inverse of `loudnessOfPower`.
ORVANE_API double powerOfLoudness(double lufs) noexcept;

}  // namespace orvane::core
