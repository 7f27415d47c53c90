#include "orvane/core/loudness/loudness_measurement.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace orvane::core {
namespace {

constexpr float kMinusInfinity = -std::numeric_limits<float>::infinity();

float programRMS(const std::vector<float>& levels) {
  return LoudnessMeasurement::programRMSDBFS(levels);
}

TEST(ProgramRMS, IsThePowerMeanOfTheChannels) {
  EXPECT_FLOAT_EQ(programRMS({-20.0F}), -20.0F);
  EXPECT_FLOAT_EQ(programRMS({-20.0F, -20.0F}), -20.0F);
  EXPECT_NEAR(programRMS({-20.0F, -30.0F}), -22.5964, 1e-4);
  EXPECT_NEAR(programRMS({-20.0F, -20.0F, -20.0F, -200.0F}), -21.2494, 1e-4);
}

TEST(ProgramRMS, CountsASilentChannelAsNoPower) {
  EXPECT_NEAR(programRMS({-20.0F, kMinusInfinity}), -23.0103, 1e-4);
}

TEST(ProgramRMS, HasNoLevelForSilenceAndForNoChannels) {
  EXPECT_EQ(programRMS({kMinusInfinity, kMinusInfinity}), kMinusInfinity);
  EXPECT_EQ(programRMS({}), kMinusInfinity);
}

}  // namespace
}  // namespace orvane::core
