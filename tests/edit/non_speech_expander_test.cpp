#include "orvane/edit/non_speech_expander.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/edit/edit_samples.h"

namespace orvane::EditOperations {
namespace {

/// Per frame, straight from the formula.
std::vector<double> expectedGains(std::size_t frames, double sampleRate,
                                  const std::vector<bool>& mask, std::size_t blockFrames,
                                  const NonSpeechExpansion& by) {
  const double speech = std::pow(10.0, by.makeupDB / 20);
  const double other = speech * std::pow(10.0, std::min(by.reductionDB, 0.0) / 20);
  const double attack = std::exp(-1.0 / (sampleRate * std::max(by.attackMs / 1000, 0.0001)));
  const double release = std::exp(-1.0 / (sampleRate * std::max(by.releaseMs / 1000, 0.0001)));
  std::vector<double> gains;
  double g = mask[0] ? speech : other;
  for (std::size_t i = 0; i < frames; ++i) {
    const std::size_t block = i / blockFrames;
    const double target = block < mask.size() && mask[block] ? speech : other;
    g = target + (g - target) * (g <= target ? attack : release);
    gains.push_back(g);
  }
  return gains;
}

const std::vector<NonSpeechExpansion> kExpansions = {
    {.reductionDB = -12},
    {.reductionDB = -20, .makeupDB = 3, .attackMs = 5, .releaseMs = 20},
    {.reductionDB = -6, .makeupDB = -1, .attackMs = 0, .releaseMs = -4},
    {.reductionDB = 9, .makeupDB = 2},
    {.reductionDB = -std::numeric_limits<double>::infinity(), .attackMs = 1, .releaseMs = 1}};

TEST(ExpandNonSpeech, EqualsItsFormulaBitForBit) {
  const auto channels = test::noise(2, 20000);
  const std::vector<std::vector<bool>> masks = {
      {true}, {false}, {true, false, true, true}, {false, true, false, false, true}};
  for (const auto& by : kExpansions)
    for (const auto& mask : masks)
      for (const std::size_t blockFrames : {1U, 777U, 3000U, 50000U}) {
        const auto gains = expectedGains(20000, 8000, mask, blockFrames, by);
        auto expected = channels;
        for (auto& channel : expected)
          for (std::size_t i = 0; i < channel.size(); ++i)
            channel[i] *= static_cast<float>(gains[i]);
        const auto result =
            expandNonSpeech(channels, 8000, mask, static_cast<std::int64_t>(blockFrames), by);
        ASSERT_EQ(result, (EditResult{expected, 8000, 2}));
      }
}

TEST(ExpandNonSpeech, IsTheSameInSlicesOfAnySize) {
  const auto channels = test::noise(2, 10007);
  const std::vector<bool> mask = {true, false, false, true};
  const auto& by = kExpansions[1];
  NonSpeechExpander expander(8000, mask, 1500, by);
  EXPECT_EQ(test::inSlices(channels, {1, 3, 1024, 1025, 2000},
                           [&](const ProgrammeSlice& slice) { expander.process(slice.audio); }),
            expandNonSpeech(channels, 8000, mask, 1500, by).channelData);
}

TEST(ExpandNonSpeech, AttacksIntoSpeechAndReleasesOutOfIt) {
  ChannelArrays ones = {std::vector<float>(48000 * 3, 1.0F)};
  const auto gains = expandNonSpeech(ones, 48000, {false, true, false}, 48000,
                                     {.reductionDB = -20, .attackMs = 10, .releaseMs = 200})
                         .channelData[0];
  EXPECT_EQ(gains[0], 0.1F);
  EXPECT_EQ(gains[47999], 0.1F);
  EXPECT_NEAR(gains[48000 + 479], 1 - 0.9 * std::exp(-1), 1e-6);
  EXPECT_NEAR(gains[96000 + 9599], 0.1 + 0.9 * std::exp(-1), 1e-6);
}

TEST(SpeechBlocks, AreThoseThatSpeechTouches) {
  const std::vector<FrameRange> speech = {{20, 21}, {-5, 3}, {39, 51}, {70, 70}, {99, 300}};
  EXPECT_EQ(speechBlocks(speech, 101, 10), (std::vector<bool>{true, false, true, true, true, true,
                                                              false, false, false, true, true}));
  EXPECT_EQ(speechBlocks({}, 11, 10), (std::vector<bool>{false, false}));
}

TEST(SpeechBlocks, LastATenthOfASecondToTheNearestFrame) {
  EXPECT_EQ(speechBlockFrames(48'000), 4'800);
  EXPECT_EQ(speechBlockFrames(11'025), 1'103);
  EXPECT_EQ(speechBlockFrames(1), 1);
}

TEST(ExpandNonSpeech, LeavesAudioAloneWithoutBlocks) {
  const auto channels = test::noise(2, 100);
  const NonSpeechExpansion by{.reductionDB = -20};
  EXPECT_EQ(expandNonSpeech(channels, 48000, {}, 10, by).channelData, channels);
  EXPECT_EQ(expandNonSpeech(channels, 48000, {true, false}, 0, by).channelData, channels);
  EXPECT_EQ(expandNonSpeech(channels, 48000, {true, false}, -1, by).channelData, channels);
  EXPECT_EQ(expandNonSpeech({}, 48000, {true}, 10, by).channelCount, 0);
  EXPECT_EQ(expandNonSpeech({{}}, 48000, {true}, 10, by).channelData, (ChannelArrays{{}}));
  expandNonSpeechInPlace({}, 48000, {true}, 10, by);
}

}  // namespace
}  // namespace orvane::EditOperations
