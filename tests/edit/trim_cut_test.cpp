#include "orvane/edit/trim_cut.h"

#include "orvane/edit/mapped_frames.h"
#include "tests/edit/edit_samples.h"
#include "tests/reference/edit_reference.h"

namespace orvane::EditOperations {
namespace {

constexpr float kEnvelopeTolerance = 2 * 2.4e-7F;  // of either gain

TEST(Trim, KeepsTheRangeBitForBit) {
  const auto channels = test::noise(2, 1001);
  for (const auto& range : test::rangesOf(1001)) {
    const auto result = trim(channels, 44'100, range.start, range.end);
    for (std::size_t c = 0; c < 2; ++c)
      EXPECT_EQ(result.channelData[c], reference::trim(channels[c], range.start, range.end));
  }
  EXPECT_EQ(trim({}, 44'100, 0, 1).channelCount, 0);
}

TEST(CutRange, JoinsBothSidesByACrossfade) {
  const auto channels = test::noise(2, 5001);
  for (const auto& range : test::rangesOf(5001)) {
    for (const std::int64_t crossfade : {-4, 0, 1, 2, 480, 1100, 9000}) {
      const auto result = cutRange(channels, 48'000, range.start, range.end, crossfade);
      for (std::size_t c = 0; c < 2; ++c)
        test::expectNear(result.channelData[c],
                         reference::cut(channels[c], range.start, range.end, crossfade),
                         kEnvelopeTolerance);
    }
  }
}

TEST(CutRange, TouchesNothingBesideTheCrossfade) {
  const auto channels = test::noise(1, 2000);
  const auto result = cutRange(channels, 48'000, 800, 1000, 100).channelData.front();
  ASSERT_EQ(result.size(), 1700U);
  EXPECT_TRUE(std::equal(result.begin(), result.begin() + 700, channels[0].begin()));
  EXPECT_TRUE(std::equal(result.begin() + 800, result.end(), channels[0].begin() + 1100));
}

TEST(CutRange, OfEverythingLeavesTheAudioAlone) {
  const auto channels = test::noise(1, 100);
  EXPECT_EQ(cutRange(channels, 48'000, 0, 100, 10).channelData, channels);
  EXPECT_EQ(cutRange(channels, 48'000, -10, 1000, 10).channelData, channels);
  EXPECT_EQ(cutMap(100, 0, 100, 10), FrameMap::identity(100));
}

TEST(CutRange, AtEitherEndHasNoCrossfade) {
  const auto channels = test::noise(1, 100);
  EXPECT_EQ(cutRange(channels, 48'000, 0, 40, 10).channelData.front(),
            reference::trim(channels[0], 40, 100));
  EXPECT_EQ(cutRange(channels, 48'000, 60, 100, 10).channelData.front(),
            reference::trim(channels[0], 0, 60));
}

TEST(CutRange, IsTheSameInSlicesOfAnySize) {
  const auto channels = test::noise(2, 6000);
  for (const auto& map : {cutMap(6000, 2500, 3000, 1400), cutMap(6000, 2500, 3000, 0),
                          cutMap(6000, 1000, 5000, 9999), trimMap(6000, 17, 5555)}) {
    const std::vector<const float*> sources = {channels[0].data(), channels[1].data()};
    const PlanarView source(sources, 6000);
    const ChannelArrays empty(2,
                              std::vector<float>(static_cast<std::size_t>(map.frameCount), 9.0F));
    const auto render = [&](const ProgrammeSlice& slice) {
      renderMappedFrames(map, source, slice.firstFrame, slice.audio);
    };
    const auto whole = test::inSlices(empty, {6000}, render);
    for (const std::vector<std::size_t>& sizes :
         {std::vector<std::size_t>{1}, {7, 1024}, {1000}, {1499, 1}})
      EXPECT_EQ(test::inSlices(empty, sizes, render), whole);
  }
}

TEST(CutMap, TellsWhereFramesWent) {
  const auto map = cutMap(1000, 400, 600, 50);
  EXPECT_EQ(map.frameCount, 750);
  EXPECT_EQ(map.placeOf(0), 0);
  EXPECT_EQ(map.placeOf(399), 399);
  EXPECT_EQ(map.placeOf(400), std::nullopt);
  EXPECT_EQ(map.placeOf(599), std::nullopt);
  EXPECT_EQ(map.placeOf(600), 350);
  EXPECT_EQ(map.placeOf(999), 749);
  EXPECT_EQ(map.placeOf(1000), std::nullopt);
}

TEST(TrimMap, TellsWhereFramesWent) {
  const auto map = trimMap(1000, 100, 300);
  EXPECT_EQ(map.frameCount, 200);
  EXPECT_EQ(map.placeOf(99), std::nullopt);
  EXPECT_EQ(map.placeOf(100), 0);
  EXPECT_EQ(map.placeOf(299), 199);
  EXPECT_EQ(map.placeOf(300), std::nullopt);
  EXPECT_EQ(trimMap(1000, 300, 100), FrameMap::identity(1000));
}

}  // namespace
}  // namespace orvane::EditOperations
