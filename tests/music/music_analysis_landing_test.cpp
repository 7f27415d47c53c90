#include "orvane/music/music_analysis_landing.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using namespace MusicAnalysisLanding;

const UUID kA = *UUID::parse("123e4567-e89b-42d3-a456-426614174000");
const UUID kB = *UUID::parse("00000000-0000-4000-8000-000000000000");

TEST(MusicAnalysisLanding, ShowsWhatBelongsToWhatIsShown) {
  EXPECT_EQ(decide({1, 2, {}}, {1, 2, {}}), Decision(Display{}));
  EXPECT_EQ(decide({1, 2, kA}, {1, 2, kA}), Decision(Display{}));
}

TEST(MusicAnalysisLanding, KeepsWhatBelongsToAnotherSlot) {
  EXPECT_EQ(decide({1, 2, kA}, {1, 2, kB}), Decision(StoreForSlot{kA}));
  EXPECT_EQ(decide({1, 2, kA}, {1, 2, {}}), Decision(StoreForSlot{kA}));
}

TEST(MusicAnalysisLanding, DropsWhatBelongsToNoSlotAnyMore) {
  EXPECT_EQ(decide({1, 2, {}}, {1, 2, kB}), Decision(Discard{}));
}

TEST(MusicAnalysisLanding, DropsWhatIsOutOfDate) {
  for (const auto& slot : {std::optional<UUID>(), std::optional<UUID>(kA)}) {
    EXPECT_EQ(decide({1, 2, slot}, {2, 2, slot}), Decision(Discard{}));
    EXPECT_EQ(decide({1, 2, slot}, {1, 3, slot}), Decision(Discard{}));
  }
  EXPECT_EQ(decide({1, 2, kA}, {2, 2, kB}), Decision(Discard{}));
}

}  // namespace
}  // namespace orvane
