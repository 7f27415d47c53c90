#pragma once

#include <cstddef>

#include "orvane/platform/export.h"

namespace orvane {

/// How one linear-PCM sample lies in its bytes.
enum class SampleType {
  unsignedInt8,  ///< offset 128
  signedInt8,
  int16,
  int24,      ///< three bytes
  int24In32,  ///< the low 24 bits of a 32-bit word; the top byte is ignored
  int32,      ///< also 20- and 24-bit samples left-justified in 32 bits
  float32,
  float64,
};

/// A sample type with its byte order (which one-byte types do not have).
struct SampleEncoding {
  SampleType type = SampleType::int16;
  bool isBigEndian = false;

  bool operator==(const SampleEncoding&) const = default;
};

/// Bytes that one sample takes.
ORVANE_API std::size_t bytesPerSample(SampleType type) noexcept;

/// Converts `count` samples to 32-bit floats of nominal range −1 … +1: integers of n bits are
/// divided by 2^(n−1), so that a negative full-scale sample is exactly −1; 32-bit integers round to
/// the nearest float; 32-bit floats pass bit for bit; 64-bit floats are rounded to 32 bits.
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
