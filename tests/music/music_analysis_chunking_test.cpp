#include "orvane/music/music_analysis_chunking.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/random.h"

namespace orvane {
namespace {

using Chunks = std::vector<MusicAnalysisChunking::Chunk>;
using MusicAnalysisChunking::chunkFrames;
using MusicAnalysisChunking::chunks;

TEST(MusicAnalysisChunking, TakesASecondAtATime) {
  EXPECT_EQ(chunks(120'000, 48000), (Chunks{{0, 48000}, {48000, 48000}, {96000, 24000}}));
  EXPECT_EQ(chunks(96'000, 48000), (Chunks{{0, 48000}, {48000, 48000}}));
  EXPECT_EQ(chunks(1, 48000), (Chunks{{0, 1}}));
}

TEST(MusicAnalysisChunking, HasNoneForNoFrames) {
  EXPECT_EQ(chunks(0, 48000), Chunks{});
  EXPECT_EQ(chunks(-1, 48000), Chunks{});
}

TEST(MusicAnalysisChunking, RoundsTheSecond) {
  EXPECT_EQ(chunkFrames(44100.4), 44100);
  EXPECT_EQ(chunkFrames(44100.5), 44101);
  EXPECT_EQ(chunkFrames(44101.5), 44102);
  EXPECT_EQ(chunkFrames(0.4), 1);
  EXPECT_EQ(chunkFrames(0), 1);
  EXPECT_EQ(chunkFrames(-48000), 1);
}

TEST(MusicAnalysisChunking, CoversExactly) {
  test::Random random(4);
  for (int round = 0; round < 2000; ++round) {
    const auto frames = static_cast<std::int64_t>(random.below(100'000));
    const double rate = random.between(100, 200'000);
    std::int64_t next = 0;
    const auto all = chunks(frames, rate);
    for (const auto& chunk : all) {
      EXPECT_EQ(chunk.offset, next);
      EXPECT_EQ(chunk.count, std::min(chunkFrames(rate), frames - next));
      next += chunk.count;
    }
    EXPECT_EQ(next, frames);
  }
}

TEST(MusicAnalysisChunkingDeathTest, NeedsARateThatIsANumber) {
  EXPECT_DEATH((void)chunkFrames(std::numeric_limits<double>::quiet_NaN()), "64 bits");
  EXPECT_DEATH((void)chunks(1, std::numeric_limits<double>::infinity()), "64 bits");
}

}  // namespace
}  // namespace orvane
