#pragma once

#include <cmath>
#include <cstddef>

/// Slow, readable statistics in extended precision to hold the vector kernels against.
namespace orvane::reference {

struct Sums {
  float peak = 0;
  long double sum = 0;
  long double sumOfMagnitudes = 0;
  long double sumOfSquares = 0;
};

inline Sums sums(const float* samples, std::size_t count) {
  Sums result;
  for (std::size_t i = 0; i < count; ++i) {
    const long double x = samples[i];
    if (std::fabs(samples[i]) > result.peak) result.peak = std::fabs(samples[i]);
    result.sum += x;
    result.sumOfMagnitudes += std::fabs(x);
    result.sumOfSquares += x * x;
  }
  return result;
}

inline long double dot(const float* left, const float* right, std::size_t count) {
  long double result = 0;
  for (std::size_t i = 0; i < count; ++i)
    result += static_cast<long double>(left[i]) * static_cast<long double>(right[i]);
  return result;
}

}  // namespace orvane::reference
