#pragma once

#include <cstdint>

namespace orvane {

/// How one linear-PCM sample lies in its bytes. Full scale is that of all bits of its bytes, or for
/// `isLowAligned` of `bits` alone.
struct SampleEncoding {
  enum class Kind { signedInteger, unsignedInteger, floatingPoint };

  Kind kind = Kind::signedInteger;
  std::uint32_t bits = 0;     ///< that mean something
  std::uint32_t bytes = 0;    ///< that a sample takes, 1 … 8; 4 or 8 for floating point
  bool isBigEndian = false;   ///< never for a single byte
  bool isLowAligned = false;  ///< the bits stand at the low end of the bytes, not at the high one

  bool operator==(const SampleEncoding&) const = default;

  /// The encoding whose bits fill its bytes.
  static constexpr SampleEncoding signedInteger(std::uint32_t bytes, bool isBigEndian = false) {
    return {Kind::signedInteger, 8 * bytes, bytes, isBigEndian && bytes > 1};
  }
  /// An offset of half the range lies on its values.
  static constexpr SampleEncoding unsignedInteger(std::uint32_t bytes, bool isBigEndian = false) {
    return {Kind::unsignedInteger, 8 * bytes, bytes, isBigEndian && bytes > 1};
  }
  /// IEEE 754, of 4 or 8 bytes.
  static constexpr SampleEncoding floatingPoint(std::uint32_t bytes, bool isBigEndian = false) {
    return {Kind::floatingPoint, 8 * bytes, bytes, isBigEndian};
  }
  /// The low 24 bits of a 32-bit word; the top byte is ignored.
  static constexpr SampleEncoding low24In32(bool isBigEndian = false) {
    return {Kind::signedInteger, 24, 4, isBigEndian, true};
  }

  /// What a header states, put right: samples of no bytes for bits that no sample has; as few bytes
  /// as the bits need where the bytes stated are too few or too many; no byte order for one byte.
  constexpr SampleEncoding normalized() const {
    SampleEncoding result = *this;
    const std::uint32_t needed = (bits + 7) / 8;
    const bool isPossible =
        kind == Kind::floatingPoint ? bits == 32 || bits == 64 : bits >= 1 && bits <= 64;
    if (!isPossible)
      result.bytes = 0;
    else if (kind == Kind::floatingPoint || bytes < needed || bytes > 8)
      result.bytes = needed;
    result.isBigEndian = isBigEndian && result.bytes > 1;
    return result;
  }
};

}  // namespace orvane
