#include "orvane/core/loudness/loudness_timeline.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvane::core {
namespace {

constexpr std::size_t kStepFrames = 100;

/// Steps of constant energy: each tick gets a tenth.
LoudnessTimeline timelineOf(const std::vector<double>& stepEnergies) {
  LoudnessTimeline timeline(kStepFrames);
  for (const double energy : stepEnergies)
    for (int tick = 0; tick < 10; ++tick) timeline.appendTick(energy / 10);
  return timeline;
}

TEST(LoudnessTimeline, MakesOneBlockPerStepFromTheFourthOn) {
  const auto timeline = timelineOf({100, 200, 300, 400, 500});
  EXPECT_EQ(timeline.entryCount(), 5U);
  ASSERT_EQ(timeline.blockPowers().size(), 2U);
  EXPECT_DOUBLE_EQ(timeline.blockPowers()[0], 1000.0 / 400);
  EXPECT_DOUBLE_EQ(timeline.blockPowers()[1], 1400.0 / 400);
}

TEST(LoudnessTimeline, DropsAnIncompleteLastBlock) {
  auto timeline = timelineOf({100, 100, 100, 100});
  timeline.finish(50, 55);
  EXPECT_EQ(timeline.entryCount(), 5U);
  EXPECT_EQ(timeline.blockPowers().size(), 1U);
}

TEST(LoudnessTimeline, MeasuresAShortProgrammeAsOneBlockOfItsOwnLength) {
  auto timeline = timelineOf({100, 100});
  timeline.finish(30, 25);
  ASSERT_EQ(timeline.blockPowers().size(), 1U);
  EXPECT_DOUBLE_EQ(timeline.blockPowers()[0], 230.0 / 225);
}

TEST(LoudnessTimeline, FindsMomentaryWindowsBetweenSteps) {
  // 400 ms of sound that begin 50 ms into a step fill no window on the 100 ms grid.
  LoudnessTimeline timeline(kStepFrames);
  for (int tick = 0; tick < 60; ++tick) timeline.appendTick(tick >= 5 && tick < 45 ? 10.0 : 0.0);
  EXPECT_DOUBLE_EQ(timeline.momentaryPower(3), 350.0 / 400);
  EXPECT_DOUBLE_EQ(timeline.momentaryPower(4), 400.0 / 400);
  EXPECT_DOUBLE_EQ(timeline.momentaryPower(5), 350.0 / 400 - 10.0 / 400 + 0.0);
}

TEST(LoudnessTimeline, CountsTimeBeforeTheStartAsSilence) {
  const auto timeline = timelineOf({100});
  EXPECT_DOUBLE_EQ(timeline.momentaryPower(0), 100.0 / 400);
  EXPECT_DOUBLE_EQ(timeline.shortTermPower(0), 100.0 / 3000);
}

TEST(LoudnessTimeline, KeepsSilenceCleanAfterLoudPassages) {
  std::vector<double> steps(10, 1e12);
  steps.resize(60, 0.0);
  const auto timeline = timelineOf(steps);
  EXPECT_EQ(timeline.momentaryPower(14), 0.0);
  EXPECT_EQ(timeline.shortTermPower(45), 0.0);
}

TEST(LoudnessTimeline, CountsOnlyWholeThreeSecondWindows) {
  EXPECT_TRUE(timelineOf(std::vector<double>(29, 1.0)).wholeShortTermPowers().empty());
  EXPECT_EQ(timelineOf(std::vector<double>(30, 1.0)).wholeShortTermPowers().size(), 1U);
  EXPECT_EQ(timelineOf(std::vector<double>(45, 1.0)).wholeShortTermPowers().size(), 16U);
}

}  // namespace
}  // namespace orvane::core
