#include "cli/output/waveform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvane::cli {
namespace {

std::string drawn(const std::vector<float>& samples, std::size_t columns) {
  const auto frames = static_cast<std::uint32_t>(samples.size());
  const auto buffer = PCMBuffer::make({.sampleRate = 48000, .channelCount = 2}, frames);
  std::copy(samples.begin(), samples.end(), buffer->channel(1));
  buffer->setFrameLength(frames);
  return waveform(*buffer, columns);
}

TEST(LevelBar, HasAStepForEachEighth) {
  EXPECT_STREQ(levelBar(0), "▁");
  EXPECT_STREQ(levelBar(0.125), "▁");
  EXPECT_STREQ(levelBar(0.126), "▂");
  EXPECT_STREQ(levelBar(0.5), "▄");
  EXPECT_STREQ(levelBar(0.876), "█");
  EXPECT_STREQ(levelBar(1), "█");
}

TEST(LevelBar, TakesWhatLiesOutside) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_STREQ(levelBar(-1), "▁");
  EXPECT_STREQ(levelBar(-kInfinity), "▁");
  EXPECT_STREQ(levelBar(std::nan("")), "▁");
  EXPECT_STREQ(levelBar(3), "█");
  EXPECT_STREQ(levelBar(kInfinity), "█");
}

TEST(Waveform, ShowsTheHighestSampleOfEachPart) {
  EXPECT_EQ(drawn({1, 0, 0, 0.49F, 0, -0.24F, 0, 0}, 4), "█▇▆▁");
}

TEST(Waveform, HasNoMoreColumnsThanFrames) {
  EXPECT_EQ(drawn({1, 0.01F, 1}, 24), "█▂█");
  EXPECT_EQ(drawn({}, 24), "");
}

TEST(Waveform, TakesSamplesThatAreNotFinite) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(drawn({kInfinity, std::nanf(""), 1e30F}, 3), "█▁█");
}

}  // namespace
}  // namespace orvane::cli
