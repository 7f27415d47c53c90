#include "orvane/platform/sample_arithmetic.h"

#include <algorithm>
#include <limits>
#include <random>
#include <span>
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
      auto scaled = a, multiplied = a, negated = a, offset = a, added = a;
      std::vector<float> mixed(count);
      SampleArithmetic::scale(scaled, 0.7F);
      SampleArithmetic::multiply(multiplied, g.data());
      SampleArithmetic::negate(negated);
      SampleArithmetic::offset(offset, -0.3F);
      SampleArithmetic::addScaled(added, b.data(), -0.7F);
      SampleArithmetic::mix(a.data(), g.data(), b.data(), h.data(), mixed.data(), count);
      for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(scaled[i], a[i] * 0.7F);
        EXPECT_EQ(multiplied[i], a[i] * g[i]);
        EXPECT_EQ(negated[i], -a[i]);
        EXPECT_EQ(offset[i], a[i] - 0.3F);
        EXPECT_EQ(added[i], a[i] + b[i] * -0.7F);
        EXPECT_EQ(mixed[i], a[i] * g[i] + b[i] * h[i]);
      }
    }
  });
}

TEST(SampleArithmetic, RaisesToTheLargerOne) {
  test::onEachInstructionSet([] {
    for (std::size_t count = 0; count < 70; ++count) {
      const auto a = noise(5, count + 30);
      for (const std::size_t ahead : {0U, 1U, 3U, 17U, 30U}) {
        auto raised = a;
        SampleArithmetic::raise(std::span(raised).first(count), raised.data() + ahead);
        for (std::size_t i = 0; i < raised.size(); ++i)
          EXPECT_EQ(raised[i], i < count ? std::max(a[i], a[i + ahead]) : a[i]);
      }
    }
  });
}

TEST(SampleArithmetic, SilencesWhatIsNoNumber) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kMost = std::numeric_limits<float>::max();
  test::onEachInstructionSet([] {
    for (std::size_t count = 0; count < 70; ++count) {
      auto samples = noise(6, count);
      if (count > 0) samples[0] = -kMost;
      const auto before = samples;
      EXPECT_FALSE(SampleArithmetic::silenceNonFinite(samples));
      EXPECT_EQ(samples, before);
      for (std::size_t at = 0; at < count; ++at)
        for (const float wild : {kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN(),
                                 -std::numeric_limits<float>::signaling_NaN()}) {
          auto expected = before;
          expected[at] = 0;
          samples = before;
          samples[at] = wild;
          EXPECT_TRUE(SampleArithmetic::silenceNonFinite(samples));
          EXPECT_EQ(samples, expected);
        }
    }
  });
}

}  // namespace
}  // namespace orvane
