#include "orvane/music/music_analysis_result.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace orvane {
namespace {

using Stem = MusicAnalysisResult::Stem;
using TimeSpan = MusicAnalysisResult::TimeSpan;
using Position = MusicAnalysisResult::MusicPosition;

MusicAnalysisResult::KeyRange key(double start, double end, std::string tonic) {
  return {.span = {start, end}, .tonic = std::move(tonic), .mode = "major"};
}

TEST(MusicTimeSpan, LastsNoLessThanNothing) {
  EXPECT_EQ((TimeSpan{1.5, 4}.duration()), 2.5);
  EXPECT_EQ((TimeSpan{4, 1.5}.duration()), 0);
}

TEST(MusicTimeSpan, HoldsItsStartButNotItsEnd) {
  const TimeSpan span{1, 2};
  EXPECT_TRUE(span.contains(1));
  EXPECT_TRUE(span.contains(1.999));
  EXPECT_FALSE(span.contains(2));
  EXPECT_FALSE(span.contains(0.999));
}

TEST(MusicStem, StoresTheDrumsInTheSingularAndShowsThemInThePlural) {
  EXPECT_EQ(rawValue(Stem::drum), "drum");
  EXPECT_EQ(displayName(Stem::drum), "Drums");
}

TEST(MusicStem, ComesBackFromItsName) {
  for (const Stem stem : MusicAnalysisResult::kAllStems)
    EXPECT_EQ(stemFromRawValue(rawValue(stem)), stem);
  EXPECT_EQ(stemFromRawValue("Drums"), std::nullopt);
  EXPECT_EQ(stemFromRawValue(""), std::nullopt);
}

TEST(MusicStem, IsShownByItsName) {
  std::vector<std::string> names;
  for (const Stem stem : MusicAnalysisResult::kAllStems) names.emplace_back(displayName(stem));
  EXPECT_THAT(names, testing::ElementsAre("Vocal", "Drums", "Bass", "Other"));
}

TEST(MusicTonic, IsLabelledAsANote) {
  const std::pair<const char*, const char*> rows[] = {{"a", "A"},
                                                      {"aFlat", "A\u266D"},
                                                      {"aSharp", "A\u266F"},
                                                      {"b", "B"},
                                                      {"bFlat", "B\u266D"},
                                                      {"c", "C"},
                                                      {"cSharp", "C\u266F"},
                                                      {"d", "D"},
                                                      {"dFlat", "D\u266D"},
                                                      {"dSharp", "D\u266F"},
                                                      {"e", "E"},
                                                      {"eFlat", "E\u266D"},
                                                      {"f", "F"},
                                                      {"fSharp", "F\u266F"},
                                                      {"g", "G"},
                                                      {"gFlat", "G\u266D"},
                                                      {"gSharp", "G\u266F"}};
  for (const auto& [tonic, label] : rows) EXPECT_EQ(MusicAnalysisResult::tonicLabel(tonic), label);
}

TEST(MusicTonic, StaysAsItIsWhenItIsNone) {
  for (const char* text : {"h", "", "C", "bSharp", "cFlat", "eSharp", "fFlat"})
    EXPECT_EQ(MusicAnalysisResult::tonicLabel(text), text);
}

TEST(MusicKeyRange, IsLabelledByTonicAndMode) {
  const MusicAnalysisResult::KeyRange range{.tonic = "fSharp", .mode = "minor"};
  EXPECT_EQ(range.label(), "F\u266F minor");
}

TEST(MusicAnalysisResult, LooksLikeMusicWithAnyKey) {
  EXPECT_FALSE(MusicAnalysisResult{}.looksLikeMusic());
  EXPECT_TRUE(MusicAnalysisResult{.keys = {key(0, 1, "c")}}.looksLikeMusic());
}

TEST(MusicAnalysisResult, HasTheLongestKeyAsDominantOne) {
  const MusicAnalysisResult result{.keys = {key(0, 10, "c"), key(10, 40, "d"), key(40, 50, "e")}};
  EXPECT_EQ(result.dominantKey()->tonic, "d");
}

TEST(MusicAnalysisResult, HasTheEarlierOfEquallyLongKeysAsDominantOne) {
  const MusicAnalysisResult result{.keys = {key(30, 60, "c"), key(0, 30, "d")}};
  EXPECT_EQ(result.dominantKey()->tonic, "c");
}

TEST(MusicAnalysisResult, HasNoDominantKeyWithoutKeys) {
  EXPECT_EQ(MusicAnalysisResult{}.dominantKey(), std::nullopt);
}

TEST(MusicAnalysisResult, GivesTheFirstLaneOfAStem) {
  const MusicAnalysisResult result{.stems = {{.stem = Stem::bass, .ranges = {{1, 2}}},
                                             {.stem = Stem::bass, .ranges = {{3, 4}}}}};
  ASSERT_NE(result.lane(Stem::bass), nullptr);
  EXPECT_EQ(result.lane(Stem::bass)->ranges.front().start, 1);
  EXPECT_EQ(result.lane(Stem::vocal), nullptr);
}

TEST(MusicAnalysisResult, CoversNothingOfAFileWithoutDuration) {
  const MusicAnalysisResult result{.duration = 0,
                                   .stems = {{.stem = Stem::vocal, .ranges = {{0, 60}}}}};
  for (const Stem stem : MusicAnalysisResult::kAllStems) EXPECT_EQ(result.coverage(stem), 0);
}

TEST(MusicAnalysisResult, CoversNoMoreThanTheFileWhenRangesOverlap) {
  const MusicAnalysisResult result{.duration = 60,
                                   .stems = {{.stem = Stem::vocal, .ranges = {{0, 60}, {30, 90}}}}};
  EXPECT_EQ(result.coverage(Stem::vocal), 100);
  EXPECT_EQ(result.coverage(Stem::drum), 0);
}

TEST(MusicAnalysisResult, CountsRangesThatEndBeforeTheyStartAsNothing) {
  const MusicAnalysisResult result{.duration = 100,
                                   .stems = {{.stem = Stem::other, .ranges = {{0, 25}, {50, 40}}}}};
  EXPECT_EQ(result.coverage(Stem::other), 25);
}

TEST(MusicAnalysisResult, FindsBarAndBeatOfATime) {
  MusicAnalysisResult result{.bars = {0, 2, 4}};
  for (int i = 0; i < 12; ++i) result.beats.push_back(i * 0.5);
  EXPECT_EQ(result.position(2.7), (Position{2, 2}));
  EXPECT_EQ(result.position(2.0), (Position{2, 1}));
  EXPECT_EQ(result.position(0), (Position{1, 1}));
  EXPECT_EQ(result.position(100), (Position{3, 4}));
}

TEST(MusicAnalysisResult, IsAtTheFirstBeatUntilTheNextBeat) {
  // The downbeat has no beat of its own here.
  const MusicAnalysisResult result{.beats = {0.9, 1.5}, .bars = {1.0}};
  EXPECT_EQ(result.position(1.2), (Position{1, 1}));
}

TEST(MusicAnalysisResult, HasNoPositionBeforeTheFirstBarOrWithoutAGrid) {
  EXPECT_EQ((MusicAnalysisResult{.beats = {0.5, 1.0}, .bars = {1.0}}.position(0.5)), std::nullopt);
  EXPECT_EQ((MusicAnalysisResult{.beats = {0.5}}.position(1)), std::nullopt);
  EXPECT_EQ((MusicAnalysisResult{.bars = {0.5}}.position(1)), std::nullopt);
}

TEST(MusicAnalysisResult, IsClippedToTheFile) {
  const MusicAnalysisResult result{
      .duration = 120,
      .stems = {{.stem = Stem::vocal,
                 .ranges = {{-5, 20}, {95, 130}, {100, 110}},
                 .activity = {{-0.1, 1}, {0, 0.5F}, {100, 0.25F}, {100.1, 1}}}},
      .beats = {-1, 0, 50, 100, 100.5},
      .bars = {0, 100, 101},
      .sections = {{90, 120}, {100, 120}},
      .segments = {{-10, -1}, {0, 100}},
      .phrases = {{99, 100}},
      .keys = {key(50, 150, "c"), key(100, 150, "d")},
      .paces = {{.span = {0, 200}, .value = 120}}};
  const MusicAnalysisResult clipped = result.clipped(100);
  EXPECT_EQ(clipped.stems[0].ranges, (std::vector<TimeSpan>{{0, 20}, {95, 100}}));
  EXPECT_EQ(clipped.stems[0].activity,
            (std::vector<MusicAnalysisResult::ActivityPoint>{{0, 0.5F}, {100, 0.25F}}));
  EXPECT_THAT(clipped.beats, testing::ElementsAre(0, 50, 100));
  EXPECT_THAT(clipped.bars, testing::ElementsAre(0, 100));
  EXPECT_EQ(clipped.sections, (std::vector<TimeSpan>{{90, 100}}));
  EXPECT_EQ(clipped.segments, (std::vector<TimeSpan>{{0, 100}}));
  EXPECT_EQ(clipped.phrases, (std::vector<TimeSpan>{{99, 100}}));
  ASSERT_EQ(clipped.keys.size(), 1U);
  EXPECT_EQ(clipped.keys[0].span, (TimeSpan{50, 100}));
  EXPECT_EQ(clipped.keys[0].tonic, "c");
  EXPECT_EQ(clipped.paces[0].span, (TimeSpan{0, 100}));
  EXPECT_EQ(clipped.duration, 120);
}

TEST(MusicAnalysisResult, IsEmptyWhenClippedToANegativeLength) {
  const MusicAnalysisResult result{.beats = {0, 1}, .sections = {{0, 10}}};
  const MusicAnalysisResult clipped = result.clipped(-3);
  EXPECT_THAT(clipped.beats, testing::ElementsAre(0));
  EXPECT_TRUE(clipped.sections.empty());
}

}  // namespace
}  // namespace orvane
