#include "orvane/container/chunked/stored_sample_conversion.h"

#include <cstdint>
#include <optional>

#include "orvane/platform/sample_conversion.h"

namespace orvane {
namespace {

/// The vector kernels' name for a stored sample; absent for integers wider than 32 bits.
std::optional<SampleEncoding> kernelEncoding(const StoredSample& sample) {
  const auto encoding = [&](SampleType type) { return SampleEncoding{type, sample.isBigEndian}; };
  if (sample.kind == StoredSample::Kind::floatingPoint)
    return encoding(sample.bytes == 4 ? SampleType::float32 : SampleType::float64);
  switch (sample.bytes) {
    case 1:
      return encoding(sample.kind == StoredSample::Kind::unsignedInteger ? SampleType::unsignedInt8
                                                                         : SampleType::signedInt8);
    case 2:
      return encoding(SampleType::int16);
    case 3:
      return encoding(SampleType::int24);
    case 4:
      return encoding(SampleType::int32);
    default:
      return {};
  }
}

/// Integers of five to eight bytes, which hardly any file has: one at a time.
void convertWideInteger(const StoredSample& sample, const std::byte* source, std::size_t stride,
                        std::size_t count, float* destination) {
  for (std::size_t i = 0; i < count; ++i, source += stride) {
    std::uint64_t value = 0;
    for (std::uint32_t b = 0; b < sample.bytes; ++b) {
      const std::uint32_t position = sample.isBigEndian ? b : sample.bytes - 1 - b;
      value = (value << 8) | std::to_integer<std::uint64_t>(source[position]);
    }
    // Left-justified in 64 bits, so that full scale is 2^63 whatever the width.
    value <<= 64 - 8 * sample.bytes;
    destination[i] = static_cast<float>(static_cast<std::int64_t>(value)) * 0x1p-63F;
  }
}

}  // namespace

void deinterleaveStoredSamples(const StoredSample& sample, const std::byte* source,
                               std::size_t frames, std::size_t channelCount,
                               float* const* destinations) noexcept {
  if (const auto encoding = kernelEncoding(sample)) {
    deinterleaveToFloat(*encoding, source, frames, channelCount, destinations);
    return;
  }
  for (std::size_t c = 0; c < channelCount; ++c)
    convertWideInteger(sample, source + c * sample.bytes, channelCount * sample.bytes, frames,
                       destinations[c]);
}

}  // namespace orvane
