#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// A small piece of a file whose numbers are taken at checked positions. A field that the bytes do
/// not hold is a `PlatformError` ("The file's header is cut short"), never a read beyond them.
class HeaderFields {
 public:
  /// Reads up to `size` bytes at `offset`, fewer where the file ends.
  HeaderFields(const InputFile& file, std::uint64_t offset, std::uint64_t size, std::endian order);

  /// Bytes that are really there.
  std::size_t size() const noexcept { return bytes_.size(); }

  std::uint8_t u8(std::size_t at) const { return static_cast<std::uint8_t>(unsignedAt(at, 1)); }
  std::uint16_t u16(std::size_t at) const { return static_cast<std::uint16_t>(unsignedAt(at, 2)); }
  std::uint32_t u32(std::size_t at) const { return static_cast<std::uint32_t>(unsignedAt(at, 4)); }
  std::uint64_t u64(std::size_t at) const { return unsignedAt(at, 8); }
  double float64(std::size_t at) const { return std::bit_cast<double>(u64(at)); }
  /// The 80-bit extended number of AIFF: sign and exponent, then a mantissa with explicit one.
  double float80(std::size_t at) const;
  /// Four characters as they stand, whatever the byte order.
  FourCC fourCC(std::size_t at) const;
  /// Everything behind a position.
  std::string rest(std::size_t at) const { return text(at, at < size() ? size() - at : 0); }
  /// All of them.
  std::span<const std::byte> bytes() const noexcept { return bytes_; }
  /// The bytes as they stand.
  std::string text(std::size_t at, std::size_t size) const;

 private:
  std::uint64_t unsignedAt(std::size_t at, std::size_t size) const;
  const std::byte* checked(std::size_t at, std::size_t size) const;

  const InputFile* file_;
  std::endian order_;
  std::vector<std::byte> bytes_;
};

}  // namespace orvane
