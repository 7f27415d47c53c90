#include "orvane/core/generator/harmonic_wave.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "orvane/core/generator/inverse_fourier_transform.h"
#include "orvane/platform/precondition.h"

namespace orvane::core {
namespace {

using ReproducibleMath::Phase;
using Shape = HarmonicWave::Shape;

constexpr std::size_t kValuesPerHighestPeriod = 32;
constexpr std::size_t kSmallestTable = 4096;

/// Values that the polynomial goes through, half of them before the place that is asked for.
constexpr std::size_t kNodes = 8;
constexpr std::size_t kReachBefore = kNodes / 2 - 1;

/// 1 ÷ Π (i − j) over the other nodes j.
constexpr std::array<double, kNodes> kNodeWeights = [] {
  std::array<double, kNodes> weights{};
  for (std::size_t i = 0; i < kNodes; ++i) {
    double product = 1;
    for (std::size_t j = 0; j < kNodes; ++j)
      if (j != i) product *= static_cast<double>(i) - static_cast<double>(j);
    weights[i] = 1 / product;
  }
  return weights;
}();

/// Fourier's sine coefficient of a partial, the first one's being 1.
double shareOf(Shape shape, std::uint32_t partial) {
  const double k = partial;
  const bool isEven = partial % 2 == 0;
  switch (shape) {
    case Shape::square:
      return isEven ? 0 : 1 / k;
    case Shape::saw:
      return isEven ? -1 / k : 1 / k;
    case Shape::triangle:
      return isEven ? 0 : partial % 4 == 1 ? 1 / (k * k) : -1 / (k * k);
  }
  return 0;
}

/// Where the sum of so many partials is highest: of square and saw the extremum that lies nearest
/// to the jump, where the derivative, a closed sum of cosines, is 0.
Phase crestOf(Shape shape, std::uint32_t partialCount) {
  const double count = partialCount;
  switch (shape) {
    case Shape::square:
      return ReproducibleMath::phaseOfTurns(1 / (4 * std::floor((count + 1) / 2)));
    case Shape::saw:
      return ReproducibleMath::phaseOfTurns(0.5 - 1 / (2 * (count + 1)));
    case Shape::triangle:
      return Phase{1} << 62;
  }
  return 0;
}

}  // namespace

HarmonicWave::HarmonicWave(Shape shape, std::uint32_t partialCount) {
  precondition(partialCount >= 1 && partialCount <= kMaximumPartials,
               "A wave has 1 to 131072 partials");
  const std::size_t size =
      std::max(kSmallestTable, std::bit_ceil(kValuesPerHighestPeriod * partialCount));
  indexBits_ = std::countr_zero(size);
  SplitComplex values{std::vector<double>(size), std::vector<double>(size)};
  for (std::uint32_t k = 1; k <= partialCount; ++k) values.real[k] = shareOf(shape, k);
  InverseFourierTransform(size).run(values);

  table_.resize(size + kNodes);
  for (std::size_t i = 0; i < table_.size(); ++i)
    table_[i] = values.imaginary[(i + size - kReachBefore) % size];
  const double peak = at(crestOf(shape, partialCount));
  for (double& value : table_) value /= peak;
}

double HarmonicWave::at(Phase phase) const noexcept {
  const double* nodes = table_.data() + (phase >> (64 - indexBits_));
  // Lagrange's formula: each value by the product of the distances to all others.
  const double place = kReachBefore + static_cast<double>(phase << indexBits_) * 0x1p-64;
  std::array<double, kNodes> before{}, behind{};
  before[0] = behind[kNodes - 1] = 1;
  for (std::size_t i = 1; i < kNodes; ++i) {
    before[i] = before[i - 1] * (place - static_cast<double>(i - 1));
    behind[kNodes - 1 - i] = behind[kNodes - i] * (place - static_cast<double>(kNodes - i));
  }
  double sum = 0;
  for (std::size_t i = 0; i < kNodes; ++i)
    sum += nodes[i] * (kNodeWeights[i] * (before[i] * behind[i]));
  return sum;
}

}  // namespace orvane::core
