#include "orvane/core/generator/inverse_fourier_transform.h"

#include <gtest/gtest.h>

#include "tests/core/generator/spectrum.h"
#include "tests/support/random.h"

namespace orvane::core {
namespace {

TEST(InverseFourierTransform, UndoesTheForwardOne) {
  for (const std::size_t size : {2U, 4U, 64U, 8192U}) {
    test::Random random(size);
    std::vector<std::complex<double>> signal(size);
    for (auto& value : signal) value = {random.between(-1, 1), random.between(-1, 1)};
    SplitComplex values;
    for (const auto& value : fourierTransform(signal)) {
      values.real.push_back(value.real() / static_cast<double>(size));
      values.imaginary.push_back(value.imag() / static_cast<double>(size));
    }
    InverseFourierTransform(size).run(values);
    // Rounding: a few eps for each of the up to 13 steps.
    for (std::size_t n = 0; n < size; ++n) {
      EXPECT_NEAR(values.real[n], signal[n].real(), 1e-14) << size;
      EXPECT_NEAR(values.imaginary[n], signal[n].imag(), 1e-14) << size;
    }
  }
}

TEST(InverseFourierTransformDeathTest, TakesPowersOfTwoOnly) {
  EXPECT_DEATH(InverseFourierTransform(12), "power of two");
}

}  // namespace
}  // namespace orvane::core
