#pragma once

#include <cstddef>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane::core {

/// Complex values, their real and their imaginary parts.
struct SplitComplex {
  std::vector<double> real, imaginary;
};

/// From a spectrum to one period of its signal, in double precision and with the same bits on every
/// machine.
class ORVANE_TESTING_API InverseFourierTransform {
 public:
  /// A power of two, at least 2.
  explicit InverseFourierTransform(std::size_t size);

  /// In place: x[n] = Σ_k X[k] · e^(2πi · kn ÷ size), without a scale.
  void run(SplitComplex& values) const;

 private:
  std::size_t size_;
  /// e^(πi · k ÷ half) for k = 0 … half − 1 begins at index `half`, for every power of two below
  /// the size: each pass of the transform reads its own in order.
  SplitComplex turns_;
};

}  // namespace orvane::core
