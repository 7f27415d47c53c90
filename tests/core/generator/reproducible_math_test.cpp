#include "orvane/core/generator/reproducible_math.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/random.h"

namespace orvane::core {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

TEST(ReproducibleMath, EqualsTheCLibraryWithinRounding) {
  test::Random random(1);
  for (int i = 0; i < 100'000; ++i) {
    const ReproducibleMath::Phase phase = random.next();
    const long double turn = static_cast<long double>(phase) * 0x1p-64L;
    const long double angle = 2 * std::numbers::pi_v<long double> * turn;
    EXPECT_NEAR(ReproducibleMath::sine(phase), static_cast<double>(std::sin(angle)), 2 * kEps);
    EXPECT_NEAR(ReproducibleMath::cosine(phase), static_cast<double>(std::cos(angle)), 2 * kEps);

    const double x = random.between(-100, 100);
    EXPECT_NEAR(ReproducibleMath::exp2(x) / std::exp2(x), 1, 4 * kEps) << x;
    const double y = std::exp2(x);
    EXPECT_NEAR(ReproducibleMath::log2(y), std::log2(y), 4 * kEps * (1 + std::abs(x))) << y;
  }
}

TEST(ReproducibleMath, HasExactValuesAtQuarters) {
  constexpr ReproducibleMath::Phase kQuarter = ReproducibleMath::Phase{1} << 62;
  EXPECT_EQ(ReproducibleMath::sine(0), 0);
  EXPECT_EQ(ReproducibleMath::sine(kQuarter), 1);
  EXPECT_EQ(ReproducibleMath::sine(2 * kQuarter), 0);
  EXPECT_EQ(ReproducibleMath::sine(3 * kQuarter), -1);
  EXPECT_EQ(ReproducibleMath::amplitudeOfDB(0), 1);
  EXPECT_EQ(ReproducibleMath::log2(1), 0);
}

TEST(ReproducibleMath, TakesTurnsOfAnySize) {
  constexpr ReproducibleMath::Phase kQuarter = ReproducibleMath::Phase{1} << 62;
  EXPECT_EQ(ReproducibleMath::phaseOfTurns(5.25), kQuarter);
  EXPECT_EQ(ReproducibleMath::phaseOfTurns(-0.25), 3 * kQuarter);
  EXPECT_EQ(ReproducibleMath::phaseOfTurns(-1e-20), 0U);
}

}  // namespace
}  // namespace orvane::core
