#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/platform/sample_conversion.h"

/// Slow, readable conversions to hold the vector kernels against.
namespace orvane::reference {

/// The sample's bytes, least significant first.
inline std::vector<unsigned> littleEndianBytes(SampleEncoding encoding, const std::byte* source) {
  const std::size_t size = encoding.bytes;
  std::vector<unsigned> bytes(size);
  for (std::size_t i = 0; i < size; ++i)
    bytes[encoding.isBigEndian ? size - 1 - i : i] = std::to_integer<unsigned>(source[i]);
  return bytes;
}

inline float sampleToFloat(SampleEncoding encoding, const std::byte* source) {
  const auto bytes = littleEndianBytes(encoding, source);
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) word |= std::uint64_t{bytes[i]} << 8 * i;
  if (encoding.kind == SampleEncoding::Kind::floatingPoint) {
    if (encoding.bytes == 4) return std::bit_cast<float>(static_cast<std::uint32_t>(word));
    return static_cast<float>(std::bit_cast<double>(word));
  }
  const std::uint32_t width = encoding.isLowAligned ? encoding.bits : 8 * encoding.bytes;
  const long double half = std::ldexp(1.0L, static_cast<int>(width) - 1);
  long double value = std::fmod(static_cast<long double>(word), 2 * half);
  if (encoding.kind == SampleEncoding::Kind::unsignedInteger)
    value -= half;
  else if (value >= half)
    value -= 2 * half;
  return static_cast<float>(value / half);
}

}  // namespace orvane::reference
