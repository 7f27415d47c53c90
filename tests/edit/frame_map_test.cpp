#include "orvane/edit/frame_map.h"

#include <gtest/gtest.h>

#include "orvane/edit/silence.h"
#include "orvane/edit/trim_cut.h"

namespace orvane {
namespace {

using namespace EditOperations;

TEST(FrameMap, OfNoEditKeepsEveryPlace) {
  const auto map = FrameMap::identity(10);
  EXPECT_EQ(map.placeOf(0), 0);
  EXPECT_EQ(map.placeOf(9), 9);
  EXPECT_FALSE(map.placeOf(10));
  EXPECT_FALSE(map.placeOf(-1));
  EXPECT_TRUE(FrameMap::identity(0).pieces.empty());
}

TEST(FrameMap, OfEditsInTurnIsThatOfEachAfterTheOther) {
  constexpr std::int64_t kFrames = 1000;
  const auto cut = cutMap(kFrames, 300, 400, 20);
  const auto inserted = silenceMap(cut.frameCount, 500, 500, SilenceMode::insertBefore, 77);
  const auto trimmed = trimMap(inserted.frameCount, 100, 900);
  const auto all = cut.then(inserted).then(trimmed);
  EXPECT_EQ(all.frameCount, trimmed.frameCount);
  for (std::int64_t frame = 0; frame < kFrames; ++frame) {
    auto place = cut.placeOf(frame);
    if (place) place = inserted.placeOf(*place);
    if (place) place = trimmed.placeOf(*place);
    EXPECT_EQ(all.placeOf(frame), place) << frame;
  }
  EXPECT_EQ(FrameMap::identity(kFrames).then(cut), cut);
}

TEST(FrameMap, TellsTheFramesOfARangePieceByPiece) {
  const auto map =
      cutMap(1000, 300, 400, 20).then(silenceMap(880, 500, 500, SilenceMode::insertBefore, 7));
  EXPECT_EQ(map.placesOf({250, 700}),
            (std::vector<FrameRange>{{250, 300}, {280, 500}, {507, 587}}));
  EXPECT_TRUE(map.placesOf({310, 390}).empty());
  EXPECT_EQ(map.placesOf({-10, 5}), (std::vector<FrameRange>{{0, 5}}));
}

}  // namespace
}  // namespace orvane
