#include "orvane/platform/pcm_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace orvane {
namespace {

const AudioFormat kStereo{.sampleRate = 48000, .channelCount = 2};

TEST(PCMBuffer, KeepsFormatAndStartsSilentAndEmpty) {
  const auto buffer = PCMBuffer::make({.sampleRate = 48000, .channelCount = 2}, 1000);
  ASSERT_TRUE(buffer);
  EXPECT_EQ(buffer->channelCount(), 2U);
  EXPECT_EQ(buffer->frameCapacity(), 1000U);
  EXPECT_EQ(buffer->frameLength(), 0U);
  for (std::uint32_t c = 0; c < 2; ++c)
    for (std::uint32_t i = 0; i < 1000; ++i) EXPECT_EQ(buffer->channel(c)[i], 0.0F);
}

TEST(PCMBuffer, StartsEachChannelOnItsOwnCacheLine) {
  for (const std::uint32_t frames : {1U, 15U, 16U, 17U, 1U << 20}) {
    const auto buffer = PCMBuffer::make({.sampleRate = 8000, .channelCount = 3}, frames);
    ASSERT_TRUE(buffer);
    for (std::uint32_t c = 0; c < 3; ++c) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer->channel(c)) % 64, 0U);
      buffer->channel(c)[frames - 1] = 1.0F;
    }
    EXPECT_GE(buffer->channel(1) - buffer->channel(0), static_cast<std::ptrdiff_t>(frames));
  }
}

TEST(PCMBuffer, IsAbsentWhenTheMemoryCannotBeHad) {
  EXPECT_FALSE(PCMBuffer::make({.sampleRate = 48000, .channelCount = 1U << 20}, UINT32_MAX));
}

TEST(PCMBuffer, PermutesChannelsWithoutMovingSamples) {
  const auto buffer = PCMBuffer::make({.sampleRate = 48000, .channelCount = 3}, 4);
  ASSERT_TRUE(buffer);
  const float* const stored[] = {buffer->channel(0), buffer->channel(1), buffer->channel(2)};
  buffer->permuteChannels({2, 0, 1}, std::nullopt);
  EXPECT_EQ(buffer->channel(0), stored[2]);
  EXPECT_EQ(buffer->channel(1), stored[0]);
  EXPECT_EQ(buffer->channel(2), stored[1]);
}

TEST(PCMBufferDeathTest, StopsWhenTheLengthExceedsTheCapacity) {
  const auto buffer = PCMBuffer::make({.sampleRate = 48000, .channelCount = 1}, 4);
  EXPECT_DEATH(buffer->setFrameLength(5), "capacity");
}

TEST(PCMBufferPool, UsesMemoryAgain) {
  PCMBufferPool pool;
  auto buffer = pool.make(kStereo, 1000);
  ASSERT_TRUE(buffer);
  buffer->channel(1)[999] = 7;
  const float* const memory = buffer->channel(0);
  const auto other = pool.make(kStereo, 1000);
  EXPECT_NE(other->channel(0), memory);
  buffer.reset();
  buffer = pool.make(kStereo, 900);
  EXPECT_EQ(buffer->channel(0), memory);
  EXPECT_EQ(buffer->frameCapacity(), 900U);
  EXPECT_EQ(buffer->frameLength(), 0U);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer->channel(1)) % 64, 0U);
}

TEST(PCMBufferPool, GivesTheSmallestThatIsLargeEnoughAndKeepsNoneThatIsTooSmall) {
  PCMBufferPool pool;
  auto small = pool.make(kStereo, 1000);
  auto large = pool.make(kStereo, 100000);
  const float* const smallMemory = small->channel(0);
  const float* const largeMemory = large->channel(0);
  small.reset();
  large.reset();
  small = pool.make(kStereo, 1000);
  large = pool.make(kStereo, 2000);
  EXPECT_EQ(small->channel(0), smallMemory);
  EXPECT_EQ(large->channel(0), largeMemory);
  small.reset();
  const auto larger = pool.make(kStereo, 5000);
  ASSERT_TRUE(larger);
  larger->setFrameLength(5000);
  for (int i = 0; i < 5000; ++i) larger->channel(1)[i] = 1;
}

TEST(PCMBufferPool, ItsBuffersOutliveIt) {
  auto pool = std::make_unique<PCMBufferPool>();
  const auto buffer = pool->make(kStereo, 1000);
  pool.reset();
  buffer->channel(1)[999] = 1;
}

TEST(PCMBufferPool, RefusesWhatNoMemoryCanHold) {
  PCMBufferPool pool;
  AudioFormat format = kStereo;
  format.channelCount = 1U << 20;
  EXPECT_FALSE(pool.make(format, UINT32_MAX));
  EXPECT_FALSE(PCMBuffer::make(format, UINT32_MAX));
}

}  // namespace
}  // namespace orvane
