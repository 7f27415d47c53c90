#include "orvane/edit/edit_result.h"

#include <cmath>
#include <limits>

#include "tests/edit/edit_samples.h"

namespace orvane::EditOperations {
namespace {

EditResult resultOf(std::size_t channelCount, std::size_t frames = 5) {
  return {test::noise(channelCount, frames), 48'000, static_cast<int>(channelCount)};
}

TEST(BuildBuffer, HoldsTheSamples) {
  for (const std::size_t count : {1U, 2U, 3U, 6U}) {
    const auto result = resultOf(count);
    const auto buffer = buildBuffer(result);
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->sampleRate(), 48'000);
    EXPECT_EQ(buffer->channelCount(), count);
    EXPECT_EQ(buffer->frameLength(), 5U);
    EXPECT_FALSE(buffer->format().layout);
    for (std::uint32_t c = 0; c < count; ++c)
      EXPECT_TRUE(std::equal(result.channelData[c].begin(), result.channelData[c].end(),
                             buffer->channel(c)));
  }
}

TEST(BuildBuffer, TakesALayoutOfThreeAndMoreChannelsThatFits) {
  const auto surround = ChannelLayout::fromTag(ChannelLayoutTags::mpeg51A);
  ASSERT_TRUE(surround);
  EXPECT_EQ(buildBuffer(resultOf(6), surround)->format().layout, surround);
  EXPECT_FALSE(buildBuffer(resultOf(5), surround)->format().layout);
  EXPECT_FALSE(
      buildBuffer(resultOf(2), ChannelLayout::fromTag(ChannelLayoutTags::stereo))->format().layout);
}

TEST(BuildBuffer, IsNothingWhereNoBufferCanBe) {
  EXPECT_FALSE(buildBuffer({}));
  EXPECT_FALSE(buildBuffer({{{1.0F}}, 48'000, 0}));
  for (const double rate : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()})
    EXPECT_FALSE(buildBuffer({{{1.0F}}, rate, 1}));
}

TEST(BuildBuffer, ReadsNoMoreChannelsThanAreCounted) {
  EXPECT_EQ(buildBuffer({{{1.0F}, {2.0F}}, 48'000, 1})->channelCount(), 1U);
  EXPECT_DEATH(buildBuffer({{{1.0F}}, 48'000, 2}), "every channel has an array");
}

TEST(BuildBuffer, OfNoFramesIsEmpty) {
  const auto buffer = buildBuffer({{{}, {}}, 48'000, 2});
  ASSERT_TRUE(buffer);
  EXPECT_EQ(buffer->frameLength(), 0U);
}

}  // namespace
}  // namespace orvane::EditOperations
