#include "orvane/core/generator/harmonic_wave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tests/support/random.h"

namespace orvane::core {
namespace {

using Shape = HarmonicWave::Shape;

/// The sum of the partials as Fourier's series gives them, the first one with amplitude 1.
double sumOfPartials(Shape shape, std::uint32_t count, ReproducibleMath::Phase phase) {
  double sum = 0;
  for (std::uint32_t k = 1; k <= count; ++k) {
    if (shape != Shape::saw && k % 2 == 0) continue;
    const bool isTurned = shape == Shape::saw ? k % 2 == 0 : shape == Shape::triangle && k % 4 == 3;
    const double share = 1 / (shape == Shape::triangle ? static_cast<double>(k) * k : k);
    // Whole periods of the partial are dropped before they cost digits.
    const double turns = static_cast<double>(k * phase) * 0x1p-64;
    sum += (isTurned ? -share : share) * std::sin(2 * std::numbers::pi * turns);
  }
  return sum;
}

TEST(HarmonicWave, IsTheSumOfItsPartialsEverywhere) {
  test::Random random(1);
  for (const auto shape : {Shape::square, Shape::saw, Shape::triangle})
    for (const std::uint32_t count : {1U, 2U, 3U, 24U, 127U, 128U, 129U, 4799U, 131'072U}) {
      const HarmonicWave wave(shape, count);
      const ReproducibleMath::Phase reference = ReproducibleMath::phaseOfTurns(0.21);
      const double scale = sumOfPartials(shape, count, reference) / wave.at(reference);
      for (int i = 0; i < 100; ++i) {
        // Everywhere, and within ten periods of the highest partial around the jumps.
        auto phase = random.next();
        if (i % 2 == 1) phase = phase % (~std::uint64_t{0} / count * 10) + (phase << 63);
        // −160 dB.
        EXPECT_NEAR(wave.at(phase) * scale, sumOfPartials(shape, count, phase), 1e-8)
            << static_cast<int>(shape) << ", " << count << " partials, phase " << phase;
      }
    }
}

TEST(HarmonicWave, PeaksAtOne) {
  for (const auto shape : {Shape::square, Shape::saw, Shape::triangle})
    for (const std::uint32_t count : {1U, 2U, 3U, 24U, 1000U}) {
      const HarmonicWave wave(shape, count);
      double peak = 0;
      const std::uint64_t places = std::uint64_t{200} * count;
      for (std::uint64_t i = 0; i < places; ++i)
        peak = std::max(peak, std::abs(wave.at(i * (~std::uint64_t{0} / places))));
      // Between two places the crest rises by (2π ÷ 200 ÷ 2)² ÷ 2 of a partial at most.
      EXPECT_NEAR(peak, 1, 1e-3) << static_cast<int>(shape) << ", " << count;
      EXPECT_LE(peak, 1 + 1e-9) << static_cast<int>(shape) << ", " << count;
    }
}

}  // namespace
}  // namespace orvane::core
