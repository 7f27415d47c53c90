#include "orvane/analysis/generator_measurement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvane/core/generator/signal_generator.h"

namespace orvane {
namespace {

using Channels = std::vector<std::vector<float>>;
using GeneratorMeasurement::measure;
using GeneratorMeasurement::Metrics;
using ::testing::FloatNear;
using ::testing::Optional;

constexpr double kRate = 48'000;
/// Level of the power of a sine below its peak, and of one of two equal powers below both.
const float kHalf = static_cast<float>(10 * std::log10(2.0));

/// A sine at 0 dBFS that sounds in some of the channels.
Channels fullScaleSine(const std::vector<bool>& mask, double seconds = 2) {
  core::GeneratorSpec spec;
  spec.levelDB = 0;
  spec.durationSeconds = seconds;
  spec.channelCount = static_cast<std::uint32_t>(mask.size());
  spec.channelMask = mask;
  return core::SignalGenerator::render(spec);
}

TEST(GeneratorMeasurement, HasNothingToSayOfNothing) {
  EXPECT_EQ(measure({}, kRate), Metrics{});
  EXPECT_EQ(measure({{}, {}}, kRate), Metrics{});
}

TEST(GeneratorMeasurement, HasNothingToSayOfSilence) {
  EXPECT_EQ(measure(Channels(2, std::vector<float>(96'000)), kRate), Metrics{});
}

TEST(GeneratorMeasurement, MeasuresAFullScaleSine) {
  const auto metrics = measure(fullScaleSine({true}), kRate);
  EXPECT_THAT(metrics.peakDB, Optional(FloatNear(0, 1e-5F)));
  EXPECT_THAT(metrics.rmsDB, Optional(FloatNear(-kHalf, 1e-5F)));
  // The offset of BS.1770 is that of 997 Hz; 1 kHz reads a little more.
  EXPECT_THAT(metrics.integratedLUFS, Optional(FloatNear(-kHalf, 0.01F)));
}

TEST(GeneratorMeasurement, AveragesThePowerOverAllChannels) {
  const auto metrics = measure(fullScaleSine({true, false}), kRate);
  EXPECT_THAT(metrics.peakDB, Optional(FloatNear(0, 1e-5F)));
  EXPECT_THAT(metrics.rmsDB, Optional(FloatNear(-2 * kHalf, 1e-5F)));
  EXPECT_THAT(metrics.integratedLUFS, Optional(FloatNear(-kHalf, 0.01F)));
}

TEST(GeneratorMeasurement, TakesTheHighestPeakOfAllChannels) {
  const auto metrics = measure({{0.1F, 0.1F}, {0.1F, -0.5F}, {0.2F, 0.0F}}, kRate);
  EXPECT_THAT(metrics.peakDB, Optional(FloatNear(static_cast<float>(20 * std::log10(0.5)), 1e-5F)));
}

TEST(GeneratorMeasurement, WeighsAllChannelsAlike) {
  for (const std::size_t count : {3U, 4U, 5U, 6U, 7U, 8U}) {
    for (std::size_t sounding = 0; sounding < count; ++sounding) {
      std::vector<bool> mask(count);
      mask[sounding] = true;
      EXPECT_THAT(measure(fullScaleSine(mask), kRate).integratedLUFS,
                  Optional(FloatNear(-kHalf, 0.01F)))
          << "channel " << sounding << " of " << count;
    }
  }
}

TEST(GeneratorMeasurement, MeasuresWhatIsShorterThanAGatingBlock) {
  EXPECT_THAT(measure(fullScaleSine({true}, 0.1), kRate).integratedLUFS,
              Optional(FloatNear(-kHalf, 0.1F)));
}

TEST(GeneratorMeasurement, HasNoLoudnessWhereTheMeterHasNone) {
  for (const double rate : {1000.0, 1e6, std::numeric_limits<double>::quiet_NaN()}) {
    const auto metrics = measure(fullScaleSine({true}), rate);
    EXPECT_TRUE(metrics.peakDB && metrics.rmsDB) << rate;
    EXPECT_FALSE(metrics.integratedLUFS) << rate;
  }
}

TEST(GeneratorMeasurement, HasNoLoudnessBelowTheAbsoluteGate) {
  auto channels = fullScaleSine({true});
  for (float& x : channels[0]) x *= 1e-4F;
  const auto metrics = measure(channels, kRate);
  EXPECT_THAT(metrics.peakDB, Optional(FloatNear(-80, 1e-4F)));
  EXPECT_THAT(metrics.rmsDB, Optional(FloatNear(-80 - kHalf, 1e-4F)));
  EXPECT_FALSE(metrics.integratedLUFS);
}

TEST(GeneratorMeasurementDeathTest, WantsChannelsOfOneLength) {
  EXPECT_DEATH(measure({{0.5F, 0.5F}, {0.5F}}, kRate), "same length");
}

}  // namespace
}  // namespace orvane
