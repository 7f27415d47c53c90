#pragma once

#include <algorithm>
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

/// The bytes of one sample in extended precision; the value must not be beyond counting.
inline std::vector<std::byte> floatToSample(SampleEncoding encoding, float sample) {
  std::uint64_t word = 0;
  if (encoding.kind == SampleEncoding::Kind::floatingPoint) {
    word = encoding.bytes == 4 ? std::bit_cast<std::uint32_t>(sample)
                               : std::bit_cast<std::uint64_t>(static_cast<double>(sample));
  } else {
    const long double half = std::ldexp(1.0L, static_cast<int>(encoding.bits) - 1);
    long double steps = std::isnan(sample) ? 0.0L : static_cast<long double>(sample) * half;
    const long double below = std::floor(steps);
    const long double rest = steps - below;
    const bool isBelowOdd = std::fmod(below, 2.0L) != 0;
    if (std::isfinite(steps))
      steps = rest > 0.5L || (rest == 0.5L && isBelowOdd) ? below + 1 : below;
    steps = std::min(std::max(steps, -half), half - 1);
    if (encoding.kind == SampleEncoding::Kind::unsignedInteger) steps += half;
    const std::uint32_t shift = encoding.isLowAligned ? 0 : 8 * encoding.bytes - encoding.bits;
    word = steps < 0 ? ~static_cast<std::uint64_t>(-steps - 1) : static_cast<std::uint64_t>(steps);
    word <<= shift;
  }
  std::vector<std::byte> bytes(encoding.bytes);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[encoding.isBigEndian ? bytes.size() - 1 - i : i] = static_cast<std::byte>(word >> 8 * i);
  return bytes;
}

}  // namespace orvane::reference
