#include "orvane/report/analysis_report_inputs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::toReportInputs;

OfflineAnalysisPipeline::Result measuredFile() {
  return {.url = "/tapes/Side A.wav",
          .sampleRate = 44100,
          .channelCount = 2,
          .durationSeconds = 12.5,
          .fileFormat = "WAV",
          .fileSize = 1234,
          .bitDepth = 16,
          .rawFormat = RawPCMFormat{.sampleRate = 44100, .channelCount = 2},
          .integratedLUFS = -14,
          .loudnessRange = 6,
          .truePeakDB = -0.5F,
          .samplePeakDB = -0.9F,
          .maxMomentaryLUFS = -9,
          .maxShortTermLUFS = -11,
          .dynamicRange = 8,
          .speechGatedLUFS = -15,
          .speechPercentage = 50,
          .speechHistory = std::vector<bool>{true, false},
          .loudnessCurve = {{0.1, -20, -21, -22}},
          .stereoWidthCurve = {{0.1, 0.5F}},
          .channelPeakDB = {-0.9F, -1},
          .channelRMSDB = {-18, -19},
          .channelCrestFactorDB = {17, 18},
          .channelDCOffset = {0.1F, 0.2F},
          .channelHasClipping = {true, false}};
}

TEST(ToReportInputs, CopiesWhatThePipelineMeasures) {
  const core::LoudnessTargetSelection targets{.mode = core::LoudnessTargetMode::vod};
  const ReportInputs inputs = toReportInputs(measuredFile(), "1.2", targets, {{"L", "R"}});
  const ReportInputs expected{
      .appVersion = "1.2",
      .fileInfo = {.fileName = "Side A.wav",
                   .filePath = "/tapes/Side A.wav",
                   .fileFormat = "WAV",
                   .fileSize = 1234,
                   .duration = 12.5,
                   .sampleRate = 44100,
                   .channelCount = 2,
                   .channelLayout = "L R",
                   .bitDepth = 16,
                   .rawFormat = RawPCMFormat{.sampleRate = 44100, .channelCount = 2}},
      .channelLayoutLabels = {"L", "R"},
      .channelClipping = {true, false},
      .fileLoudnessCurve = {{0.1, -20, -21, -22}},
      .fileSpeechHistory = std::vector<bool>{true, false},
      .fileSamplePeakDB = -0.9F,
      .fileTruePeakDB = -0.5F,
      .fileLoudnessRange = 6,
      .fileMaxMomentaryLUFS = -9,
      .fileMaxShortTermLUFS = -11,
      .fileDynamicRange = 8,
      .fileChannelPeakDB = {-0.9F, -1},
      .fileChannelRMSDB = {-18, -19},
      .fileChannelCrestFactorDB = {17, 18},
      .fileChannelDCOffset = {0.1F, 0.2F},
      .fileSpeechGatedLUFS = -15,
      .fileStereoWidthCurve = {{0.1, 0.5F}},
      .loudnessTargetSelection = targets};
  EXPECT_EQ(inputs, expected);
}

TEST(ToReportInputs, NumbersChannelsWithoutLabels) {
  const ReportInputs inputs = toReportInputs(measuredFile(), "", {}, std::nullopt);
  EXPECT_THAT(inputs.channelLayoutLabels, testing::ElementsAre("Ch1", "Ch2"));
  EXPECT_EQ(inputs.fileInfo.channelLayout, "Ch1 Ch2");
}

TEST(ToReportInputs, LeavesTheRestForTheCaller) {
  const ReportInputs inputs = toReportInputs(measuredFile(), "", {}, std::nullopt);
  EXPECT_EQ(inputs.selectionAnalysis, std::nullopt);
  EXPECT_FALSE(inputs.violationsEnabled);
  EXPECT_EQ(inputs.momentaryThreshold, std::nullopt);
  EXPECT_EQ(inputs.shortTermThreshold, std::nullopt);
  EXPECT_TRUE(inputs.momentaryViolations.empty() && inputs.shortTermViolations.empty());
  EXPECT_TRUE(inputs.chapters.empty());
  EXPECT_EQ(inputs.chapterMedianLUFS, std::nullopt);
  EXPECT_EQ(inputs.chapterDeviationThresholdLU, 0);
  EXPECT_EQ(inputs.chapterOrigin, "");
  EXPECT_EQ(inputs.musicAnalysis, std::nullopt);
  EXPECT_EQ(inputs.stemGatedLoudness, std::nullopt);
}

// It was the path as the caller had typed it.
TEST(ToReportInputs, GivesTheFullPath) {
  const auto pathOf = [](const std::filesystem::path& url) {
    auto result = measuredFile();
    result.url = url;
    return toReportInputs(result, "", {}, std::nullopt).fileInfo.filePath;
  };
  const auto here = std::filesystem::current_path().string();
  EXPECT_EQ(pathOf("a.wav"), here + "/a.wav");
  EXPECT_EQ(pathOf("./missing/../a.wav"), here + "/a.wav");
  // The file's own name stays, whatever it leads to.
  const test::TemporaryDirectory folder;
  const auto real = std::filesystem::canonical(folder.path());
  std::filesystem::create_directory(real / "tapes");
  std::filesystem::create_symlink(real / "tapes", real / "link");
  std::filesystem::create_symlink("b.wav", real / "a.wav");
  EXPECT_EQ(pathOf(real / "link" / ".." / "a.wav"), (real / "a.wav").string());
}

TEST(ToReportInputs, MakesTextOfNamesThatAreNone) {
  auto result = measuredFile();
  result.url = "/t\xC3/a\xFF.wav";
  const ReportInputs inputs = toReportInputs(result, "", {}, std::nullopt);
  EXPECT_EQ(inputs.fileInfo.fileName, "a\uFFFD.wav");
  EXPECT_EQ(inputs.fileInfo.filePath, "/t\uFFFD/a\uFFFD.wav");
}

}  // namespace
}  // namespace orvane
