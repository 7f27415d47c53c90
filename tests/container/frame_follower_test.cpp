#include "orvane/container/frame_follower.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/container/chunked/followed_file.h"

namespace orvane {
namespace {

namespace Edits = test::Edits;

using Place = std::optional<std::int64_t>;

TEST(FrameFollower, KnowsWhatMovesNothing) {
  EXPECT_TRUE(Edits::none().movesNothing());
  EXPECT_TRUE((FrameFollower{100, 100, {{0, 30, 0}, {30, 70, 30}}}.movesNothing()));
  EXPECT_TRUE(FrameFollower{}.movesNothing());
  EXPECT_FALSE((FrameFollower{100, 100, {}}.movesNothing()));
  EXPECT_FALSE((FrameFollower{100, 100, {{0, 30, 0}, {31, 69, 30}}}.movesNothing()));
  EXPECT_FALSE((FrameFollower{100, 100, {{0, 99, 1}}}.movesNothing()));
  EXPECT_FALSE(Edits::inserted(100, 5).movesNothing());
  EXPECT_FALSE(Edits::tailTrimmed(1).movesNothing());
}

TEST(FrameFollower, PlacesFramesWhereTheEditDid) {
  const FrameFollower cut = Edits::cut(40, 60);
  EXPECT_EQ(cut.placeOf(std::int64_t{39}), Place(39));
  EXPECT_EQ(cut.placeOf(std::int64_t{40}), Place());
  EXPECT_EQ(cut.placeOf(std::int64_t{59}), Place());
  EXPECT_EQ(cut.placeOf(std::int64_t{60}), Place(40));
  EXPECT_EQ(Edits::inserted(50, 20).placeOf(std::int64_t{50}), Place(70));
}

TEST(FrameFollower, KeepsTheEndTheEnd) {
  for (const auto& frames : {Edits::tailTrimmed(10), Edits::headTrimmed(10), Edits::cut(40, 60),
                             Edits::inserted(100, 20)}) {
    EXPECT_EQ(frames.placeOf(std::int64_t{100}), Place(frames.newFrameCount));
    EXPECT_EQ(frames.placeOf(std::int64_t{107}), Place(frames.newFrameCount + 7));
  }
}

TEST(FrameFollower, PlacesWhatLiesBetweenFrames) {
  EXPECT_EQ(Edits::headTrimmed(10).placeOf(20.25), std::optional(10.25));
  EXPECT_EQ(Edits::headTrimmed(10).placeOf(9.75), std::nullopt);
  const double huge = 1e300;
  const double infinite = std::numeric_limits<double>::infinity();
  for (const double none : {-1.0, huge, infinite, -infinite})
    EXPECT_EQ(Edits::headTrimmed(10).placeOf(none), std::optional(none));
  EXPECT_TRUE(std::isnan(*Edits::headTrimmed(10).placeOf(std::nan(""))));
}

TEST(FrameFollower, EndsAStretchWhereWhatIsLeftOfItEnds) {
  const FrameFollower cut = Edits::cut(40, 60);
  EXPECT_EQ(cut.endOf(10, 30, 10), 30);
  EXPECT_EQ(cut.endOf(10, 50, 10), 40);
  EXPECT_EQ(cut.endOf(10, 60, 10), 40);
  EXPECT_EQ(cut.endOf(10, 70, 10), 50);
  EXPECT_EQ(cut.endOf(10, 10, 10), 10);
  EXPECT_EQ(cut.endOf(10, 105, 10), 85);
  EXPECT_EQ(cut.endOf(110, 115, 90), 95);
  // What stood before the new silence does not reach into it.
  EXPECT_EQ(Edits::inserted(50, 20).endOf(10, 50, 10), 50);
  EXPECT_EQ(Edits::inserted(50, 20).endOf(10, 51, 10), 71);
}

TEST(FrameFollower, CountsWhatTheHeadLostOrGot) {
  EXPECT_EQ(Edits::headTrimmed(10).headFrames(), 10);
  EXPECT_EQ(Edits::inserted(0, 20).headFrames(), -20);
  EXPECT_EQ(Edits::cut(40, 60).headFrames(), 0);
  EXPECT_EQ((FrameFollower{100, 50, {}}.headFrames()), 0);
  // New audio in front of a head that was trimmed.
  EXPECT_EQ((FrameFollower{100, 65, {{40, 60, 5}}}.headFrames()), 35);
}

}  // namespace
}  // namespace orvane
