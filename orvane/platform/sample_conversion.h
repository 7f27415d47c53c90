#pragma once

#include <cstddef>

#include "orvane/platform/export.h"
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

/// Converts and de-interleaves `frames` frames of `channelCount` channels: sample (frame, channel)
/// goes to `destinations[channel][frame]`. Values as in `convertToFloat`.
ORVANE_API void deinterleaveToFloat(SampleEncoding encoding, const std::byte* source,
                                    std::size_t frames, std::size_t channelCount,
                                    float* const* destinations) noexcept;

}  // namespace orvane
