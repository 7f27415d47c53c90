#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace orvane {

/// Tells whether bytes that were written are the ones that are read back: a guard against faults,
/// not against people. The same for every cutting into pieces.
class Checksum {
 public:
  void add(std::span<const std::byte> bytes) noexcept {
    while (!bytes.empty()) {
      if (pending_ == 0 && bytes.size() >= kWord) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), kWord);
        mix(word);
        bytes = bytes.subspan(kWord);
        continue;
      }
      word_ |= std::to_integer<std::uint64_t>(bytes.front()) << 8 * pending_;
      bytes = bytes.subspan(1);
      if (++pending_ < kWord) continue;
      mix(word_);
      word_ = 0;
      pending_ = 0;
    }
  }

  std::uint64_t value() const noexcept {
    Checksum ended = *this;
    ended.mix(word_);
    ended.mix(count_ * kWord + pending_);  // so that zeros at the end count
    return ended.state_;
  }

 private:
  static constexpr std::size_t kWord = 8;

  /// FNV-1a on words, its upper half folded down (Fowler, Noll and Vo).
  void mix(std::uint64_t word) noexcept {
    constexpr std::uint64_t kPrime = 0x100000001B3;
    state_ = (state_ ^ word) * kPrime;
    state_ ^= state_ >> 32;
    ++count_;
  }

  std::uint64_t state_ = 0xCBF29CE484222325;
  std::uint64_t word_ = 0;
  std::size_t pending_ = 0;  ///< bytes in `word_`
  std::uint64_t count_ = 0;
};

}  // namespace orvane
