#include "orvane/music/music_section_chapters.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

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

}  // namespace
}  // namespace orvane
