#include "orvane/core/decibels.h"

#include <gtest/gtest.h>

namespace orvane::core {
namespace {

TEST(LinearToDB, IsTwentyTimesTheLogarithm) {
  EXPECT_EQ(linearToDB(1.0F), 0.0F);
  EXPECT_EQ(linearToDB(10.0), 20.0);
  EXPECT_FLOAT_EQ(linearToDB(0.5F), -6.0205999F);
  EXPECT_NEAR(linearToDB(0.5), -6.020599913279624, 1e-14);
}

TEST(LinearToDB, IsMinusInfinityForZeroBelowAndNaN) {
  for (const float x : {0.0F, -0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
    EXPECT_EQ(linearToDB(x), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(linearToDB(static_cast<double>(x)), -std::numeric_limits<double>::infinity());
  }
}

}  // namespace
}  // namespace orvane::core
