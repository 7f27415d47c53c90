#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace orvane::core {

/// Independent normally distributed numbers. Every pair of a seed and a stream has a sequence of
/// its own.
class GaussianSource {
 public:
  GaussianSource(std::uint64_t seed, std::uint64_t stream);

  /// Two numbers with mean 0 and variance 1.
  std::pair<double, double> next() noexcept;

 private:
  std::uint64_t state_;
};

namespace Noise {

std::vector<double> white(GaussianSource source, std::size_t frames);
/// The power density falls with the frequency; nothing below 10 Hz. The level is arbitrary.
std::vector<double> pink(GaussianSource source, double sampleRate, std::size_t frames);
/// The power density falls with the square of the frequency; nothing below 10 Hz. The level is
/// arbitrary.
std::vector<double> brown(GaussianSource source, double sampleRate, std::size_t frames);

}  // namespace Noise

}  // namespace orvane::core
