#include "orvane/edit/silence.h"

#include "tests/edit/edit_samples.h"

namespace orvane::EditOperations {
namespace {

using Channel = std::vector<float>;

const ChannelArrays kCounted = {{1, 2, 3, 4, 5}, {-1, -2, -3, -4, -5}};

Channel firstOf(std::int64_t start, std::int64_t end, SilenceMode mode, std::int64_t duration) {
  const auto result = addSilence(kCounted, 48'000, start, end, mode, duration);
  EXPECT_EQ(result.channelCount, 2);
  Channel second = result.channelData[1];
  for (float& x : second) x = 0 - x;
  EXPECT_EQ(second, result.channelData[0]);
  return result.channelData[0];
}

TEST(AddSilence, InsertsBeforeTheRange) {
  EXPECT_EQ(firstOf(2, 4, SilenceMode::insertBefore, 2), (Channel{1, 2, 0, 0, 3, 4, 5}));
  EXPECT_EQ(firstOf(-3, 4, SilenceMode::insertBefore, 1), (Channel{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(firstOf(2, 2, SilenceMode::insertBefore, 1), (Channel{1, 2, 0, 3, 4, 5}));
  EXPECT_EQ(firstOf(9, 12, SilenceMode::insertBefore, 1), (Channel{1, 2, 3, 4, 5, 0}));
}

TEST(AddSilence, InsertsAfterTheRange) {
  EXPECT_EQ(firstOf(2, 4, SilenceMode::insertAfter, 2), (Channel{1, 2, 3, 4, 0, 0, 5}));
  EXPECT_EQ(firstOf(2, 9, SilenceMode::insertAfter, 1), (Channel{1, 2, 3, 4, 5, 0}));
  EXPECT_EQ(firstOf(-4, -2, SilenceMode::insertAfter, 1), (Channel{0, 1, 2, 3, 4, 5}));
}

TEST(AddSilence, ReplacesTheRange) {
  EXPECT_EQ(firstOf(1, 3, SilenceMode::replace, 7), (Channel{1, 0, 0, 4, 5}));
  EXPECT_EQ(firstOf(-1, 9, SilenceMode::replace, -7), (Channel{0, 0, 0, 0, 0}));
  EXPECT_EQ(firstOf(3, 3, SilenceMode::replace, 7), kCounted[0]);
}

TEST(AddSilence, OfNoLengthInsertsNothing) {
  EXPECT_EQ(firstOf(2, 4, SilenceMode::insertBefore, 0), kCounted[0]);
  EXPECT_EQ(firstOf(2, 4, SilenceMode::insertAfter, 0), kCounted[0]);
  EXPECT_DEATH(firstOf(2, 4, SilenceMode::insertAfter, -1), "no negative time");
}

TEST(AddSilence, MakesSilenceOfNoAudioAtAll) {
  const auto result = addSilence({{}, {}}, 48'000, 0, 0, SilenceMode::insertBefore, 3);
  EXPECT_EQ(result.channelData, (ChannelArrays{{0, 0, 0}, {0, 0, 0}}));
  EXPECT_EQ(addSilence({}, 48'000, 0, 0, SilenceMode::insertBefore, 3),
            (EditResult{{}, 48'000, 0}));
}

TEST(SilenceMap, TellsWhereFramesWent) {
  const auto inserted = silenceMap(1000, 400, 600, SilenceMode::insertBefore, 50);
  EXPECT_EQ(inserted.frameCount, 1050);
  EXPECT_EQ(inserted.placeOf(399), 399);
  EXPECT_EQ(inserted.placeOf(400), 450);
  EXPECT_EQ(inserted.placeOf(999), 1049);

  EXPECT_EQ(silenceMap(1000, 400, 600, SilenceMode::replace, 50), FrameMap::identity(1000));
}

TEST(AddSilence, ReplacesInSlicesOfAnySizeAlike) {
  const auto channels = test::noise(2, 1003);
  EXPECT_EQ(test::inSlices(channels, {1, 64, 130},
                           [](const ProgrammeSlice& slice) {
                             silenceSlice(slice, {100, 900});
                           }),
            addSilence(channels, 48'000, 100, 900, SilenceMode::replace, 0).channelData);
}

}  // namespace
}  // namespace orvane::EditOperations
