#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "orvane/platform/sample_encoding.h"

/// Sample conversion without vectors: for machines that have none of the instruction sets, and for
/// encodings that hardly any file has.
namespace orvane::PlainSampleConversion {

inline std::uint64_t loadWord(SampleEncoding encoding, const std::uint8_t* source) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < encoding.bytes; ++i)
    word |= std::uint64_t{source[i]} << 8 * (encoding.isBigEndian ? encoding.bytes - 1 - i : i);
  return word;
}

inline float toFloat(SampleEncoding encoding, const std::uint8_t* source) {
  const std::uint64_t word = loadWord(encoding, source);
  if (encoding.kind == SampleEncoding::Kind::floatingPoint)
    return encoding.bytes == 4 ? std::bit_cast<float>(static_cast<std::uint32_t>(word))
                               : static_cast<float>(std::bit_cast<double>(word));
  // Left-justified in 64 bits, so that full scale is 2^63 whatever the width; rounded once.
  const std::uint32_t width = encoding.isLowAligned ? encoding.bits : 8 * encoding.bytes;
  std::uint64_t justified = word << (64 - width);
  if (encoding.kind == SampleEncoding::Kind::unsignedInteger) justified ^= std::uint64_t{1} << 63;
  return static_cast<float>(static_cast<std::int64_t>(justified)) * 0x1p-63F;
}

inline void convert(SampleEncoding encoding, const std::uint8_t* source, std::size_t strideSamples,
                    std::size_t count, float* destination) {
  const std::size_t step = strideSamples * encoding.bytes;
  for (std::size_t i = 0; i < count; ++i) destination[i] = toFloat(encoding, source + i * step);
}

inline void deinterleave(SampleEncoding encoding, const std::uint8_t* source, std::size_t frames,
                         std::size_t channels, float* const* destinations) {
  for (std::size_t c = 0; c < channels; ++c)
    convert(encoding, source + c * encoding.bytes, channels, frames, destinations[c]);
}

}  // namespace orvane::PlainSampleConversion
