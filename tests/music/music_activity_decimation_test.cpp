#include "orvane/music/music_activity_decimation.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/random.h"

namespace orvane {
namespace {

using Levels = std::vector<float>;
using MusicActivityDecimation::columns;
using Points = std::vector<MusicAnalysisResult::ActivityPoint>;

TEST(MusicActivityDecimation, TakesTheHighestPointOfEachColumn) {
  const Points points{{0, 0.1F}, {0.5, 0.9F}, {0.9, 0.2F}, {1, 0.4F}, {2.5, 0.3F}};
  EXPECT_EQ(columns(points, 0, 3, 3), (Levels{0.9F, 0.4F, 0.3F}));
}

TEST(MusicActivityDecimation, RepeatsTheLastLevelWhereNoPointLies) {
  const Points points{{0, 0.9F}, {0.1, 0.2F}, {3, 0.5F}};
  EXPECT_EQ(columns(points, 0, 4, 4), (Levels{0.9F, 0.2F, 0.2F, 0.5F}));
  EXPECT_EQ(columns(points, 0.05, 4.05, 4), (Levels{0.2F, 0.2F, 0.5F, 0.5F}));
}

TEST(MusicActivityDecimation, BeginsWithTheLevelBeforeTheStretch) {
  const Points points{{1, 0.7F}, {2, 0.3F}};
  EXPECT_EQ(columns(points, 1.5, 2.5, 2), (Levels{0.7F, 0.3F}));
  EXPECT_EQ(columns(points, 0, 1, 2), (Levels{0, 0}));
  EXPECT_EQ(columns(points, 5, 6, 2), (Levels{0.3F, 0.3F})) << "all points are before";
}

TEST(MusicActivityDecimation, IsZeroWithoutPointsOrLength) {
  const Points points{{1, 0.7F}};
  EXPECT_EQ(columns({}, 0, 1, 2), (Levels{0, 0}));
  EXPECT_EQ(columns(points, 1, 1, 2), (Levels{0, 0}));
  EXPECT_EQ(columns(points, 2, 1, 2), (Levels{0, 0}));
  EXPECT_EQ(columns(points, 0, 1, 0), Levels{});
  EXPECT_EQ(columns(points, 0, 1, -3), Levels{});
}

TEST(MusicActivityDecimation, LosesNoPoint) {
  test::Random random(3);
  for (int round = 0; round < 500; ++round) {
    Points points(random.below(200));
    double time = 0;
    for (auto& point : points)
      point = {time += random.between(0, 0.2), static_cast<float>(random.fraction())};
    const double from = random.between(-1, 10), to = from + random.between(0.01, 20);
    const auto count = static_cast<std::int64_t>(1 + random.below(100));
    const auto levels = columns(points, from, to, count);
    ASSERT_EQ(levels.size(), static_cast<std::size_t>(count));
    const double width = (to - from) / static_cast<double>(count);
    for (const auto& point : points) {
      if (point.time < from) continue;
      std::size_t column = 0;
      while (column < levels.size() && point.time >= from + width * static_cast<double>(column + 1))
        ++column;
      if (column < levels.size()) {
        EXPECT_GE(levels[column], point.value);
      }
    }
    for (const float level : levels)
      EXPECT_TRUE(level == 0 || std::any_of(points.begin(), points.end(), [&](const auto& point) {
                    return point.value == level;
                  }));
  }
}

}  // namespace
}  // namespace orvane
