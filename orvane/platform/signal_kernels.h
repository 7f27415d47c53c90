#pragma once

#include <cstddef>

#include "orvane/platform/export.h"

namespace orvane::SignalKernels {

/// What one pass over a run of samples gives.
struct RunStatistics {
  float peak = 0;          ///< largest magnitude
  double sum = 0;          ///< Σ x
  double sumOfSquares = 0; ///< Σ x²
};

/// What one pass over two runs gives; for stereo correlation.
struct PairStatistics {
  RunStatistics left{};
  RunStatistics right{};
  double dot = 0;  ///< Σ l·r
};

/// Largest |x|; 0 for no samples. NaN samples are passed over. Exact on every instruction set.
ORVANE_API float maximumMagnitude(const float* samples, std::size_t count) noexcept;

/// Peak, sum and sum of squares. Accumulates in double; relative error below 1e-12, the order of
/// summation differs between instruction sets. Non-finite samples make the sums non-finite.
ORVANE_API RunStatistics runStatistics(const float* samples, std::size_t count) noexcept;

/// The same for two runs at once, with their dot product.
ORVANE_API PairStatistics pairStatistics(const float* left, const float* right,
                                         std::size_t count) noexcept;

}  // namespace orvane::SignalKernels
