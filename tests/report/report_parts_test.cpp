#include "orvane/report/report_parts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "orvane/report/orvane_report.h"
#include "tests/analysis/raw_programme.h"

namespace orvane {
namespace {

using test::Channel;
using test::RawProgramme;
using test::sine;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Finding = GatheredReport::Finding;

constexpr double kRate = 48000;

/// A file of four seconds at −40 dBFS and four at −20, analysed.
struct Analysed {
  OfflineAnalysisPipeline::AnalysisDetail detail{};
  OfflineAnalysisPipeline::Result result{};

  explicit Analysed(std::size_t channels = 1, bool dualMono = false, bool keepsBuffer = true) {
    auto samples = sine(kRate, 997, 0.01, 4 * 48000);
    const auto loud = sine(kRate, 997, 0.1, 4 * 48000);
    samples.insert(samples.end(), loud.begin(), loud.end());
    const RawProgramme file(kRate, std::vector<Channel>(channels, samples));
    result = OfflineAnalysisPipeline::analyzeFile(
        file.path(), file.options(), {.dualMono = dualMono, .keepsBuffer = keepsBuffer}, &detail);
  }
  GatheredReport gather(const ReportParts& parts) const {
    return gatherReport(result, detail, parts, "1.2");
  }
};

MusicAnalysisResult music(double duration) {
  return {.duration = duration,
          .stems = {{.stem = MusicAnalysisResult::Stem::vocal, .ranges = {{0, 4}}}},
          .sections = {{0, 4}, {4, 8}}};
}

TEST(GatherReport, HasTheFilesFiguresAndNothingElseUnasked) {
  const auto gathered = Analysed(2, false, false).gather({});
  EXPECT_EQ(gathered.inputs.appVersion, "1.2");
  EXPECT_EQ(gathered.inputs.fileInfo.channelLayout, "L R");
  EXPECT_FALSE(gathered.inputs.selectionAnalysis);
  EXPECT_FALSE(gathered.inputs.violationsEnabled);
  EXPECT_THAT(gathered.inputs.chapters, IsEmpty());
  EXPECT_FALSE(gathered.inputs.stemGatedLoudness);
  EXPECT_FALSE(gathered.sectionLoudness);
  EXPECT_THAT(gathered.findings, IsEmpty());
}

TEST(GatherReport, NamesChannelsByTheCallerThenByTheirPlaces) {
  EXPECT_THAT(Analysed(3).gather({}).inputs.channelLayoutLabels, ElementsAre("L", "R", "C"));
  EXPECT_THAT(Analysed(1).gather({}).inputs.channelLayoutLabels, ElementsAre("Mono"));
  const auto named = Analysed(2).gather({.channelLabels = {"Boom", "Lav"}});
  EXPECT_THAT(named.inputs.channelLayoutLabels, ElementsAre("Boom", "Lav"));
}

TEST(GatherReport, MeasuresASelectionAndCutsItToTheAudio) {
  const Analysed file(2);
  const auto cut = file.gather({.selection = {{5, 99}}});
  ASSERT_TRUE(cut.inputs.selectionAnalysis);
  EXPECT_EQ(cut.inputs.selectionAnalysis->timeRange, (ClosedTimeRange{5, 8}));
  EXPECT_NEAR(cut.inputs.selectionAnalysis->integratedLUFS, -20, 0.05);
  EXPECT_THAT(cut.findings, ElementsAre(Finding::selectionCut));
  const auto outside = file.gather({.selection = {{8, 9}}});
  EXPECT_FALSE(outside.inputs.selectionAnalysis);
  EXPECT_THAT(outside.findings, ElementsAre(Finding::selectionOutsideAudio));
  const auto open = file.gather({.selection = {{5, std::nullopt}}});
  EXPECT_EQ(open.inputs.selectionAnalysis, cut.inputs.selectionAnalysis);
  EXPECT_THAT(open.findings, IsEmpty());
}

TEST(GatherReport, FindsWhereTheCurvesLieAboveTheLevels) {
  const auto inputs = Analysed(2, false, false).gather({.maxMomentaryLUFS = -30}).inputs;
  EXPECT_TRUE(inputs.violationsEnabled);
  EXPECT_FALSE(inputs.shortTermThreshold);
  ASSERT_EQ(inputs.momentaryViolations.size(), 1U);
  EXPECT_NEAR(inputs.momentaryViolations[0].lowerBound, 4, 0.21);
  EXPECT_EQ(inputs.momentaryViolations[0].upperBound, 8);
}

TEST(GatherReport, MeasuresChaptersAgainstTheirMedian) {
  const auto gathered = Analysed(2).gather({.chapterMarks = {{0, std::nullopt, "Quiet"}, {4}},
                                            .chapterOrigin = "a list",
                                            .chapterToleranceLU = 3});
  const auto report = OrvaneReport::build(gathered.inputs, {});
  ASSERT_TRUE(report.chapters);
  EXPECT_EQ(report.chapters->origin, "a list");
  EXPECT_EQ(report.chapters->deviationThresholdLU, 3);
  ASSERT_EQ(report.chapters->entries.size(), 2U);
  EXPECT_EQ(report.chapters->entries[0].name, "Quiet");
  EXPECT_NEAR(report.chapters->entries[0].deviationFromMedianLU.value(), -10, 0.05);
}

// The sections of a music analysis were chapters unasked.
TEST(GatherReport, TakesTheSectionsOfMusicForChaptersWhenAskedTo) {
  const Analysed file(2);
  const auto gathered = file.gather({.music = music(8), .chaptersFromMusic = true});
  EXPECT_EQ(gathered.inputs.chapterOrigin, "music");
  EXPECT_THAT(gathered.inputs.chapters, testing::SizeIs(1));  // none shorter than ten seconds
  EXPECT_THAT(file.gather({.music = music(8)}).inputs.chapters, IsEmpty());
  auto shapeless = music(8);
  shapeless.sections.clear();
  EXPECT_THAT(file.gather({.music = shapeless, .chaptersFromMusic = true}).findings,
              ElementsAre(Finding::musicWithoutSections));
}

TEST(GatherReport, NamesTheMarksThatHaveNoAudio) {
  const Analysed file(2);
  const std::vector<ChapterMark> marks = {{0}, {4, {}, "Loud"}, {100, {}, "Late"}};
  const auto gathered = file.gather({.chapterMarks = marks, .chapterOrigin = "a list"});
  EXPECT_THAT(gathered.chaptersLeftOut, ElementsAre(marks[2]));
  EXPECT_THAT(gathered.findings, IsEmpty());
  const auto without = file.gather({.chapterMarks = {marks[2]}, .chapterOrigin = "a list"});
  EXPECT_THAT(without.findings, ElementsAre(Finding::chapterMarksOutsideAudio));
  EXPECT_EQ(without.inputs.chapterOrigin, "");
}

TEST(GatherReport, SplitsTheLoudnessByMusicAndTellsOfAnotherLength) {
  const Analysed file(2);
  const auto gathered = file.gather({.music = music(100)});
  EXPECT_THAT(gathered.findings, ElementsAre(Finding::musicOfOtherLength));
  EXPECT_EQ(gathered.inputs.musicAnalysis->duration, 100);
  ASSERT_TRUE(gathered.inputs.stemGatedLoudness);
  ASSERT_TRUE(gathered.sectionLoudness);
  EXPECT_NEAR(gathered.sectionLoudness->entries[1].integratedLUFS.value(), -20, 0.1);
  EXPECT_THAT(file.gather({.music = music(8.5)}).findings, IsEmpty());
}

TEST(GatherReport, MeasuresEveryPartOfADualMonoFileAsOfTwoChannels) {
  const ReportParts parts{.selection = {{1, 7}},
                          .maxMomentaryLUFS = -30,
                          .music = music(8),
                          .chapterMarks = {{0}, {4}}};
  const auto dual = Analysed(1, true).gather(parts);
  const auto twin = Analysed(2).gather(parts);
  EXPECT_EQ(dual.inputs.fileInfo.channelLayout, "Mono as two equal loudspeakers");
  EXPECT_FLOAT_EQ(dual.inputs.selectionAnalysis->integratedLUFS,
                  twin.inputs.selectionAnalysis->integratedLUFS);
  EXPECT_EQ(dual.inputs.momentaryViolations, twin.inputs.momentaryViolations);
  for (std::size_t i = 0; i < 2; ++i)
    EXPECT_FLOAT_EQ(*dual.inputs.chapters[i].integratedLUFS,
                    *twin.inputs.chapters[i].integratedLUFS);
  EXPECT_FLOAT_EQ(*dual.sectionLoudness->medianLUFS, *twin.sectionLoudness->medianLUFS);
  EXPECT_EQ(Analysed(2, true).gather(parts).inputs.fileInfo.channelLayout, "L R");
}

TEST(GatherReportDeathTest, NeedsTheAudioForWhatIsMeasured) {
  EXPECT_DEATH(Analysed(1, false, false).gather({.selection = {{1, 2}}}),
               "need the analysed audio");
}

}  // namespace
}  // namespace orvane
