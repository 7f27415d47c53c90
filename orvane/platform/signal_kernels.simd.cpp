#include "orvane/platform/signal_kernels.h"

#include <cmath>

namespace orvane::SignalKernels {

float maximumMagnitude(const float* samples, std::size_t count) noexcept {
  float peak = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const float magnitude = std::fabs(samples[i]);
    if (magnitude > peak) peak = magnitude;
  }
  return peak;
}

RunStatistics runStatistics(const float* samples, std::size_t count) noexcept {
  RunStatistics result{.peak = maximumMagnitude(samples, count)};
  for (std::size_t i = 0; i < count; ++i) {
    const double x = samples[i];
    result.sum += x;
    result.sumOfSquares += x * x;
  }
  return result;
}

PairStatistics pairStatistics(const float* left, const float* right, std::size_t count) noexcept {
  PairStatistics result{runStatistics(left, count), runStatistics(right, count)};
  for (std::size_t i = 0; i < count; ++i)
    result.dot += static_cast<double>(left[i]) * static_cast<double>(right[i]);
  return result;
}

}  // namespace orvane::SignalKernels
