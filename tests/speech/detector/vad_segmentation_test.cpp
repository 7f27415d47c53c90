#include "orvane/speech/detector/vad_segmentation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace orvane {
namespace {

using VadSegmentation::segments;

constexpr float kSpeech = 0.95F;
constexpr float kSilence = 0.05F;
constexpr float kEntry = 0.5F;

struct Run {
  std::size_t count;
  float probability;
};

std::vector<float> frames(const std::vector<Run>& runs) {
  std::vector<float> result;
  for (const Run& run : runs) result.insert(result.end(), run.count, run.probability);
  return result;
}

void expectSegments(const std::vector<float>& probabilities,
                    const std::vector<VadSegment>& expected,
                    const VadSegmentationConfig& config = VadSegmentationConfig::defaults(),
                    std::size_t sampleCount = 0) {
  if (sampleCount == 0) sampleCount = probabilities.size() * VadSegmentation::kFrameSamples;
  const auto found = segments(probabilities, sampleCount, kEntry, config);
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_NEAR(found[i].startTime, expected[i].startTime, 1e-9) << i;
    EXPECT_NEAR(found[i].endTime, expected[i].endTime, 1e-9) << i;
  }
}

VadSegmentationConfig withMinSilence(double seconds) {
  auto config = VadSegmentationConfig::defaults();
  config.minSilenceDuration = seconds;
  return config;
}

VadSegmentationConfig withMinSpeech(double seconds) {
  auto config = VadSegmentationConfig::defaults();
  config.minSpeechDuration = seconds;
  return config;
}

TEST(VadSegmentationConfig, HasThePublishedDefaults) {
  const auto config = VadSegmentationConfig::defaults();
  EXPECT_EQ(config.minSpeechDuration, 0.15);
  EXPECT_EQ(config.minSilenceDuration, 0.75);
  EXPECT_EQ(config.maxSpeechDuration, 14.0);
  EXPECT_EQ(config.speechPadding, 0.1);
  EXPECT_EQ(config.silenceThresholdForSplit, 0.3F);
  EXPECT_EQ(config.negativeThreshold, std::nullopt);
  EXPECT_EQ(config.negativeThresholdOffset, 0.15F);
  EXPECT_EQ(config.minSilenceAtMaxSpeech, 0.098);
  EXPECT_TRUE(config.useMaxPossibleSilenceAtMaxSpeech);
}

TEST(VadSegmentation, FindsNothingInSilence) {
  expectSegments(frames({{8, kSilence}}), {});
  expectSegments({}, {});
}

TEST(VadSegmentation, PadsBothSides) {
  expectSegments(frames({{4, kSilence}, {12, kSpeech}, {4, kSilence}}), {{0.924, 4.196}});
}

TEST(VadSegmentation, BridgesPausesShorterThanTheMinimum) {
  expectSegments(frames({{4, kSpeech}, {2, kSilence}, {4, kSpeech}, {6, kSilence}}), {{0, 2.660}});
  expectSegments(frames({{4, kSpeech}, {3, kSilence}, {4, kSpeech}, {6, kSilence}}), {{0, 2.916}});
}

TEST(VadSegmentation, EndsSpeechAtTheFirstQuietFrameOfALongPause) {
  expectSegments(frames({{4, kSpeech}, {4, kSilence}, {4, kSpeech}, {6, kSilence}}),
                 {{0, 1.124}, {1.948, 3.172}});
}

TEST(VadSegmentation, SplitsContinuousSpeechWhereItStandsAndLosesThatFrame) {
  expectSegments(frames({{118, kSpeech}}), {{0, 13.668}, {13.724, 27.492}, {27.548, 30.208}});
}

TEST(VadSegmentation, SplitsLongSpeechAtAPause) {
  expectSegments(
      frames({{40, kSpeech}, {2, kSilence}, {30, kSpeech}, {2, kSilence}, {10, kSpeech}}),
      {{0, 10.340}, {10.652, 21.504}});
}

TEST(VadSegmentation, PrefersTheLongestQuietPauseForASplit) {
  // The middle pause is longest but not quiet enough; the first of the two quiet ones wins the tie.
  const auto input = frames({{10, kSpeech},
                             {1, 0.2F},
                             {10, kSpeech},
                             {2, 0.32F},
                             {10, kSpeech},
                             {1, 0.1F},
                             {22, kSpeech}});
  expectSegments(input, {{0, 2.56 + 0.1}, {2.816 - 0.1, 14.336}});
  auto anyPause = VadSegmentationConfig::defaults();
  anyPause.silenceThresholdForSplit = 0;
  expectSegments(input, {{0, 5.376 + 0.1}, {5.888 - 0.1, 14.336}}, anyPause);
  anyPause.useMaxPossibleSilenceAtMaxSpeech = false;
  expectSegments(input, {{0, 8.448 + 0.1}, {8.704 - 0.1, 14.336}}, anyPause);
}

TEST(VadSegmentation, HoldsSpeechBetweenTheThresholds) {
  expectSegments(frames({{2, kSpeech}, {6, 0.40F}, {4, kSilence}}), {{0, 2.148}});
}

TEST(VadSegmentation, SpeechStartsAtTheEntryThreshold) {
  expectSegments(frames({{2, kSilence}, {2, kEntry}, {6, kSilence}}), {{0.412, 1.124}});
  expectSegments(frames({{2, kSilence}, {2, std::nextafter(kEntry, 0.0F)}, {6, kSilence}}), {});
}

TEST(VadSegmentation, KeepsSpeechExactlyAsLongAsTheMinimum) {
  // One frame of 256 ms.
  const auto input = frames({{2, kSilence}, {1, kSpeech}, {6, kSilence}});
  expectSegments(input, {{0.412, 0.868}}, withMinSpeech(0.256));
  expectSegments(input, {}, withMinSpeech(0.2561));
}

TEST(VadSegmentation, DropsSpeechShorterThanTheMinimum) {
  const auto input = frames({{2, kSilence}, {1, kSpeech}, {6, kSilence}});
  expectSegments(input, {{0.412, 0.868}}, withMinSpeech(0.25));
  expectSegments(input, {}, withMinSpeech(0.3));
}

TEST(VadSegmentation, NeedsSeveralQuietFramesToEndSpeech) {
  expectSegments(frames({{4, kSpeech}, {1, kSilence}, {4, kSpeech}, {3, kSilence}}), {{0, 2.404}},
                 withMinSilence(0.3));
  expectSegments(frames({{4, kSpeech}, {2, kSilence}, {4, kSpeech}, {3, kSilence}}), {{0, 2.660}},
                 withMinSilence(0.3));
  expectSegments(frames({{4, kSpeech}, {2, kSilence}, {4, kSpeech}, {3, kSilence}}),
                 {{0, 1.124}, {1.436, 2.660}}, withMinSilence(0.1));
}

TEST(VadSegmentation, EndsOpenSpeechWithTheAudio) {
  expectSegments(frames({{2, kSilence}, {5, kSpeech}, {1, kSilence}}), {{0.412, 1.8545}},
                 VadSegmentationConfig::defaults(), 29672);
}

TEST(VadSegmentation, SharesAGapTooNarrowForBothPaddings) {
  // Split where it stands: one frame of 256 ms is shared; with 0.2 s of padding each side gets
  // half.
  auto config = withMinSilence(0.1);
  config.speechPadding = 0.3;
  config.minSpeechDuration = 0.1;
  expectSegments(frames({{4, kSpeech}, {2, kSilence}, {4, kSpeech}, {2, kSilence}}),
                 {{0, 1.28}, {1.28, 2.86}}, config);
}

TEST(VadSegmentation, MovesTheEntryThresholdWithAnExplicitExitThreshold) {
  auto config = VadSegmentationConfig::defaults();
  config.negativeThreshold = 0.7F;
  expectSegments(frames({{4, 0.8F}, {4, kSilence}}), {}, config);
  expectSegments(frames({{4, 0.9F}, {4, 0.75F}, {4, kSilence}}), {{0, 2.148}}, config);
}

TEST(VadSegmentation, KeepsTheExitThresholdAboveZero) {
  const auto found = segments(frames({{4, 0.2F}, {4, 0.005F}, {4, 0.2F}}), 12 * 4096, 0.1F,
                              VadSegmentationConfig::defaults());
  ASSERT_EQ(found.size(), 2U);  // 0.1 − 0.15 would never end
}

TEST(VadSegmentation, JoinsEightStepsAsTheChanceThatOneIsSpeech) {
  std::vector<float> steps(16, 0.083F);
  steps[11] = 1;
  const auto joined = VadSegmentation::frameProbabilities(steps);
  ASSERT_EQ(joined.size(), 2U);
  EXPECT_NEAR(joined[0], 0.5, 1e-3);
  EXPECT_EQ(joined[1], 1);
  EXPECT_TRUE(VadSegmentation::frameProbabilities({}).empty());
}

TEST(VadSegmentationDeathTest, StopsOnDurationsThatAreNotFinite) {
  EXPECT_DEATH(segments({}, 0, kEntry, withMinSilence(std::numeric_limits<double>::quiet_NaN())),
               "finite");
}

}  // namespace
}  // namespace orvane
