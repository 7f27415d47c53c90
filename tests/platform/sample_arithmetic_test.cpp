#include "orvane/platform/sample_arithmetic.h"

#include <random>
#include <vector>

#include "tests/support/each_instruction_set.h"

namespace orvane {
namespace {

std::vector<float> noise(unsigned seed, std::size_t count) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> sample(-2, 2);
  std::vector<float> samples(count);
  for (float& x : samples) x = sample(random);
  return samples;
}

TEST(SampleArithmetic, EqualsPlainArithmeticBitForBit) {
  test::onEachInstructionSet([] {
    // Every remainder of every vector length.
    for (std::size_t count = 0; count < 70; ++count) {
      const auto a = noise(1, count), b = noise(2, count), g = noise(3, count), h = noise(4, count);
      auto scaled = a, multiplied = a, negated = a, offset = a;
      std::vector<float> mixed(count);
      SampleArithmetic::scale(scaled, 0.7F);
      SampleArithmetic::multiply(multiplied, g.data());
      SampleArithmetic::negate(negated);
      SampleArithmetic::offset(offset, -0.3F);
      SampleArithmetic::mix(a.data(), g.data(), b.data(), h.data(), mixed.data(), count);
      for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(scaled[i], a[i] * 0.7F);
        EXPECT_EQ(multiplied[i], a[i] * g[i]);
        EXPECT_EQ(negated[i], -a[i]);
        EXPECT_EQ(offset[i], a[i] - 0.3F);
        EXPECT_EQ(mixed[i], a[i] * g[i] + b[i] * h[i]);
      }
    }
  });
}

}  // namespace
}  // namespace orvane
