#include "orvane/music/music_section_chapters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "tests/support/random.h"

namespace orvane {
namespace {

using TimeSpan = MusicAnalysisResult::TimeSpan;
using Spans = std::vector<TimeSpan>;
using MusicSectionChapters::tile;

TEST(MusicSectionChapters, PassOverStartsThatAreTooCloseToEachOtherOrToTheEnd) {
  const Spans sections{{0, 40}, {40, 42}, {42, 175}, {175, 180}};
  EXPECT_EQ(tile(sections, 180, 10), (Spans{{0, 40}, {40, 180}}));
}

TEST(MusicSectionChapters, KeepAChapterThatIsJustLongEnough) {
  EXPECT_EQ(tile(Spans{{0, 170}, {170, 180}}, 180, 10), (Spans{{0, 170}, {170, 180}}));
  EXPECT_EQ(tile(Spans{{0, 10}, {10, 180}}, 180, 10), (Spans{{0, 10}, {10, 180}}));
}

TEST(MusicSectionChapters, BeginAtTheStartOfTheFileWhereverTheFirstSectionBegins) {
  EXPECT_EQ(tile(Spans{{30, 60}}, 90, 10), (Spans{{0, 30}, {30, 90}}));
  EXPECT_EQ(tile(Spans{{5, 60}}, 90, 10), (Spans{{0, 90}}));
}

TEST(MusicSectionChapters, TakeSectionsInOrderOfTimeAndEachStartOnce) {
  EXPECT_EQ(tile(Spans{{60, 90}, {30, 60}, {30, 50}, {0, 30}}, 90, 10),
            (Spans{{0, 30}, {30, 60}, {60, 90}}));
}

TEST(MusicSectionChapters, ClampSectionsToTheFile) {
  EXPECT_EQ(tile(Spans{{-20, 5}, {50, 500}, {100, 120}}, 100, 10), (Spans{{0, 50}, {50, 100}}));
}

TEST(MusicSectionChapters, AreNoneWithoutASectionInTheFile) {
  EXPECT_TRUE(tile({}, 100, 10).empty());
  EXPECT_TRUE(tile(Spans{{100, 120}, {-5, 0}, {40, 40}, {60, 50}}, 100, 10).empty());
  EXPECT_TRUE(tile(Spans{{0, 10}}, 0, 10).empty());
  EXPECT_TRUE(tile(Spans{{0, 10}}, -1, 10).empty());
  EXPECT_TRUE(tile(Spans{{0, 10}}, std::numeric_limits<double>::quiet_NaN(), 10).empty());
}

TEST(MusicSectionChapters, AreOneForAFileShorterThanTheMinimum) {
  EXPECT_EQ(tile(Spans{{0, 2}, {2, 4}}, 5, 10), (Spans{{0, 5}}));
}

TEST(MusicSectionChapters, TileTheFileAndAreNeverShorterThanTheMinimumUnlessItIs) {
  test::Random random(5);
  for (int round = 0; round < 2000; ++round) {
    const double duration = random.between(0.1, 300), minimum = random.between(0, 40);
    Spans sections(1 + random.below(12));
    for (auto& section : sections) {
      section.start = random.between(-20, duration);
      section.end = section.start + random.between(0, 100);
    }
    const auto chapters = tile(sections, duration, minimum);
    const bool isAnyInside = std::any_of(sections.begin(), sections.end(), [&](const auto& each) {
      return each.end > 0 && each.start < duration && each.end > each.start;
    });
    ASSERT_EQ(chapters.empty(), !isAnyInside);
    double reached = 0;
    for (const auto& chapter : chapters) {
      EXPECT_EQ(chapter.start, reached);
      EXPECT_LT(chapter.start, chapter.end);
      if (chapters.size() > 1) {
        EXPECT_GE(chapter.duration(), minimum);
      }
      reached = chapter.end;
    }
    if (isAnyInside) {
      EXPECT_EQ(reached, duration);
    }
    EXPECT_EQ(tile(chapters, duration, minimum), chapters);
  }
}

}  // namespace
}  // namespace orvane
