#include "orvane/edit/peak_normalization.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvane/core/decibels.h"
#include "tests/edit/edit_samples.h"

namespace orvane::EditOperations {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(NormalizePeak, BringsTheHighestPeakOfAllChannelsToTheTarget) {
  for (const double target : {0.0, -1.0, -20.0, 6.0}) {
    auto channels = test::noise(3, 1000);
    for (float& x : channels[1]) x *= 0.1F;
    channels[2][400] = -1.75F;
    const auto gain = static_cast<float>(std::pow(10.0, (target - 20 * std::log10(1.75)) / 20));
    const auto result = normalizePeak(channels, 44100, target);
    EXPECT_EQ(result.sampleRate, 44100);
    for (auto& channel : channels)
      for (float& x : channel) x *= gain;
    EXPECT_EQ(result.channelData, channels);
    EXPECT_NEAR(core::linearToDB(static_cast<double>(-result.channelData[2][400])), target, 1e-6);
  }
}

TEST(NormalizePeak, LeavesSilenceAlone) {
  const ChannelArrays silence = {{0, -0.0F, 0}, {0, 0, 0}};
  EXPECT_EQ(normalizePeak(silence, 48000, -1).channelData, silence);
  EXPECT_TRUE(std::signbit(normalizePeak(silence, 48000, -1).channelData[0][1]));
  EXPECT_EQ(normalizePeak({}, 48000, -1), (EditResult{{}, 48000, 0}));
  EXPECT_EQ(normalizePeak({{}}, 48000, -1), (EditResult{{{}}, 48000, 1}));
}

TEST(NormalizePeak, DoesNotTakeWhatIsNoNumberForThePeak) {
  const auto result = normalizePeak({{kInfinity, 0.25F, kNaN}, {-kInfinity, -0.5F, 0}}, 48000, 0);
  EXPECT_EQ(result.channelData[0][1], 0.5F);
  EXPECT_EQ(result.channelData[1][1], -1.0F);
  EXPECT_EQ(result.channelData[0][0], kInfinity);
  const auto nothing = normalizePeak({{kInfinity, kNaN, 0}}, 48000, -1).channelData[0];
  EXPECT_EQ(nothing[0], kInfinity);
  EXPECT_EQ(nothing[2], 0);
}

TEST(PeakNormalizationGain, IsNoneForSilence) {
  EXPECT_EQ(peakNormalizationGainDB(finitePeak({}), -1), 0);
}

}  // namespace
}  // namespace orvane::EditOperations
