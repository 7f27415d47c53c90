#include "orvane/platform/pcm_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace orvane {
namespace {

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

}  // namespace
}  // namespace orvane
