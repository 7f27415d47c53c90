#include "orvane/edit/sample_rate_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tests/support/address_space_limit.h"
#include "tests/support/sanitized.h"

namespace orvane {
namespace {

constexpr double kAmplitude = 0.5;

double sineAt(double frame, double rate) {
  return kAmplitude * std::sin(2 * std::numbers::pi * 997 * frame / rate);
}

std::vector<float> sine(std::size_t frames, double rate) {
  std::vector<float> samples(frames);
  for (std::size_t i = 0; i < frames; ++i)
    samples[i] = static_cast<float>(sineAt(static_cast<double>(i), rate));
  return samples;
}

/// Largest difference from the sine at that rate, in dB below its amplitude; without the ends,
/// where the signal is cut off.
double errorDB(const std::vector<float>& samples, double rate) {
  double error = 0;
  for (std::size_t i = samples.size() / 10; i < samples.size() * 9 / 10; ++i)
    error = std::max(error, std::abs(samples[i] - sineAt(static_cast<double>(i), rate)));
  return 20 * std::log10(error / kAmplitude);
}

struct Rates {
  double from = 0;
  double to = 0;
};

// Any delay, even of a thousandth of a frame, would leave an error of −78 dB.
TEST(AtSampleRate, KeepsASineInPlace) {
  for (const auto& [from, to] : {Rates{44'100, 48'000},
                                 {48'000, 44'100},
                                 {96'000, 44'100},
                                 {44'100, 192'000},
                                 {44'100, 47'999.37},
                                 {8'000, 48'000}}) {
    const auto result = atSampleRate(sine(static_cast<std::size_t>(10 * from), from), from, to);
    ASSERT_TRUE(result);
    EXPECT_LT(errorDB(*result, to), -130) << from << " to " << to;
  }
}

TEST(AtSampleRate, IsAsLongAsTheRatesSay) {
  for (const std::size_t frames : {1U, 2U, 147U, 4410U, 65536U, 65537U, 100'003U}) {
    for (const auto& [from, to] : {Rates{44'100, 48'000}, {48'000, 44'100}, {96'000, 8'000}}) {
      const auto result = atSampleRate(std::vector(frames, 0.25F), from, to);
      ASSERT_TRUE(result);
      EXPECT_EQ(result->size(), std::llround(static_cast<double>(frames) * to / from));
    }
  }
}

TEST(AtSampleRate, FillsTheResultToItsEnd) {
  for (const std::size_t frames : {4411U, 65'537U, 100'003U}) {
    const auto result = atSampleRate(std::vector(frames, 0.25F), 44'100, 48'000);
    ASSERT_TRUE(result);
    EXPECT_GT(result->back(), 0.1F);
  }
}

TEST(AtSampleRate, HasLinearPhase) {
  std::vector<float> impulse(4411);
  impulse[2205] = 1;  // 50 ms
  const auto result = atSampleRate(impulse, 44'100, 48'000);
  ASSERT_TRUE(result);
  for (std::size_t i = 1; i <= 2000; ++i)
    ASSERT_NEAR((*result)[2400 - i], (*result)[2400 + i], 1e-6F) << i;
  EXPECT_EQ(std::ranges::max_element(*result) - result->begin(), 2400);
}

TEST(AtSampleRate, RemovesWhatTheLowerRateCannotHold) {
  std::vector<float> tone(96'000);
  for (std::size_t i = 0; i < tone.size(); ++i)
    tone[i] = std::sin(static_cast<float>(i % 16) * std::numbers::pi_v<float> * 10 / 16);  // 30 kHz
  const auto result = atSampleRate(tone, 96'000, 48'000);
  ASSERT_TRUE(result);
  for (std::size_t i = 5000; i < 43'000; ++i) ASSERT_NEAR((*result)[i], 0, 1e-6F) << i;
}

TEST(AtSampleRate, RefusesRatesTooFarApart) {
  const std::vector<float> samples(8, 0.5F);
  EXPECT_FALSE(atSampleRate(samples, 1, 4097));
  EXPECT_FALSE(atSampleRate(samples, 4097, 1));
  EXPECT_FALSE(atSampleRate(samples, 1e-300, 1e300));
  EXPECT_FALSE(atSampleRate(samples, 1e300, 1e-300));
}

TEST(AtSampleRate, IsAbsentWithoutMemory) {
  if (test::isSanitized()) GTEST_SKIP() << "a sanitizer takes all address space for itself";
  const std::vector<float> samples(1 << 20);
  const test::AddressSpaceLimit limit(std::size_t{1} << 30);
  EXPECT_FALSE(atSampleRate(samples, 100, 400'000));
}

}  // namespace
}  // namespace orvane
