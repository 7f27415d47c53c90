#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "orvane/report/orvane_report.h"

namespace orvane {
namespace {

using testing::ElementsAre;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr ReportSettings kNothing{.includeLoudnessCurve = false,
                                  .includeStereoWidth = false,
                                  .includeChannels = false,
                                  .includeViolations = false};

/// A stereo file with every figure that a pipeline measures.
ReportInputs stereoFile() {
  return {.appVersion = "1.2",
          .fileInfo = {.fileName = "a.wav", .channelCount = 2},
          .channelLayoutLabels = {"L", "R"},
          .channelClipping = {false, true},
          .fileLoudnessCurve = {{0.1, -20, -21, -22}, {0.2, -18, -19, -20}},
          .fileSamplePeakDB = -1.5F,
          .fileTruePeakDB = -1.2F,
          .fileLoudnessRange = 6.5F,
          .fileMaxMomentaryLUFS = -18,
          .fileMaxShortTermLUFS = -19,
          .fileDynamicRange = 9,
          .fileChannelPeakDB = {-1.5F, -2},
          .fileChannelRMSDB = {-20, -20},
          .fileChannelCrestFactorDB = {18.5F, 18},
          .fileChannelDCOffset = {0.001F, -0.002F},
          .fileSpeechGatedLUFS = -23,
          .fileStereoWidthCurve = {{0.1, 1}, {0.2, 0}}};
}

SelectionAnalysisResult selectionOf() {
  return {.timeRange = {1.5, 3},
          .peakDB = {-3, -4},
          .rmsDB = {-12, -12},
          .crestFactorDB = {9, 8},
          .dcOffset = {0.1F, 0.2F},
          .samplePeakDB = -3,
          .headroomDB = 3,
          .dynamicRange = 7,
          .integratedLUFS = -15,
          .loudnessRange = 4,
          .truePeakDB = -2.5F,
          .speechGatedLUFS = -16,
          .speechPercentage = 40,
          .speechGatedNoiseFloorDBRMS = -65,
          .maxMomentaryLUFS = -11,
          .maxShortTermLUFS = -13,
          .momentaryCurve = {{1.6, -14}},
          .shortTermCurve = {{1.6, -15}},
          .integratedCurve = {{1.6, -16}}};
}

OrvaneReport build(const ReportInputs& inputs, const ReportSettings& settings = {}) {
  return OrvaneReport::build(inputs, settings);
}

TEST(ReportBuilder, CopiesFileAndVersionAndStampsTheReport) {
  const Date before = currentDate();
  const OrvaneReport report = build(stereoFile());
  EXPECT_GE(report.generatedAt, before);
  EXPECT_LE(report.generatedAt, currentDate());
  EXPECT_EQ(report.appVersion, "1.2");
  EXPECT_EQ(report.file, stereoFile().fileInfo);
}

TEST(ReportBuilder, CopiesTheFiguresOfTheFile) {
  const ReportFullFileLoudness file = build(stereoFile(), kNothing).fullFile;
  EXPECT_EQ(file, (ReportFullFileLoudness{.integratedLUFS = -20.0F,
                                          .samplePeakDB = -1.5F,
                                          .truePeakDB = -1.2F,
                                          .loudnessRange = 6.5F,
                                          .maxMomentaryLUFS = -18.0F,
                                          .maxShortTermLUFS = -19.0F,
                                          .dynamicRange = 9,
                                          .speechGatedLUFS = -23.0F}));
}

TEST(ReportBuilder, MakesThreeCurvesPointForPoint) {
  const ReportFullFileLoudness file = build(stereoFile()).fullFile;
  EXPECT_THAT(file.momentaryCurve, ElementsAre(LoudnessSample{0.1, -20}, LoudnessSample{0.2, -18}));
  EXPECT_THAT(file.shortTermCurve, ElementsAre(LoudnessSample{0.1, -21}, LoudnessSample{0.2, -19}));
  EXPECT_THAT(file.integratedCurve,
              ElementsAre(LoudnessSample{0.1, -22}, LoudnessSample{0.2, -20}));
}

TEST(ReportBuilder, HasNoIntegratedLoudnessWithoutACurve) {
  ReportInputs inputs = stereoFile();
  inputs.fileLoudnessCurve.clear();
  EXPECT_EQ(build(inputs).fullFile.integratedLUFS, std::nullopt);
}

TEST(ReportBuilder, HasAbsentFiguresForASilentFile) {
  ReportInputs inputs = stereoFile();
  for (auto& point : inputs.fileLoudnessCurve) point.integrated = -kInfinity;
  inputs.fileSamplePeakDB = inputs.fileTruePeakDB = -kInfinity;
  inputs.fileLoudnessRange = std::nanf("");
  inputs.fileMaxMomentaryLUFS = inputs.fileMaxShortTermLUFS = -kInfinity;
  inputs.fileSpeechGatedLUFS = kInfinity;
  EXPECT_EQ(build(inputs, kNothing).fullFile, ReportFullFileLoudness{.dynamicRange = 9});
}

TEST(ReportBuilder, GivesTheSpeechShareInPercent) {
  ReportInputs inputs = stereoFile();
  inputs.fileSpeechHistory = {true, false, false, true};
  EXPECT_EQ(build(inputs).fullFile.speechPercentage, 50.0F);
}

TEST(ReportBuilder, HasNoSpeechShareForAnEmptyHistory) {
  ReportInputs inputs = stereoFile();
  inputs.fileSpeechHistory.emplace();
  EXPECT_EQ(build(inputs).fullFile.speechPercentage, std::nullopt);
}

TEST(ReportBuilder, CopiesTheSelection) {
  ReportInputs inputs = stereoFile();
  inputs.selectionAnalysis = selectionOf();
  ReportSelectionLoudness expected{.startTime = 1.5,
                                   .endTime = 3,
                                   .integratedLUFS = -15,
                                   .loudnessRange = 4,
                                   .truePeakDB = -2.5F,
                                   .samplePeakDB = -3,
                                   .headroomDB = 3,
                                   .dynamicRange = 7,
                                   .speechGatedLUFS = -16,
                                   .speechPercentage = 40,
                                   .speechGatedNoiseFloorDBRMS = -65,
                                   .maxMomentaryLUFS = -11,
                                   .maxShortTermLUFS = -13};
  EXPECT_EQ(build(inputs, kNothing).selection, expected);
  expected.momentaryCurve = {{1.6, -14}};
  expected.shortTermCurve = {{1.6, -15}};
  expected.integratedCurve = {{1.6, -16}};
  EXPECT_EQ(build(inputs).selection, expected);
  EXPECT_EQ(build(stereoFile()).selection, std::nullopt);
}

TEST(ReportBuilder, HasNoStereoWidthForAMonoFile) {
  ReportInputs inputs = stereoFile();
  inputs.fileInfo.channelCount = 1;
  EXPECT_EQ(build(inputs).stereoWidth, std::nullopt);
}

TEST(ReportBuilder, HasNoStereoWidthWithoutACurveOrWhenNotAskedFor) {
  EXPECT_EQ(build(stereoFile(), kNothing).stereoWidth, std::nullopt);
  ReportInputs inputs = stereoFile();
  inputs.fileStereoWidthCurve.clear();
  EXPECT_EQ(build(inputs).stereoWidth, std::nullopt);
}

TEST(ReportBuilder, CountsACorrelationOnALimitIntoTheHigherZone) {
  const std::vector<std::pair<float, float ReportStereoWidth::*>> rows = {
      {1.0F, &ReportStereoWidth::monoPercent},
      {0.95F, &ReportStereoWidth::monoPercent},
      {std::nextafter(0.95F, 0.0F), &ReportStereoWidth::narrowPercent},
      {0.5F, &ReportStereoWidth::narrowPercent},
      {std::nextafter(0.5F, 0.0F), &ReportStereoWidth::stereoPercent},
      {0.0F, &ReportStereoWidth::stereoPercent},
      {-0.0001F, &ReportStereoWidth::widePercent},
      {-0.5F, &ReportStereoWidth::widePercent},
      {std::nextafter(-0.5F, -1.0F), &ReportStereoWidth::outOfPhasePercent},
      {-1.0F, &ReportStereoWidth::outOfPhasePercent}};
  for (const auto& [correlation, share] : rows) {
    ReportInputs inputs = stereoFile();
    inputs.fileStereoWidthCurve = {{0.1, correlation}};
    const auto width = build(inputs).stereoWidth;
    ASSERT_TRUE(width);
    EXPECT_EQ((*width).*share, 100) << correlation;
    EXPECT_EQ(width->averageCorrelation, correlation);
  }
}

TEST(ReportBuilder, SharesTheStereoWidthAmongItsZones) {
  ReportInputs inputs = stereoFile();
  inputs.fileStereoWidthCurve = {{0.1, 1},      {0.2, 0.75F}, {0.3, 0.25F}, {0.4, -0.25F},
                                 {0.5, -0.75F}, {0.6, -1},    {0.7, 0.25F}, {0.8, 1}};
  const auto width = build(inputs).stereoWidth;
  ASSERT_TRUE(width);
  EXPECT_EQ(width->curve.size(), 8U);
  EXPECT_EQ(width->curve[1], (StereoWidthSample{0.2, 0.75F}));
  EXPECT_EQ(width->monoPercent, 25);
  EXPECT_EQ(width->narrowPercent, 12.5F);
  EXPECT_EQ(width->stereoPercent, 25);
  EXPECT_EQ(width->widePercent, 12.5F);
  EXPECT_EQ(width->outOfPhasePercent, 25);
  EXPECT_EQ(width->averageCorrelation, 0.15625F);
}

TEST(ReportBuilder, HasOneRowPerChannel) {
  EXPECT_THAT(build(stereoFile()).channels,
              ElementsAre(ReportChannel{0, "L", -1.5F, -20, 18.5F, 0.001F, false},
                          ReportChannel{1, "R", -2, -20, 18, -0.002F, true}));
  EXPECT_TRUE(build(stereoFile(), kNothing).channels.empty());
}

TEST(ReportBuilder, TakesTheChannelsFiguresFromTheSelection) {
  ReportInputs inputs = stereoFile();
  inputs.selectionAnalysis = selectionOf();
  EXPECT_THAT(build(inputs).channels, ElementsAre(ReportChannel{0, "L", -3, -12, 9, 0.1F, false},
                                                  ReportChannel{1, "R", -4, -12, 8, 0.2F, true}));
}

TEST(ReportBuilder, NumbersAChannelWithoutALabel) {
  ReportInputs inputs = stereoFile();
  inputs.fileInfo.channelCount = 3;
  inputs.fileChannelPeakDB = {-1, -2, -3};
  const auto channels = build(inputs).channels;
  ASSERT_EQ(channels.size(), 3U);
  EXPECT_EQ(channels[2].label, "Ch3");
}

TEST(ReportBuilder, FillsChannelsWhoseFiguresAreMissing) {
  ReportInputs inputs = stereoFile();
  inputs.fileChannelPeakDB = {-1, -2};
  inputs.fileChannelRMSDB = {-20};
  inputs.fileChannelCrestFactorDB = {};
  inputs.fileChannelDCOffset = {};
  inputs.channelClipping = {};
  EXPECT_EQ(build(inputs).channels[1], (ReportChannel{1, "R", -2, -kInfinity, 0, 0, false}));
}

TEST(ReportBuilder, HasNoRowForAChannelWithoutAPeakOrBeyondTheCount) {
  ReportInputs inputs = stereoFile();
  inputs.fileChannelPeakDB = {-1};
  EXPECT_EQ(build(inputs).channels.size(), 1U);
  inputs.fileChannelPeakDB = {-1, -2, -3};
  EXPECT_EQ(build(inputs).channels.size(), 2U);
  inputs.fileInfo.channelCount = -1;
  EXPECT_TRUE(build(inputs).channels.empty());
}

TEST(ReportBuilder, ListsViolations) {
  ReportInputs inputs = stereoFile();
  inputs.violationsEnabled = true;
  inputs.momentaryThreshold = -10.0F;
  inputs.momentaryViolations = {{1, 2}, {4, 4.5}};
  const auto violations = build(inputs).violations;
  EXPECT_EQ(violations, (ReportViolations{.momentaryThreshold = -10.0F,
                                          .momentaryCount = 2,
                                          .momentaryRanges = {{1, 2}, {4, 4.5}}}));
}

TEST(ReportBuilder, HasNoViolationsWithoutThresholdsOrWhenSwitchedOff) {
  ReportInputs inputs = stereoFile();
  inputs.violationsEnabled = true;
  EXPECT_EQ(build(inputs).violations, std::nullopt);
  inputs.shortTermThreshold = -10.0F;
  EXPECT_TRUE(build(inputs).violations);
  EXPECT_EQ(build(inputs, kNothing).violations, std::nullopt);
  inputs.violationsEnabled = false;
  EXPECT_EQ(build(inputs).violations, std::nullopt);
}

TEST(ReportBuilder, NamesTheModeOfTheTargets) {
  const std::pair<core::LoudnessTargetMode, const char*> rows[] = {
      {core::LoudnessTargetMode::music, "music"},
      {core::LoudnessTargetMode::podcast, "podcast"},
      {core::LoudnessTargetMode::vod, "vod"},
      {core::LoudnessTargetMode::broadcast, "broadcast"}};
  for (const auto& [mode, name] : rows) {
    ReportInputs inputs = stereoFile();
    inputs.loudnessTargetSelection.mode = mode;
    EXPECT_EQ(build(inputs).loudnessTargets.activeMode, name);
  }
}

TEST(ReportBuilder, GivesTheProgrammeRMSOfTheChannels) {
  ReportInputs inputs = stereoFile();
  EXPECT_FLOAT_EQ(build(inputs).loudnessTargets.programRMSDBFS.value(), -20);
  inputs.selectionAnalysis = selectionOf();
  EXPECT_FLOAT_EQ(build(inputs).loudnessTargets.programRMSDBFS.value(), -12);
  inputs.selectionAnalysis->rmsDB = {-kInfinity};
  EXPECT_EQ(build(inputs).loudnessTargets.programRMSDBFS, std::nullopt);
}

core::Chapter chapter(std::int64_t index, std::optional<float> loudness) {
  return {.index = index,
          .name = "Chapter",
          .startSec = 10,
          .endSec = 20,
          .integratedLUFS = loudness,
          .rmsDBFS = -20.0F,
          .truePeakDBTP = -3.0F,
          .samplePeakDBFS = -3.5F,
          .loudnessRange = 5.0F,
          .maxMomentaryLUFS = -12.0F,
          .maxShortTermLUFS = -14.0F,
          .speechGatedLUFS = -18.0F,
          .noiseFloorDBRMS = -61.0F,
          .speechPercentage = 0.5F};
}

TEST(ReportBuilder, ListsChaptersWithTheirDeviationFromTheMedian) {
  ReportInputs inputs = stereoFile();
  inputs.chapters = {chapter(1, -18.5F), chapter(2, -kInfinity), chapter(3, std::nullopt)};
  inputs.chapterMedianLUFS = -20.0F;
  inputs.chapterDeviationThresholdLU = 2;
  inputs.chapterOrigin = "manual";
  const auto table = build(inputs).chapters;
  ASSERT_TRUE(table);
  EXPECT_EQ(table->medianLUFS, -20.0F);
  EXPECT_EQ(table->deviationThresholdLU, 2);
  EXPECT_EQ(table->origin, "manual");
  ASSERT_EQ(table->entries.size(), 3U);
  EXPECT_EQ(table->entries[0], (ReportChapterEntry{.index = 1,
                                                   .name = "Chapter",
                                                   .startSec = 10,
                                                   .endSec = 20,
                                                   .integratedLUFS = -18.5F,
                                                   .rmsDBFS = -20.0F,
                                                   .deviationFromMedianLU = 1.5F,
                                                   .truePeakDBTP = -3.0F,
                                                   .samplePeakDBFS = -3.5F,
                                                   .loudnessRange = 5.0F,
                                                   .maxMomentaryLUFS = -12.0F,
                                                   .maxShortTermLUFS = -14.0F,
                                                   .speechGatedLUFS = -18.0F,
                                                   .noiseFloorDBRMS = -61.0F,
                                                   .speechPercentage = 0.5F}));
  EXPECT_EQ(table->entries[1].deviationFromMedianLU, std::nullopt);
  EXPECT_EQ(table->entries[1].integratedLUFS, -kInfinity);
  EXPECT_EQ(table->entries[2].deviationFromMedianLU, std::nullopt);
}

TEST(ReportBuilder, HasNoDeviationsWithoutAMedianAndNoTableWithoutChapters) {
  ReportInputs inputs = stereoFile();
  EXPECT_EQ(build(inputs).chapters, std::nullopt);
  inputs.chapters = {chapter(1, -18.5F)};
  EXPECT_EQ(build(inputs).chapters->entries[0].deviationFromMedianLU, std::nullopt);
}

TEST(ReportBuilder, CopiesTheMusic) {
  ReportInputs inputs = stereoFile();
  inputs.musicAnalysis = MusicAnalysisResult{.source = "s", .beats = {1, 2}};
  inputs.stemGatedLoudness = StemGatedLoudness{.source = "t"};
  const OrvaneReport report = build(inputs);
  EXPECT_EQ(report.musicAnalysis, inputs.musicAnalysis);
  EXPECT_EQ(report.stemGatedLoudness, inputs.stemGatedLoudness);
}

}  // namespace
}  // namespace orvane
