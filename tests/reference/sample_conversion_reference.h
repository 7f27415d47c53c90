#pragma once

#include <cstddef>
#include <cstring>
#include <vector>

#include "orvane/platform/sample_conversion.h"

/// Slow, readable conversions to hold the vector kernels against.
namespace orvane::reference {

/// The sample's bytes, least significant first.
inline std::vector<unsigned> littleEndianBytes(SampleEncoding encoding, const std::byte* source) {
  const std::size_t size = bytesPerSample(encoding.type);
  std::vector<unsigned> bytes(size);
  for (std::size_t i = 0; i < size; ++i)
    bytes[encoding.isBigEndian ? size - 1 - i : i] = std::to_integer<unsigned>(source[i]);
  return bytes;
}

/// The lowest `count` bytes as a two's-complement number.
inline double signedValue(const std::vector<unsigned>& bytes, std::size_t count) {
  double value = 0;
  double unit = 1;
  for (std::size_t i = 0; i < count; ++i, unit *= 256) value += bytes[i] * unit;
  return bytes[count - 1] >= 128 ? value - unit : value;
}

inline float sampleToFloat(SampleEncoding encoding, const std::byte* source) {
  const auto bytes = littleEndianBytes(encoding, source);
  switch (encoding.type) {
    case SampleType::unsignedInt8:
      return static_cast<float>(bytes[0]) / 128.0F - 1.0F;
    case SampleType::signedInt8:
      return static_cast<float>(signedValue(bytes, 1) / 128.0);
    case SampleType::int16:
      return static_cast<float>(signedValue(bytes, 2) / 32768.0);
    case SampleType::int24:
    case SampleType::int24In32:
      return static_cast<float>(signedValue(bytes, 3) / 8388608.0);
    case SampleType::int32:
      return static_cast<float>(signedValue(bytes, 4) / 2147483648.0);
    case SampleType::float32: {
      unsigned bits = 0;
      for (std::size_t i = 0; i < 4; ++i) bits |= bytes[i] << 8 * i;
      float value = 0;
      std::memcpy(&value, &bits, sizeof value);
      return value;
    }
    case SampleType::float64: {
      unsigned long long bits = 0;
      for (std::size_t i = 0; i < 8; ++i)
        bits |= static_cast<unsigned long long>(bytes[i]) << 8 * i;
      double value = 0;
      std::memcpy(&value, &bits, sizeof value);
      return static_cast<float>(value);
    }
  }
  return 0;
}

}  // namespace orvane::reference
