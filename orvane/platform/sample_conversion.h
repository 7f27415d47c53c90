#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"
#include "orvane/platform/sample_encoding.h"

namespace orvane {

/// Converts `count` samples to 32-bit floats of nominal range −1 … +1: integers of n bits are
/// divided by 2^(n−1), so that a negative full-scale sample is exactly −1; integers of more than 24
/// bits round to the nearest float; 32-bit floats pass bit for bit; 64-bit floats are rounded to 32
/// bits.
/// `source` is the first sample's first byte and needs no alignment; `strideSamples` is the
/// distance between samples, in samples (1 for planar, the channel count for interleaved audio).
/// Exact, and equal on every instruction set.
ORVANE_API void convertToFloat(SampleEncoding encoding, const std::byte* source,
                               std::size_t strideSamples, std::size_t count,
                               float* destination) noexcept;

/// Converts and de-interleaves as many frames as `destination` has. Values as in `convertToFloat`.
ORVANE_API void deinterleaveToFloat(SampleEncoding encoding, const std::byte* source,
                                    MutablePlanarView destination) noexcept;

/// Samples that an encoding could not hold as they were.
struct SampleLosses {
  std::uint64_t clipped = 0;    ///< finite, beyond the range; the range's end was stored
  std::uint64_t nonFinite = 0;  ///< NaN and ±∞

  bool operator==(const SampleLosses&) const = default;
  SampleLosses& operator+=(const SampleLosses& other) noexcept {
    clipped += other.clipped;
    nonFinite += other.nonFinite;
    return *this;
  }
};

/// Interleaves and converts, the way back of `deinterleaveToFloat`: an integer of n bits is
/// x · 2^(n−1), to nearest, ties to even, within [−2^(n−1), 2^(n−1) − 1]; NaN becomes 0; unsigned
/// integers add half their range; bits below the n are 0. 32-bit floats pass bit for bit. Whatever
/// `deinterleaveToFloat` gives of integers of up to 24 bits comes back as it was.
/// Equal on every instruction set and for every cutting into pieces.
ORVANE_API SampleLosses interleaveFromFloat(SampleEncoding encoding, PlanarView source,
                                            std::byte* destination) noexcept;

/// Triangular noise of ±1 step, the difference of two uniform numbers, that makes the rounding
/// error of integers independent of the signal (Lipshitz, Wannamaker and Vanderkooy, "Quantization
/// and Dither: A Theoretical Survey", JAES 40, 1992). The noise of a sample is fixed by the seed,
/// its channel and its place.
struct TPDFDither {
  std::uint64_t seed = 0;
  std::int64_t firstFrame = 0;  ///< place of the source's first frame
};

/// The same with dither before integers are rounded; floating-point samples get none.
ORVANE_API SampleLosses interleaveDithered(SampleEncoding encoding, PlanarView source,
                                           TPDFDither dither, std::byte* destination) noexcept;

}  // namespace orvane
