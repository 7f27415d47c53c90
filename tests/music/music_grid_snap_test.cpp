#include "orvane/music/music_grid_snap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "orvane/text/json/json_text.h"
#include "tests/support/random.h"

namespace orvane {
namespace {

using Grid = std::vector<double>;
using MusicGridSnap::Mode;
using MusicGridSnap::nearest;
using MusicGridSnap::snapSelection;

TEST(MusicGridSnapMode, HasNamesForFilesAndForPeople) {
  std::vector<std::string> stored, shown;
  for (const Mode mode : MusicGridSnap::kAllModes) {
    stored.emplace_back(rawValue(mode));
    shown.emplace_back(displayName(mode));
    EXPECT_EQ(MusicGridSnap::modeFromRawValue(rawValue(mode)), mode);
    EXPECT_EQ(decodeJSON<Mode>(encodeJSON(mode)), mode);
  }
  EXPECT_EQ(stored, (std::vector<std::string>{"off", "beat", "bar"}));
  EXPECT_EQ(shown, (std::vector<std::string>{"Off", "Beat", "Bar"}));
  EXPECT_EQ(encodeJSON(Mode::beat), "\"beat\"");
  EXPECT_EQ(MusicGridSnap::modeFromRawValue("Bar"), std::nullopt);
}

TEST(MusicGridSnap, FindsTheNearestTime) {
  EXPECT_EQ(nearest(1, {}), std::nullopt);
  const Grid grid{1, 2};
  EXPECT_EQ(nearest(1.5, grid), 1) << "the earlier of two as near";
  EXPECT_EQ(nearest(1.51, grid), 2);
  EXPECT_EQ(nearest(0.2, grid), 1);
  EXPECT_EQ(nearest(9, grid), 2);
  EXPECT_EQ(nearest(2, grid), 2);
}

TEST(MusicGridSnap, PutsTheEndsOfASelectionOnTheGrid) {
  const Grid grid{0, 1, 2, 3, 4};
  EXPECT_EQ(snapSelection({0, 3.2}, grid, 10), (ClosedTimeRange{0, 3}));
  EXPECT_EQ(snapSelection({0.8, 2.6}, grid, 10), (ClosedTimeRange{1, 3}));
  EXPECT_EQ(snapSelection({0.8, 2.6}, {}, 10), (ClosedTimeRange{0.8, 2.6}));
}

TEST(MusicGridSnap, LeavesTheEndsOfTheFileAlone) {
  const Grid grid{1, 2, 3};
  EXPECT_EQ(snapSelection({0, 2.2}, grid, 10), (ClosedTimeRange{0, 2}));
  EXPECT_EQ(snapSelection({1.9, 10}, grid, 10), (ClosedTimeRange{2, 10}));
  EXPECT_EQ(snapSelection({1.9, 12}, grid, 10), (ClosedTimeRange{2, 12}));
}

TEST(MusicGridSnap, WidensWhatCollapses) {
  const Grid grid{0, 1, 2, 3, 4};
  EXPECT_EQ(snapSelection({0.9, 1.2}, grid, 10), (ClosedTimeRange{1, 2}));
  EXPECT_EQ(snapSelection({3.9, 4.3}, grid, 10), (ClosedTimeRange{4, 4.3}));
  EXPECT_EQ(snapSelection({3.7, 3.8}, grid, 10), (ClosedTimeRange{4, 4.001}));
  EXPECT_EQ(snapSelection({3.7, 3.8}, grid, 4.0005), (ClosedTimeRange{4, 4.0005}));
  EXPECT_EQ(snapSelection({3.7, 3.75}, grid, 3.8), (ClosedTimeRange{4, 4})) << "beyond the file";
}

TEST(MusicGridSnap, IsIdempotentAndNeverTurnsASelectionRound) {
  test::Random random(1);
  for (int round = 0; round < 20'000; ++round) {
    Grid grid(random.below(12));
    const double duration = random.between(0, 12);
    for (double& time : grid)
      time = random.below(2) == 0 ? static_cast<double>(random.below(12)) : random.between(0, 12);
    std::sort(grid.begin(), grid.end());
    ClosedTimeRange range{random.below(4) == 0 ? 0 : random.between(0, 12), 0};
    range.upperBound = range.lowerBound + (random.below(4) == 0 ? 0 : random.between(0, 3));
    const auto once = snapSelection(range, grid, duration);
    EXPECT_LE(once.lowerBound, once.upperBound);
    EXPECT_EQ(snapSelection(once, grid, duration), once);
    if (grid.empty()) continue;
    EXPECT_TRUE(once.lowerBound == 0 ||
                std::binary_search(grid.begin(), grid.end(), once.lowerBound));
    const double found = *nearest(range.lowerBound, grid);
    EXPECT_EQ(nearest(found, grid), found);
    for (const double time : grid)
      EXPECT_LE(std::abs(found - range.lowerBound), std::abs(time - range.lowerBound));
  }
}

}  // namespace
}  // namespace orvane
