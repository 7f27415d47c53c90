#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace orvane::test {

using Bytes = std::vector<std::byte>;

/// Puts bytes together, numbers in one byte order.
class ByteWriter {
 public:
  explicit ByteWriter(std::endian order = std::endian::little) : order_(order) {}

  ByteWriter& u8(std::uint64_t value) { return number(value, 1); }
  ByteWriter& u16(std::uint64_t value) { return number(value, 2); }
  ByteWriter& u32(std::uint64_t value) { return number(value, 4); }
  ByteWriter& u64(std::uint64_t value) { return number(value, 8); }
  ByteWriter& float64(double value) { return u64(std::bit_cast<std::uint64_t>(value)); }

  /// The low `size` bytes of `value`.
  ByteWriter& number(std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t byte = order_ == std::endian::little ? i : size - 1 - i;
      bytes_.push_back(static_cast<std::byte>(value >> (8 * byte)));
    }
    return *this;
  }

  /// 80-bit extended number; positive and finite.
  ByteWriter& float80(double value) {
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);  // 0.5 … 1
    u16(value == 0 ? 0 : static_cast<std::uint64_t>(exponent + 16382));
    return u64(static_cast<std::uint64_t>(std::ldexp(fraction, 64)));
  }

  ByteWriter& text(std::string_view characters) {
    for (const char c : characters) bytes_.push_back(static_cast<std::byte>(c));
    return *this;
  }

  ByteWriter& append(const Bytes& more) {
    bytes_.insert(bytes_.end(), more.begin(), more.end());
    return *this;
  }

  ByteWriter& zeros(std::size_t count) {
    bytes_.resize(bytes_.size() + count);
    return *this;
  }

  const Bytes& bytes() const noexcept { return bytes_; }
  std::size_t size() const noexcept { return bytes_.size(); }

 private:
  std::endian order_;
  Bytes bytes_;
};

}  // namespace orvane::test
