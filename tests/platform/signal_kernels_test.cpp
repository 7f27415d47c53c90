#include "orvane/platform/signal_kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <vector>

#include "tests/reference/signal_kernels_reference.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/fenced_bytes.h"

namespace orvane {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<float> noise(std::size_t count, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> distribution(-1, 1);
  std::vector<float> samples(count);
  for (float& sample : samples) sample = distribution(random);
  return samples;
}

/// Around every vector length, around the block length, and long.
std::vector<std::size_t> counts() {
  std::vector<std::size_t> values;
  for (std::size_t i = 0; i <= 66; ++i) values.push_back(i);
  for (const std::size_t i : {32760U, 32767U, 32768U, 32769U, 32777U, 100003U}) values.push_back(i);
  return values;
}

TEST(MaximumMagnitude, EqualsTheReferenceAtEveryLengthAndStart) {
  const auto samples = noise(100'010, 1);
  test::onEachInstructionSet([&] {
    for (const std::size_t count : counts())
      for (const std::size_t start : {0U, 1U, 3U, 7U})
        ASSERT_EQ(SignalKernels::maximumMagnitude(samples.data() + start, count),
                  reference::sums(samples.data() + start, count).peak);
  });
}

TEST(MaximumMagnitude, FindsANegativePeakAtEveryPlace) {
  test::onEachInstructionSet([] {
    for (std::size_t place = 0; place < 70; ++place) {
      std::vector<float> samples(70, 0.25F);
      samples[place] = -0.5F;
      ASSERT_EQ(SignalKernels::maximumMagnitude(samples.data(), samples.size()), 0.5F);
      ASSERT_EQ(SignalKernels::runStatistics(samples.data(), samples.size()).peak, 0.5F);
    }
  });
}

TEST(MaximumMagnitude, PassesNaNOverAndKeepsInfinity) {
  test::onEachInstructionSet([] {
    for (std::size_t place = 0; place < 70; ++place) {
      std::vector<float> samples(70, 0.25F);
      samples[place] = kNaN;
      ASSERT_EQ(SignalKernels::maximumMagnitude(samples.data(), samples.size()), 0.25F);
      ASSERT_EQ(SignalKernels::runStatistics(samples.data(), samples.size()).peak, 0.25F);
      samples[place] = -kInfinity;
      ASSERT_EQ(SignalKernels::maximumMagnitude(samples.data(), samples.size()), kInfinity);
    }
    const std::vector<float> onlyNaN(70, kNaN);
    ASSERT_EQ(SignalKernels::maximumMagnitude(onlyNaN.data(), onlyNaN.size()), 0.0F);
  });
}

TEST(RunStatistics, StaysWithinItsErrorBoundAtEveryLengthAndStart) {
  const auto samples = noise(100'010, 2);
  test::onEachInstructionSet([&] {
    for (const std::size_t count : counts())
      for (const std::size_t start : {0U, 1U, 5U}) {
        const auto result = SignalKernels::runStatistics(samples.data() + start, count);
        const auto expected = reference::sums(samples.data() + start, count);
        ASSERT_EQ(result.peak, expected.peak);
        ASSERT_NEAR(result.sum, static_cast<double>(expected.sum),
                    static_cast<double>(expected.sumOfMagnitudes) * 1e-12);
        ASSERT_NEAR(result.sumOfSquares, static_cast<double>(expected.sumOfSquares),
                    static_cast<double>(expected.sumOfSquares) * 1e-12);
      }
  });
}

TEST(RunStatistics, IsEqualOnEveryInstructionSet) {
  const auto left = noise(100'003, 3);
  const auto right = noise(100'003, 4);
  std::optional<SignalKernels::PairStatistics> first;
  test::onEachInstructionSet([&] {
    const auto pair = SignalKernels::pairStatistics(left.data(), right.data(), left.size());
    EXPECT_EQ(SignalKernels::runStatistics(left.data(), left.size()), pair.left);
    EXPECT_EQ(SignalKernels::runStatistics(right.data(), right.size()), pair.right);
    if (!first) first = pair;
    EXPECT_EQ(pair, *first);
  });
}

TEST(RunStatistics, KeepsASmallOffsetUnderLoudSamples) {
  // A full-scale square wave on 1e-6 of direct current.
  std::vector<float> samples(1 << 20);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i % 2 == 0 ? 1.0F : -1.0F;
  for (std::size_t i = 0; i < samples.size(); i += 1024) samples[i] = 0x1.0p-10F;
  const auto expected = reference::sums(samples.data(), samples.size());
  test::onEachInstructionSet([&] {
    EXPECT_EQ(SignalKernels::runStatistics(samples.data(), samples.size()).sum,
              static_cast<double>(expected.sum));
  });
}

TEST(RunStatistics, HasFiniteSquaresExactlyWhenEverySampleIsFinite) {
  test::onEachInstructionSet([] {
    std::vector<float> samples(1000, std::numeric_limits<float>::max());
    EXPECT_TRUE(
        std::isfinite(SignalKernels::runStatistics(samples.data(), samples.size()).sumOfSquares));
    for (const float bad : {kNaN, kInfinity, -kInfinity})
      for (const std::size_t place : {0U, 501U, 999U}) {
        auto spoiled = samples;
        spoiled[place] = bad;
        EXPECT_FALSE(std::isfinite(
            SignalKernels::runStatistics(spoiled.data(), spoiled.size()).sumOfSquares));
        EXPECT_EQ(SignalKernels::countNonFinite(spoiled.data(), spoiled.size()), 1U);
      }
  });
}

TEST(PairStatistics, StaysWithinItsErrorBoundAtEveryLengthAndStart) {
  const auto left = noise(100'010, 5);
  const auto right = noise(100'010, 6);
  test::onEachInstructionSet([&] {
    for (const std::size_t count : counts()) {
      const auto result = SignalKernels::pairStatistics(left.data() + 1, right.data() + 2, count);
      const auto l = reference::sums(left.data() + 1, count);
      const auto r = reference::sums(right.data() + 2, count);
      const double scale = std::sqrt(static_cast<double>(l.sumOfSquares * r.sumOfSquares));
      ASSERT_NEAR(result.dot,
                  static_cast<double>(reference::dot(left.data() + 1, right.data() + 2, count)),
                  scale * 1e-12);
      ASSERT_EQ(result.left.peak, l.peak);
      ASSERT_EQ(result.right.peak, r.peak);
    }
  });
}

TEST(CountNonFinite, CountsNaNAndInfinitiesAtEveryLength) {
  test::onEachInstructionSet([] {
    for (const std::size_t count : {0U, 1U, 5U, 16U, 33U, 100U}) {
      std::vector<float> samples(count, -0.5F);
      EXPECT_EQ(SignalKernels::countNonFinite(samples.data(), count), 0U);
      std::size_t expected = 0;
      for (std::size_t i = 0; i < count; i += 3, ++expected)
        samples[i] = i % 2 == 0 ? kNaN : -kInfinity;
      EXPECT_EQ(SignalKernels::countNonFinite(samples.data(), count), expected);
    }
  });
}

TEST(LoudSamples, HaveABitEach) {
  auto samples = noise(80, 9);
  samples[3] = kNaN;
  samples[5] = -kInfinity;
  samples[7] = 0.5F;
  samples[8] = -0.5F;
  test::onEachInstructionSet([&] {
    for (std::size_t count = 0; count <= 64; ++count)
      for (const std::size_t start : {0U, 1U, 5U}) {
        std::uint64_t expected = 0;
        for (std::size_t i = 0; i < count; ++i)
          if (std::fabs(samples[start + i]) >= 0.5F) expected |= std::uint64_t{1} << i;
        ASSERT_EQ(SignalKernels::loudSamples(samples.data() + start, count, 0.5F), expected)
            << count;
      }
  });
}

TEST(SignalKernels, ReadNothingOutsideTheirRuns) {
  const test::FencedBytes fence(4096);
  test::onEachInstructionSet([&] {
    for (std::size_t count = 0; count <= 66; ++count)
      for (const bool atEnd : {false, true}) {
        const auto bytes = atEnd ? fence.last(count * 4) : fence.first(count * 4);
        const auto* samples = reinterpret_cast<const float*>(bytes.data());
        ASSERT_EQ(SignalKernels::maximumMagnitude(samples, count), 0.0F);
        ASSERT_EQ(SignalKernels::runStatistics(samples, count), SignalKernels::RunStatistics{});
        ASSERT_EQ(SignalKernels::pairStatistics(samples, samples, count),
                  SignalKernels::PairStatistics{});
        ASSERT_EQ(SignalKernels::countNonFinite(samples, count), 0U);
      }
  });
}

}  // namespace
}  // namespace orvane
