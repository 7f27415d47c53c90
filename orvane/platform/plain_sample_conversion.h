#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orvane/platform/planar_view.h"
#include "orvane/platform/sample_conversion.h"
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

inline void deinterleave(SampleEncoding encoding, const std::uint8_t* source,
                         const MutablePlanarView& destination) {
  const std::size_t channels = destination.channelCount();
  for (std::size_t c = 0; c < channels; ++c)
    convert(encoding, source + c * encoding.bytes, channels, destination.frameCount(),
            destination.channel(c));
}

inline void storeWord(SampleEncoding encoding, std::uint64_t word, std::uint8_t* destination) {
  for (std::size_t i = 0; i < encoding.bytes; ++i)
    destination[encoding.isBigEndian ? encoding.bytes - 1 - i : i] =
        static_cast<std::uint8_t>(word >> 8 * i);
}

/// The word of an integer sample; `noise` in steps.
inline std::uint64_t toWord(SampleEncoding encoding, float sample, double noise,
                            SampleLosses& losses) {
  // A float has 24 significant bits, a double 53: the product is exact, and so is the sum with a
  // noise of 32 bits as far as it matters for the rounding.
  const double fullScale = std::ldexp(1.0, static_cast<int>(encoding.bits) - 1);
  const double steps = std::nearbyint(static_cast<double>(sample) * fullScale + noise);
  const std::uint64_t highest = (std::uint64_t{1} << (encoding.bits - 1)) - 1;
  std::uint64_t word = 0;
  if (!std::isfinite(sample)) ++losses.nonFinite;
  if (steps >= fullScale) {
    word = highest;
    losses.clipped += std::isfinite(sample) ? 1U : 0U;
  } else if (steps < -fullScale) {
    word = ~highest;
    losses.clipped += std::isfinite(sample) ? 1U : 0U;
  } else if (!std::isnan(steps)) {
    word = static_cast<std::uint64_t>(static_cast<std::int64_t>(steps));
  }
  if (encoding.kind == SampleEncoding::Kind::unsignedInteger)
    word = (word ^ (highest + 1)) & (highest << 1 | 1);
  return encoding.isLowAligned ? word : word << (8 * encoding.bytes - encoding.bits);
}

/// A well-mixed number for every place: the finaliser of SplitMix64 (Steele, Lea and Flood, "Fast
/// Splittable Pseudorandom Number Generators", OOPSLA 2014).
inline std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9U;
  value = (value ^ value >> 27) * 0x94D049BB133111EBU;
  return value ^ value >> 31;
}

/// In steps, −1 … +1.
inline double noiseAt(const TPDFDither& dither, std::size_t channel, std::size_t frame) {
  constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15U;
  const std::uint64_t stream = mixed(dither.seed + (channel + 1) * kGolden);
  const std::uint64_t place = static_cast<std::uint64_t>(dither.firstFrame) + frame;
  const std::uint64_t random = mixed(stream + (place + 1) * kGolden);
  const auto lower = static_cast<double>(random & 0xFFFFFFFFU);
  return (static_cast<double>(random >> 32) - lower) * 0x1p-32;
}

inline SampleLosses interleave(SampleEncoding encoding, const PlanarView& source,
                               std::uint8_t* destination, const TPDFDither* dither = nullptr) {
  SampleLosses losses;
  const bool isFloat = encoding.kind == SampleEncoding::Kind::floatingPoint;
  for (std::size_t frame = 0; frame < source.frameCount(); ++frame)
    for (std::size_t channel = 0; channel < source.channelCount(); ++channel) {
      const float sample = source.channel(channel)[frame];
      std::uint64_t word = 0;
      if (!isFloat) {
        const double noise = dither != nullptr ? noiseAt(*dither, channel, frame) : 0.0;
        word = toWord(encoding, sample, noise, losses);
      } else {
        losses.nonFinite += std::isfinite(sample) ? 0U : 1U;
        word = encoding.bytes == 4 ? std::bit_cast<std::uint32_t>(sample)
                                   : std::bit_cast<std::uint64_t>(static_cast<double>(sample));
      }
      storeWord(encoding, word, destination);
      destination += encoding.bytes;
    }
  return losses;
}

}  // namespace orvane::PlainSampleConversion
