#include "orvane/platform/sample_conversion.h"

#include <bit>
#include <cstdint>

namespace orvane {
namespace {

constexpr float kScale32 = 1.0F / 2147483648.0F;

template <std::size_t kBytes>
std::uint64_t loadWord(const std::byte* source, bool isBigEndian) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < kBytes; ++i) {
    const std::size_t place = isBigEndian ? kBytes - 1 - i : i;
    word |= std::to_integer<std::uint64_t>(source[i]) << (8 * place);
  }
  return word;
}

/// A sample left-justified in 32 bits, scaled: exact for up to 24 bits, rounded once beyond.
float scaled(std::uint64_t leftJustified) {
  return static_cast<float>(static_cast<std::int32_t>(leftJustified)) * kScale32;
}

float toFloat(SampleEncoding encoding, const std::byte* source) {
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
      return scaled(loadWord<4>(source, big) << 8 & 0xFFFFFF00U);
    case SampleType::int32:
      return scaled(loadWord<4>(source, big));
    case SampleType::float32:
      return std::bit_cast<float>(static_cast<std::uint32_t>(loadWord<4>(source, big)));
    case SampleType::float64:
      return static_cast<float>(std::bit_cast<double>(loadWord<8>(source, big)));
  }
  return 0;
}

}  // namespace

std::size_t bytesPerSample(SampleType type) noexcept {
  switch (type) {
    case SampleType::unsignedInt8:
    case SampleType::signedInt8:
      return 1;
    case SampleType::int16:
      return 2;
    case SampleType::int24:
      return 3;
    case SampleType::int24In32:
    case SampleType::int32:
    case SampleType::float32:
      return 4;
    case SampleType::float64:
      return 8;
  }
  return 0;
}

void convertToFloat(SampleEncoding encoding, const std::byte* source, std::size_t strideSamples,
                    std::size_t count, float* destination) noexcept {
  const std::size_t step = strideSamples * bytesPerSample(encoding.type);
  for (std::size_t i = 0; i < count; ++i) destination[i] = toFloat(encoding, source + i * step);
}

void deinterleaveToFloat(SampleEncoding encoding, const std::byte* source, std::size_t frames,
                         std::size_t channelCount, float* const* destinations) noexcept {
  const std::size_t sampleBytes = bytesPerSample(encoding.type);
  for (std::size_t c = 0; c < channelCount; ++c)
    convertToFloat(encoding, source + c * sampleBytes, channelCount, frames, destinations[c]);
}

}  // namespace orvane
