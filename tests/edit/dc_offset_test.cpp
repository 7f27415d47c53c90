#include "orvane/edit/dc_offset.h"

#include <cmath>

#include "tests/edit/edit_samples.h"

namespace orvane::EditOperations {
namespace {

/// In extended precision, rounded once.
float meanOf(const std::vector<float>& samples, const FrameRange& range) {
  long double sum = 0;
  for (std::int64_t n = range.start; n < range.end; ++n)
    sum += static_cast<long double>(samples[static_cast<std::size_t>(n)]);
  return static_cast<float>(sum / static_cast<long double>(range.length()));
}

TEST(RemoveDCOffset, SubtractsTheMeanOfTheRangePerChannel) {
  auto channels = test::noise(2, 100'003);
  for (float& x : channels[1]) x = x / 2 + 0.25F;
  for (const auto& asked : test::rangesOf(100'003)) {
    const auto range = asked.clamped(100'003);
    const auto result = removeDCOffset(channels, 48'000, asked.start, asked.end);
    for (std::size_t c = 0; c < 2; ++c) {
      auto expected = channels[c];
      if (!range.isEmpty()) {
        const float mean = meanOf(channels[c], range);
        for (std::int64_t n = range.start; n < range.end; ++n)
          expected[static_cast<std::size_t>(n)] += -mean;
      }
      EXPECT_EQ(result.channelData[c], expected);
    }
  }
}

TEST(RemoveDCOffset, LeavesNoMeanBehind) {
  const auto result = removeDCOffset({{0.5F, 0.75F, 0.25F, 0.5F}}, 48'000, 0, 4);
  EXPECT_EQ(result.channelData.front(), (std::vector<float>{0, 0.25F, -0.25F, 0}));
}

TEST(RemoveDCOffset, IsTheSameInSlicesOfAnySize) {
  const auto channels = test::noise(2, 1003);
  const std::vector<float> offsets = {dcOffset(std::span(channels[0]).subspan(10, 490)),
                                      dcOffset(std::span(channels[1]).subspan(10, 490))};
  EXPECT_EQ(test::inSlices(channels, {1, 64, 130},
                           [&](const ProgrammeSlice& slice) {
                             subtractFromSlice(slice, {10, 500}, offsets);
                           }),
            removeDCOffset(channels, 48'000, 10, 500).channelData);
}

TEST(DCOffsetMeter, GivesTheSameForPiecesOfAnySize) {
  const auto samples = test::noise(1, 300'007).front();
  DCOffsetMeter meter;
  std::span<const float> rest = samples;
  for (const std::size_t size : {1U, 65'535U, 65'536U, 100'000U, 3U}) {
    meter.process(rest.first(size));
    rest = rest.subspan(size);
  }
  meter.process(rest);
  EXPECT_EQ(meter.offset(), dcOffset(samples));
  EXPECT_EQ(DCOffsetMeter().offset(), 0);
}

TEST(RemoveDCOffset, OfNothingDoesNothing) {
  EXPECT_EQ(dcOffset({}), 0);
  removeDCOffsetInPlace({}, 0, 10);
  EXPECT_EQ(removeDCOffset({}, 48'000, 0, 10).channelCount, 0);
}

}  // namespace
}  // namespace orvane::EditOperations
