#include "orvane/core/pcm_buffer_allocation.h"

#include <gtest/gtest.h>

namespace orvane::core {
namespace {

TEST(PCMBufferAllocation, MakesAnEmptyBufferOfTheCapacity) {
  const AudioFormat format{.sampleRate = 44100, .channelCount = 2};
  const auto buffer = PCMBufferAllocation::make(format, 1000);
  ASSERT_TRUE(buffer);
  EXPECT_EQ(buffer->format(), format);
  EXPECT_EQ(buffer->frameCapacity(), 1000U);
  EXPECT_EQ(buffer->frameLength(), 0U);
}

TEST(PCMBufferAllocation, GivesNothingWhenTheMemoryCannotBeHad) {
  EXPECT_FALSE(
      PCMBufferAllocation::make({.sampleRate = 48000, .channelCount = 1U << 20}, UINT32_MAX));
}

}  // namespace
}  // namespace orvane::core
