#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/platform/four_cc.h"

namespace orvane {

/// Puts a header together, numbers in one byte order.
class HeaderBytes {
 public:
  explicit HeaderBytes(std::endian order = std::endian::little) : order_(order) {}

  HeaderBytes& u16(std::uint64_t value) { return number(value, 2); }
  HeaderBytes& u32(std::uint64_t value) { return number(value, 4); }
  HeaderBytes& u64(std::uint64_t value) { return number(value, 8); }
  HeaderBytes& float64(double value) { return u64(std::bit_cast<std::uint64_t>(value)); }

  /// The 80-bit extended number of AIFF; `value` is finite and above 0.
  HeaderBytes& float80(double value) {
    constexpr int kBias = 16383;
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);  // 0.5 … 1
    u16(static_cast<std::uint64_t>(exponent - 1 + kBias));
    return u64(static_cast<std::uint64_t>(std::ldexp(fraction, 64)));
  }

  /// Four characters as they stand, whatever the byte order.
  HeaderBytes& fourCC(FourCC code) {
    for (int shift = 24; shift >= 0; shift -= 8)
      bytes_.push_back(static_cast<std::byte>(code >> shift));
    return *this;
  }
  HeaderBytes& text(std::string_view characters) {
    return append(std::as_bytes(std::span(characters)));
  }
  HeaderBytes& append(std::span<const std::byte> more) {
    bytes_.insert(bytes_.end(), more.begin(), more.end());
    return *this;
  }
  /// Zeros up to a multiple of `size` bytes.
  HeaderBytes& padTo(std::size_t size) {
    bytes_.resize((bytes_.size() + size - 1) / size * size);
    return *this;
  }

  const std::vector<std::byte>& bytes() const noexcept { return bytes_; }
  std::size_t size() const noexcept { return bytes_.size(); }

 private:
  HeaderBytes& number(std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
      bytes_.push_back(
          static_cast<std::byte>(value >> 8 * (order_ == std::endian::little ? i : size - 1 - i)));
    return *this;
  }

  std::endian order_;
  std::vector<std::byte> bytes_{};
};

}  // namespace orvane
