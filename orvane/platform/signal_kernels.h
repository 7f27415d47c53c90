#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/platform/export.h"

/// One pass over samples for the figures that need every one of them. All results are equal, bit
/// for bit, on every instruction set: products of two floats are exact in double, and the order of
/// summation is fixed.
namespace orvane::SignalKernels {

/// What one pass over a run of samples gives.
struct RunStatistics {
  float peak = 0;           ///< largest magnitude
  double sum = 0;           ///< Σ x
  double sumOfSquares = 0;  ///< Σ x²; finite exactly when every sample is finite

  bool operator==(const RunStatistics&) const = default;
};

/// What one pass over two runs gives; for stereo correlation.
struct PairStatistics {
  RunStatistics left{};
  RunStatistics right{};
  double dot = 0;  ///< Σ l·r

  bool operator==(const PairStatistics&) const = default;
};

/// Largest |x|; 0 for no samples. NaN samples are passed over.
ORVANE_API float maximumMagnitude(const float* samples, std::size_t count) noexcept;

/// Peak, sum and sum of squares. Accumulates in double, in blocks; the error stays below 1e-12 of
/// Σ|x| and Σx². Non-finite samples make the sums non-finite.
ORVANE_API RunStatistics runStatistics(const float* samples, std::size_t count) noexcept;

/// The same for two runs at once, with their dot product. Each run's figures equal those that
/// `runStatistics` gives.
ORVANE_API PairStatistics pairStatistics(const float* left, const float* right,
                                         std::size_t count) noexcept;

/// How many samples are NaN or infinite. To be asked only when a sum of squares is not finite: else
/// there are none.
ORVANE_API std::size_t countNonFinite(const float* samples, std::size_t count) noexcept;

/// The samples, 64 at most, whose magnitude is at least `threshold`: a bit for each, from the
/// lowest on.
ORVANE_API std::uint64_t loudSamples(const float* samples, std::size_t count,
                                     float threshold) noexcept;

}  // namespace orvane::SignalKernels
