#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "orvane/rawpcm/raw_pcm_format.h"
#include "tests/support/byte_writer.h"
#include "tests/support/programme.h"

namespace orvane::test {

/// The nearest number of that many bits; what leaves ±1 is cut off.
inline std::int64_t rounded(double sample, int bits) {
  const double scale = std::ldexp(1.0, bits - 1);
  return static_cast<std::int64_t>(std::clamp(std::nearbyint(sample * scale), -scale, scale - 1));
}

/// One sample as headerless PCM holds it. 24 bits in 32 have their sign in the upper byte too.
inline void writeRawSample(ByteWriter& writer, RawPCMFormat::Encoding encoding, float sample) {
  using enum RawPCMFormat::Encoding;
  const auto integer = [&](int bits, std::size_t bytes) {
    writer.number(static_cast<std::uint64_t>(rounded(static_cast<double>(sample), bits)), bytes);
  };
  switch (encoding) {
    case uint8:
      writer.u8(static_cast<std::uint64_t>(rounded(static_cast<double>(sample), 8) + 128));
      break;
    case int16:
      return integer(16, 2);
    case int24Packed:
      return integer(24, 3);
    case int24In32:
      return integer(24, 4);
    case int32:
      return integer(32, 4);
    case float32:
      writer.u32(std::bit_cast<std::uint32_t>(sample));
      break;
    case float64:
      writer.float64(static_cast<double>(sample));
      break;
  }
}

/// The interleaved samples of a programme, without what stands before them.
inline Bytes rawSamples(const Programme& programme, const RawPCMFormat& format) {
  const bool isBig = format.endianness == RawPCMFormat::Endianness::big;
  ByteWriter writer(isBig ? std::endian::big : std::endian::little);
  for (std::size_t frame = 0; frame < programme.frameCount(); ++frame)
    for (const auto& channel : programme.channels)
      writeRawSample(writer, format.encoding, channel[frame]);
  return writer.bytes();
}

}  // namespace orvane::test
