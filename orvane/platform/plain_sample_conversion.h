#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "orvane/platform/sample_conversion.h"

/// Sample conversion without vectors, for machines that have none of the instruction sets.
namespace orvane::PlainSampleConversion {

template <std::size_t kBytes>
std::uint64_t loadWord(const std::uint8_t* source, bool isBigEndian) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < kBytes; ++i)
    word |= std::uint64_t{source[i]} << 8 * (isBigEndian ? kBytes - 1 - i : i);
  return word;
}

/// A sample left-justified in 32 bits, scaled: exact for up to 24 bits, rounded once beyond.
inline float scaled(std::uint64_t leftJustified) {
  return static_cast<float>(static_cast<std::int32_t>(leftJustified)) * (1.0F / 2147483648.0F);
}

inline float toFloat(SampleEncoding encoding, const std::uint8_t* source) {
  const bool big = encoding.isBigEndian;
  switch (encoding.type) {
    case SampleType::unsignedInt8:
      return scaled((loadWord<1>(source, false) ^ 0x80U) << 24);
    case SampleType::signedInt8:
      return scaled(loadWord<1>(source, false) << 24);
    case SampleType::int16:
      return scaled(loadWord<2>(source, big) << 16);
    case SampleType::int24:
      return scaled(loadWord<3>(source, big) << 8);
    case SampleType::int24In32:
      return scaled(loadWord<4>(source, big) << 8);
    case SampleType::int32:
      return scaled(loadWord<4>(source, big));
    case SampleType::float32:
      return std::bit_cast<float>(static_cast<std::uint32_t>(loadWord<4>(source, big)));
    case SampleType::float64:
      return static_cast<float>(std::bit_cast<double>(loadWord<8>(source, big)));
  }
  return 0;
}

inline void convert(SampleEncoding encoding, const std::uint8_t* source, std::size_t strideSamples,
                    std::size_t count, float* destination) {
  const std::size_t step = strideSamples * bytesPerSample(encoding.type);
  for (std::size_t i = 0; i < count; ++i) destination[i] = toFloat(encoding, source + i * step);
}

}  // namespace orvane::PlainSampleConversion
