#pragma once

#include <cstdint>
#include <vector>

#include "orvane/core/generator/reproducible_math.h"
#include "orvane/platform/export.h"

namespace orvane::core {

/// A wave of the partials 1 … `partialCount` of a square, a rising saw or a triangle, each in its
/// exact share; its highest point is 1, at phase 0 it rises through 0.
///
/// One period is summed into a table of at least 32 values per period of the highest partial. In
/// between runs the polynomial through the eight nearest values, which is off by less than 3e-9 of
/// a partial (−170 dB).
class ORVANE_TESTING_API HarmonicWave {
 public:
  enum class Shape { square, saw, triangle };

  /// Bounds the table to 2^22 values, 32 MB.
  static constexpr std::uint32_t kMaximumPartials = 1 << 17;

  /// 1 … kMaximumPartials partials.
  HarmonicWave(Shape shape, std::uint32_t partialCount);

  double at(ReproducibleMath::Phase phase) const noexcept;

 private:
  int indexBits_;
  std::vector<double> table_;  ///< one period, preceded and followed by what the polynomial reaches
};

}  // namespace orvane::core
