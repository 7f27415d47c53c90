#include "orvane/core/generator/inverse_fourier_transform.h"

#include <bit>
#include <utility>

#include "orvane/core/generator/reproducible_math.h"
#include "orvane/platform/precondition.h"

namespace orvane::core {
namespace {

void orderByReversedBits(std::vector<double>& values) {
  for (std::size_t i = 1, reversed = 0; i < values.size(); ++i) {
    std::size_t bit = values.size() / 2;
    for (; (reversed & bit) != 0; bit /= 2) reversed ^= bit;
    reversed ^= bit;
    if (i < reversed) std::swap(values[i], values[reversed]);
  }
}

}  // namespace

InverseFourierTransform::InverseFourierTransform(std::size_t size)
    : size_(size), turns_{std::vector<double>(size), std::vector<double>(size)} {
  precondition(size >= 2 && std::has_single_bit(size),
               "A transform has a power of two as its size");
  for (std::size_t half = 1; half < size; half *= 2) {
    const ReproducibleMath::Phase step = (ReproducibleMath::Phase{1} << 63) / half;
    for (std::size_t k = 0; k < half; ++k) {
      turns_.real[half + k] = ReproducibleMath::cosine(k * step);
      turns_.imaginary[half + k] = ReproducibleMath::sine(k * step);
    }
  }
}

void InverseFourierTransform::run(SplitComplex& values) const {
  precondition(values.real.size() == size_ && values.imaginary.size() == size_,
               "A transform takes as many values as it was made for");
  orderByReversedBits(values.real);
  orderByReversedBits(values.imaginary);
  for (std::size_t half = 1; half < size_; half *= 2)
    for (std::size_t start = 0; start < size_; start += 2 * half) {
      const double* turnReal = &turns_.real[half];
      const double* turnImaginary = &turns_.imaginary[half];
      double* real = &values.real[start];
      double* imaginary = &values.imaginary[start];
      for (std::size_t k = 0; k < half; ++k) {
        const double a = real[k + half] * turnReal[k] - imaginary[k + half] * turnImaginary[k];
        const double b = real[k + half] * turnImaginary[k] + imaginary[k + half] * turnReal[k];
        real[k + half] = real[k] - a;
        imaginary[k + half] = imaginary[k] - b;
        real[k] += a;
        imaginary[k] += b;
      }
    }
}

}  // namespace orvane::core
