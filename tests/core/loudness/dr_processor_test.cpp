#include "orvane/core/loudness/dr_processor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/reference/dr_reference.h"
#include "tests/support/programme.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

using DRProcessor::Block;
using test::Programme;

double channelDR(const std::vector<Block>& blocks) {
  return DRProcessor::channelDR(blocks);
}

std::int64_t score(const std::vector<double>& values) {
  return DRProcessor::score(values);
}

std::vector<double> channelDRs(const Programme& programme) {
  return DRProcessor::computeChannelDR(programme.pointers(), programme.channels.size(),
                                       programme.frameCount(), programme.sampleRate);
}

std::int64_t programmeDR(const Programme& programme) {
  return DRProcessor::computeDR(programme.pointers(), programme.channels.size(),
                                programme.frameCount(), programme.sampleRate);
}

/// A block whose RMS (with the procedure's √2) is `rms`.
Block blockOf(double rms, float peak) {
  return {rms * rms / 2, peak};
}

TEST(DRProcessor, CutsBlocksOfThreeSeconds) {
  EXPECT_EQ(DRProcessor::blockFrames(44100), 132480U);
  EXPECT_EQ(DRProcessor::blockFrames(48000), 144000U);
  EXPECT_EQ(DRProcessor::blockFrames(8000), 24000U);
  EXPECT_EQ(DRProcessor::blockFrames(22050.5), 66152U);  // halves away from zero
  EXPECT_EQ(DRProcessor::blockFrames(0.1), 1U);
}

TEST(DRProcessor, AgreesWithTheReference) {
  // Lengths of whole and part blocks; few, many and one. Reference level: other order of summation.
  for (const double seconds : {0.5, 2.99, 3.0, 3.01, 9.0, 14.9, 29.9, 30.0, 47.3})
    for (const std::uint32_t rate : {8000U, 11025U}) {
      const auto programme = test::music(71, rate, 2, seconds);
      const auto actual = channelDRs(programme);
      for (std::size_t c = 0; c < 2; ++c)
        EXPECT_NEAR(actual[c], test::reference::channelDR(programme.channels[c], rate), 1e-9)
            << seconds << " s at " << rate;
    }
}

TEST(DRProcessor, AgreesWithTheReferenceAt44100) {
  const auto programme = test::music(72, 44100, 1, 31.0);
  EXPECT_NEAR(channelDRs(programme)[0], test::reference::channelDR(programme.channels[0], 44100),
              1e-9);
}

TEST(DRProcessor, ScoresSineAndSquareWaves) {
  const Programme sine{48000, {test::lockedSine(48000 * 9, 1, 48, 0.0, 0.5)}};
  EXPECT_NEAR(channelDRs(sine)[0], 0.0, 1e-6);
  EXPECT_EQ(programmeDR(sine), 0);
  std::vector<float> square(48000 * 9);
  for (std::size_t n = 0; n < square.size(); ++n) square[n] = n / 24 % 2 == 0 ? 0.5F : -0.5F;
  EXPECT_NEAR(channelDRs({48000, {square}})[0], -3.0103, 1e-4);
  EXPECT_EQ(programmeDR({48000, {square}}), -3);
}

TEST(DRProcessor, TakesTheSecondHighestPeak) {
  EXPECT_NEAR(channelDR({blockOf(0.1, 1.0F), blockOf(0.1, 0.5F), blockOf(0.1, 0.25F)}),
              20 * std::log10(5), 1e-9);
  // Two blocks with the highest peak: it is the second-highest too.
  EXPECT_NEAR(channelDR({blockOf(0.1, 1.0F), blockOf(0.1, 1.0F), blockOf(0.1, 0.25F)}), 20.0, 1e-9);
}

TEST(DRProcessor, TakesTheOnlyPeakOfASingleBlock) {
  EXPECT_NEAR(channelDR({blockOf(0.1, 1.0F)}), 20.0, 1e-9);
}

TEST(DRProcessor, MeasuresTheLoudestFifth) {
  // Nine blocks: one of them. Ten: two, averaged by energy.
  std::vector<Block> blocks(9, blockOf(0.01, 1.0F));
  blocks[4] = blockOf(0.1, 1.0F);
  EXPECT_NEAR(channelDR(blocks), 20.0, 1e-9);
  blocks.push_back(blockOf(0.01, 1.0F));
  EXPECT_NEAR(channelDR(blocks), -10 * std::log10((0.01 + 0.0001) / 2), 1e-9);
}

TEST(DRProcessor, CountsThePartialLastBlockWithItsOwnLength) {
  // Silence, then half a second at full level: the short block is the loudest fifth.
  std::vector<float> samples(48000 * 6);
  samples.resize(48000 * 6 + 24000, 0.5F);
  samples[100] = 0.5F;
  EXPECT_NEAR(channelDRs({48000, {samples}})[0], -3.0103, 1e-4);
}

TEST(DRProcessor, RoundsHalvesAwayFromZero) {
  EXPECT_EQ(score({0.5}), 1);
  EXPECT_EQ(score({-0.5}), -1);
  EXPECT_EQ(score({6.0, 7.0}), 7);
  EXPECT_EQ(score({7.0, 8.0}), 8);
  EXPECT_EQ(score({7.49}), 7);
  EXPECT_EQ(score({}), 0);
}

TEST(DRProcessor, ScoresSilenceAndNothingAsZero) {
  EXPECT_EQ(programmeDR({48000, {std::vector<float>(48000 * 7)}}), 0);
  EXPECT_EQ(programmeDR({48000, {std::vector<float>{}}}), 0);
  EXPECT_EQ(programmeDR({48000, {}}), 0);
  EXPECT_EQ(channelDR({}), 0.0);
  // One sample among silence: its block has a level, the second-highest peak is 0.
  EXPECT_EQ(channelDR({blockOf(0.1, 1.0F), blockOf(0, 0.0F)}), 0.0);
}

TEST(DRProcessor, AveragesTheChannelsSilentOnesIncluded) {
  auto programme = test::music(73, 8000, 1, 20);
  const double alone = channelDRs(programme)[0];
  programme.channels.emplace_back(programme.frameCount());
  EXPECT_EQ(channelDRs(programme), (std::vector<double>{alone, 0.0}));
  EXPECT_EQ(programmeDR(programme), std::llround(alone / 2));
}

// Blocks without a level once went into a sort that needs an order among them.
TEST(DRProcessor, ScoresWhatIsNotANumberAsZero) {
  for (const float strange :
       {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    auto programme = test::music(74, 8000, 1, 200);
    for (std::size_t n = 100; n < programme.frameCount(); n += 50000)
      programme.channels[0][n] = strange;
    EXPECT_EQ(channelDRs(programme)[0], 0.0);
  }
}

}  // namespace
}  // namespace orvane::core
