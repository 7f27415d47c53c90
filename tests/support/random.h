#pragma once

#include <cstdint>

namespace orvane::test {

/// Reproducible numbers: the same seed gives the same sequence on every machine and compiler.
/// Steps of a fixed odd stride through the 64-bit numbers, each scrambled.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t x = state_;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31);
  }

  /// 0 … 1, 1 excluded.
  double fraction() { return static_cast<double>(next() >> 11) * 0x1p-53; }
  double between(double low, double high) { return low + (high - low) * fraction(); }
  /// 0 … count − 1.
  std::uint64_t below(std::uint64_t count) { return next() % count; }

 private:
  std::uint64_t state_;
};

}  // namespace orvane::test
