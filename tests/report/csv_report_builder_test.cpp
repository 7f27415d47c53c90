#include "orvane/report/csv_report_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/report/sample_reports.h"

namespace orvane {
namespace {

using CSVReportBuilder::build;
using testing::HasSubstr;
using testing::Not;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// The row of a file of that name.
std::string fileRow(const std::string& name) {
  const std::string text = build(OrvaneReport{.file = {.fileName = name}});
  const auto start = text.find("File,");
  return text.substr(start, text.find("\r\nDuration") - start);
}

ReportChapterEntry chapter() {
  return {.index = 7,
          .name = "Seven",
          .startSec = 1.5,
          .endSec = 61.25,
          .integratedLUFS = -18.25F,
          .rmsDBFS = -20.5F,
          .deviationFromMedianLU = 1.75F,
          .truePeakDBTP = -3.125F,
          .samplePeakDBFS = -3.5F,
          .loudnessRange = 5,
          .maxMomentaryLUFS = -12,
          .maxShortTermLUFS = -14,
          .speechGatedLUFS = -17.5F,
          .noiseFloorDBRMS = -62,
          .speechPercentage = 0.25F};
}

TEST(CSVReport, ListsTheFiguresOfTheFile) {
  const OrvaneReport report{
      .file = {.fileName = "a.wav", .duration = 12.3456, .sampleRate = 44100, .channelCount = 2},
      .fullFile = {.integratedLUFS = -14,
                   .samplePeakDB = -0.125F,
                   .truePeakDB = 0.5F,
                   .loudnessRange = 6.25F,
                   .maxMomentaryLUFS = -9.5F,
                   .maxShortTermLUFS = -11.5F,
                   .dynamicRange = 8,
                   .speechGatedLUFS = -16.5F,
                   .speechPercentage = 37.5F}};
  EXPECT_EQ(build(report),
            "Metric,Value\r\nFile,a.wav\r\nDuration (s),12.346\r\nSample Rate (Hz),44100\r\n"
            "Channels,2\r\nIntegrated (LUFS),-14.00\r\nLoudness Range (LU),6.25\r\n"
            "True Peak (dBTP),0.50\r\nSample Peak (dBFS),-0.12\r\nMax Momentary (LUFS),-9.50\r\n"
            "Max Short-term (LUFS),-11.50\r\nSpeech-gated (LUFS),-16.50\r\nSpeech (%),37.50\r\n"
            "Dynamic Range (DR),8\r\n");
}

TEST(CSVReport, LeavesAbsentFiguresEmptyAndTheScoreOut) {
  OrvaneReport report;
  report.fullFile.truePeakDB = -kInfinity;
  EXPECT_EQ(build(report),
            "Metric,Value\r\nFile,\r\nDuration (s),0.000\r\nSample Rate (Hz),0\r\nChannels,0\r\n"
            "Integrated (LUFS),\r\nLoudness Range (LU),\r\nTrue Peak (dBTP),\r\n"
            "Sample Peak (dBFS),\r\nMax Momentary (LUFS),\r\nMax Short-term (LUFS),\r\n"
            "Speech-gated (LUFS),\r\nSpeech (%),\r\n");
}

TEST(CSVReport, SaysHowAHeaderlessFileWasRead) {
  const RawPCMFormat format{.sampleRate = 48000, .channelCount = 2};
  const std::string text = build(OrvaneReport{.file = {.channelCount = 2, .rawFormat = format}});
  EXPECT_THAT(text, HasSubstr("Channels,2\r\nRaw Declared Format," + format.summary() +
                              "\r\nIntegrated (LUFS),"));
}

TEST(CSVReport, ListsKeyAndTempoOfAMusicAnalysis) {
  OrvaneReport report;
  report.musicAnalysis = MusicAnalysisResult{
      .beatsPerMinute = 119.96F, .keys = {{.span = {0, 1}, .tonic = "bFlat", .mode = "major"}}};
  EXPECT_THAT(build(report), HasSubstr("\r\nKey (Apple Music Understanding),B\u266D major\r\n"
                                       "Tempo BPM (Apple Music Understanding),120.0\r\n"));
  report.musicAnalysis = MusicAnalysisResult{};
  EXPECT_THAT(build(report), HasSubstr("\r\nKey (Apple Music Understanding),\r\n"
                                       "Tempo BPM (Apple Music Understanding),\r\n"));
}

TEST(CSVReport, ListsStemGatedLoudness) {
  OrvaneReport report;
  report.stemGatedLoudness =
      StemGatedLoudness{.vocal = {.presentLUFS = -13, .absentLUFS = -15, .balanceLU = 2},
                        .drums = {.presentLUFS = -12.5F}};
  EXPECT_THAT(build(report), testing::EndsWith("Vocal-present (LUFS, stem-gated)\",-13.00\r\n"
                                               "\"Bed without vocal (LUFS, stem-gated)\",-15.00\r\n"
                                               "Vocal balance (LU),2.00\r\n"
                                               "\"Drums-present (LUFS, stem-gated)\",-12.50\r\n"
                                               "\"Without drums (LUFS, stem-gated)\",\r\n"
                                               "Drums balance (LU),\r\n"));
}

TEST(CSVReport, ListsChapters) {
  OrvaneReport report;
  report.chapters = ReportChapterTable{.medianLUFS = -20, .entries = {chapter()}};
  EXPECT_EQ(build(report),
            "Index,Name,Start (s),End (s),Duration (s),RMS (dBFS),Integrated (LUFS),"
            "Deviation (LU),True Peak (dBTP),Sample Peak (dBFS),LRA (LU),Max Momentary (LUFS),"
            "Max Short-term (LUFS),Dialog (LUFS),Noise Floor (dB RMS),Speech (%)\r\n"
            "7,Seven,1.500,61.250,59.750,-20.50,-18.25,1.75,-3.12,-3.50,5.00,-12.00,-14.00,"
            "-17.50,-62.00,25.00\r\n");
}

TEST(CSVReport, LeavesFiguresOfAChapterEmptyThatAreAbsentOrNotFinite) {
  OrvaneReport report;
  ReportChapterEntry silent{.index = 1, .name = "Silence", .startSec = 0, .endSec = 2};
  silent.startSec = static_cast<double>(-kInfinity);
  silent.rmsDBFS = silent.integratedLUFS = -kInfinity;
  silent.speechPercentage = -kInfinity;
  report.chapters = ReportChapterTable{.entries = {silent}};
  EXPECT_THAT(build(report), testing::EndsWith("\r\n1,Silence,,2.000,,,,,,,,,,,,\r\n"));
}

TEST(CSVReport, ListsTheFileWhenTheChapterTableIsEmpty) {
  OrvaneReport report;
  report.chapters = ReportChapterTable{};
  EXPECT_THAT(build(report), testing::StartsWith("Metric,Value\r\n"));
}

TEST(CSVReport, GuardsWhatASpreadsheetWouldRun) {
  EXPECT_EQ(fileRow("=SUM(A1)"), "File,\"'=SUM(A1)\"");
  EXPECT_EQ(fileRow("+cmd"), "File,\"'+cmd\"");
  EXPECT_EQ(fileRow("-intro"), "File,\"'-intro\"");
  EXPECT_EQ(fileRow("@x"), "File,\"'@x\"");
  EXPECT_EQ(fileRow("\tx"), "File,\"'\tx\"");
  EXPECT_EQ(fileRow("\rx"), "File,\"'\rx\"");
  EXPECT_EQ(fileRow("=\"a\""), "File,\"'=\"\"a\"\"\"");
  EXPECT_EQ(fileRow("-"), "File,\"'-\"");
  EXPECT_EQ(fileRow("-inf"), "File,\"'-inf\"");
  EXPECT_EQ(fileRow("-nan(1)"), "File,\"'-nan(1)\"");
  EXPECT_EQ(fileRow("+-1"), "File,\"'+-1\"");
  EXPECT_EQ(fileRow("-1+1"), "File,\"'-1+1\"");
}

TEST(CSVReport, LeavesNumbersAlone) {
  for (const char* number : {"-14.00", "+5", "-1e3", "12", "-.5"})
    EXPECT_EQ(fileRow(number), "File," + std::string(number));
}

TEST(CSVReport, QuotesOnlyWhatNeedsIt) {
  EXPECT_EQ(fileRow("plain name"), "File,plain name");
  EXPECT_EQ(fileRow("a,b"), "File,\"a,b\"");
  EXPECT_EQ(fileRow("the \"x\""), "File,\"the \"\"x\"\"\"");
  EXPECT_EQ(fileRow("a\nb"), "File,\"a\nb\"");
  EXPECT_EQ(fileRow("a\rb"), "File,\"a\rb\"");
  EXPECT_EQ(fileRow("it's"), "File,it's");
  EXPECT_EQ(fileRow("a=b"), "File,a=b");
}

TEST(CSVReport, ShowsWhatWouldDeceiveATerminal) {
  EXPECT_EQ(fileRow("a\x1B[31m\u202Eb\xFF"), "File,a\\u{1B}[31m\\u{202E}b\uFFFD");
}

TEST(CSVReport, LeavesInvisibleCharactersThatTextsNeed) {
  EXPECT_EQ(fileRow("Donau\u00ADdampf \u200F\u05D0"), "File,Donau\u00ADdampf \u200F\u05D0");
}

TEST(CSVReport, SaysThatOneChannelWasMeasuredAsTwo) {
  const std::string layout = "Mono as two equal loudspeakers";
  OrvaneReport report{.file = {.channelCount = 1, .channelLayout = layout}};
  EXPECT_THAT(build(report),
              HasSubstr("Channels,1\r\nChannel Layout," + layout + "\r\nIntegrated (LUFS),"));
  report.chapters = ReportChapterTable{.entries = {chapter(), chapter()}};
  EXPECT_THAT(build(report), HasSubstr("Speech (%),Channel Layout\r\n"));
  EXPECT_THAT(build(report), HasSubstr("25.00," + layout + "\r\n7,Seven"));
  report.file.channelLayout = "Mono";
  EXPECT_THAT(build(report), Not(HasSubstr("Layout")));
}

TEST(CSVReport, EndsEveryLineWithCRLF) {
  for (const auto& [name, report] : test::sampleReports()) {
    const std::string text = build(report);
    EXPECT_THAT(text, testing::EndsWith("\r\n"));
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\n') {
        EXPECT_EQ(text[i - 1], '\r') << name;
      }
    }
    EXPECT_THAT(text, Not(HasSubstr("inf")));
  }
}

}  // namespace
}  // namespace orvane
