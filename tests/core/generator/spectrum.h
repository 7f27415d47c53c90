#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <span>
#include <vector>

namespace orvane::core {

/// The discrete Fourier transform of a power of two of values, by halves. `roots` are the powers of
/// e^(−2πi ÷ n) for n values, or for a multiple of as many.
inline std::vector<std::complex<double>> fourierTransform(
    const std::vector<std::complex<double>>& x, const std::vector<std::complex<double>>& roots) {
  if (x.size() == 1) return x;
  const std::size_t half = x.size() / 2;
  std::vector<std::complex<double>> even(half), odd(half), result(x.size());
  for (std::size_t n = 0; n < half; ++n) {
    even[n] = x[2 * n];
    odd[n] = x[2 * n + 1];
  }
  even = fourierTransform(even, roots);
  odd = fourierTransform(odd, roots);
  for (std::size_t k = 0; k < half; ++k) {
    const auto turned = roots[k * (roots.size() / x.size())] * odd[k];
    result[k] = even[k] + turned;
    result[k + half] = even[k] - turned;
  }
  return result;
}

inline std::vector<std::complex<double>> fourierTransform(
    const std::vector<std::complex<double>>& x) {
  std::vector<std::complex<double>> roots(x.size());
  for (std::size_t k = 0; k < x.size(); ++k)
    roots[k] = std::polar(
        1.0, -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(x.size()));
  return fourierTransform(x, roots);
}

/// The spectrum of as many samples as a power of two has, from 0 Hz to half the sample rate. A
/// sine in the middle of a bin gives its amplitude there, turned by −90°.
inline std::vector<std::complex<double>> spectrumOf(std::span<const float> samples) {
  auto values = fourierTransform(std::vector<std::complex<double>>(samples.begin(), samples.end()));
  values.resize(samples.size() / 2 + 1);
  for (auto& value : values) value *= 2 / static_cast<double>(samples.size());
  return values;
}

}  // namespace orvane::core
