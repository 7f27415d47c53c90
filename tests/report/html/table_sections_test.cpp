#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "orvane/report/html/html_report_builder.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr float kSilence = -std::numeric_limits<float>::infinity();

std::string page(const OrvaneReport& report) {
  return HTMLReportBuilder::build(report);
}

std::string channelPage(const ReportChannel& channel) {
  return page({.channels = {channel}});
}

TEST(ChannelTable, HasARowPerChannel) {
  EXPECT_THAT(channelPage({.label = "L",
                           .peakDB = -7.25F,
                           .rmsDB = -20.5F,
                           .crestFactorDB = 13.25F,
                           .dcOffset = -0.000123F}),
              HasSubstr("<div class=\"section-title\">Per-Channel</div>\n"
                        "<div class=\"table-container\">\n<table>\n"
                        "<tr><th>CH</th><th>Peak</th><th>RMS</th><th>Crest Factor</th>"
                        "<th>DC Offset</th></tr>\n"
                        "<tr><td><span class=\"ch-label\">L</span></td>"
                        "<td class=\"value-good\">-7.2 dBFS</td><td>-20.5 dBFS</td>"
                        "<td>13.2 dB</td><td>-0.00012</td></tr>\n"));
}

TEST(ChannelTable, MarksClippedChannelsAndEscapesLabels) {
  EXPECT_THAT(channelPage({.label = "<i>", .hasClipping = true}),
              HasSubstr("<span class=\"ch-label\">&lt;i&gt;</span> "
                        "<span class=\"clip-badge\">CLIP</span></td>"));
}

TEST(ChannelTable, ColoursThePeakByLevel) {
  const std::pair<float, std::string> rows[] = {{-0.9F, "value-bad\">-0.9"},
                                                {-1.0F, "value-warn\">-1.0"},
                                                {-5.9F, "value-warn\">-5.9"},
                                                {-6.0F, "value-good\">-6.0"}};
  for (const auto& [peak, text] : rows)
    EXPECT_THAT(channelPage({.peakDB = peak}), HasSubstr("<td class=\"" + text + " dBFS</td>"));
}

TEST(ChannelTable, ShowsADashForWhatIsNotFinite) {
  EXPECT_THAT(channelPage({.peakDB = -10, .rmsDB = kSilence}),
              HasSubstr("-10.0 dBFS</td><td>-</td>"));
}

TEST(ChannelTable, IsLeftOutWithoutChannels) {
  EXPECT_THAT(page({}), Not(HasSubstr("Per-Channel")));
}

TEST(Violations, AreCountedAndAddedUp) {
  const ReportViolations violations{.momentaryThreshold = -9.25F,
                                    .shortTermThreshold = -10,
                                    .momentaryCount = 2,
                                    .shortTermCount = 1,
                                    .momentaryRanges = {{1, 2}, {4, 4.25}},
                                    .shortTermRanges = {{10, 12}}};
  EXPECT_THAT(
      page({.violations = violations}),
      HasSubstr("<div class=\"section-title\">Violations</div>\n"
                "<div class=\"viol-container\">\n"
                "<div class=\"viol-row\">Momentary &gt; -9.2 LUFS &mdash; <b>2</b> regions "
                "· 1.2 s total</div>\n"
                "<div class=\"viol-row\">Short-term &gt; -10.0 LUFS &mdash; <b>1</b> region "
                "· 2.0 s total</div>\n</div>\n"));
}

TEST(Violations, HaveNoRowWithoutRangesOrThreshold) {
  EXPECT_THAT(page({.violations = ReportViolations{.momentaryThreshold = -9}}),
              Not(HasSubstr("Violations</div>")));
  const std::string one = page({.violations = ReportViolations{.momentaryThreshold = -9,
                                                               .momentaryCount = 1,
                                                               .shortTermCount = 1,
                                                               .momentaryRanges = {{1, 2}},
                                                               .shortTermRanges = {{1, 2}}}});
  EXPECT_THAT(one, HasSubstr("Momentary &gt;"));
  EXPECT_THAT(one, Not(HasSubstr("Short-term &gt;")));
}

ReportChapterEntry chapter() {
  return {.index = 7,
          .name = "Seven",
          .startSec = 65,
          .endSec = 3725.9,
          .integratedLUFS = -18.25F,
          .rmsDBFS = -20.5F,
          .deviationFromMedianLU = 1.75F,
          .truePeakDBTP = -3.25F,
          .samplePeakDBFS = -3.5F,
          .loudnessRange = 5,
          .maxMomentaryLUFS = -12,
          .maxShortTermLUFS = -14,
          .speechGatedLUFS = -17.5F,
          .noiseFloorDBRMS = -62,
          .speechPercentage = 0.256F};
}

std::string chapterPage(const ReportChapterEntry& entry) {
  return page({.chapters = ReportChapterTable{.deviationThresholdLU = 2, .entries = {entry}}});
}

TEST(ChapterTable, HasARowPerChapter) {
  EXPECT_THAT(chapterPage(chapter()),
              HasSubstr("<tr class=\"chap-row\"><td class=\"chap-idx\">07</td>"
                        "<td class=\"chap-name\">Seven</td>"
                        "<td class=\"chap-time\">1:05 &ndash; 1:02:05</td>"
                        "<td class=\"chap-dur\">1:01:00</td><td class=\"chap-num\">-20.5</td>"
                        "<td class=\"chap-lufs\">-18.2</td><td class=\"chap-dev\">+1.8</td>"
                        "<td class=\"chap-num\">-3.2</td><td class=\"chap-num\">-3.5</td>"
                        "<td class=\"chap-num\">5.0</td><td class=\"chap-num\">-12.0</td>"
                        "<td class=\"chap-num\">-14.0</td><td class=\"chap-num\">-17.5</td>"
                        "<td class=\"chap-num\">-62.0</td><td class=\"chap-num\">26%</td></tr>\n"));
}

TEST(ChapterTable, HasFifteenColumns) {
  EXPECT_THAT(chapterPage(chapter()),
              HasSubstr("<table class=\"chap-table\">\n<tr><th>#</th><th>Name</th>"
                        "<th>Time range</th><th>Duration</th><th>RMS (dB)</th><th>I (LUFS)</th>"
                        "<th>vs med (LU)</th><th>TP (dBTP)</th><th>SP (dBFS)</th><th>LRA (LU)</th>"
                        "<th>Max M</th><th>Max S</th><th>Dialog I</th><th>NF (dB)</th>"
                        "<th>Speech</th></tr>\n"));
}

TEST(ChapterTable, TellsCountOriginMedianAndThreshold) {
  const std::string limits =
      " LU · ACX limits flagged red (RMS outside [-23, -18] dB, TP &gt; -3 dBTP, noise floor &gt; "
      "-60 dB). The integrated LUFS column and its deviation from the book median are a separate "
      "narrator-consistency check.</div>";
  EXPECT_THAT(page({.chapters = ReportChapterTable{.medianLUFS = -19.75F,
                                                   .deviationThresholdLU = 1.5F,
                                                   .origin = "manual",
                                                   .entries = {chapter(), chapter()}}}),
              HasSubstr("<div class=\"chap-meta\">2 chapters · manually edited · median -19.8 LUFS "
                        "· flag threshold ±1.5" +
                        limits));
  EXPECT_THAT(page({.chapters = ReportChapterTable{.origin = "x", .entries = {chapter()}}}),
              HasSubstr("<div class=\"chap-meta\">1 chapter · x · median - · flag threshold ±0.0" +
                        limits));
}

TEST(ChapterTable, NamesTheOriginOfTheChapters) {
  const std::pair<std::string, std::string> rows[] = {
      {"detected", "auto-detected"},
      {"manual", "manually edited"},
      {"imported", "imported (JSON)"},
      {"recalled", "recalled (prior session)"},
      {"music", "seeded from the song&#39;s sections (Apple Music Understanding)"},
      {"imported (CSV)", "imported (CSV)"},
      {"<x>", "&lt;x&gt;"}};
  for (const auto& [origin, label] : rows)
    EXPECT_THAT(page({.chapters = ReportChapterTable{.origin = origin}}),
                HasSubstr(">0 chapters · " + label + " · median"));
}

TEST(ChapterTable, FlagsADeviationBeyondTheThreshold) {
  auto entry = chapter();
  for (const float deviation : {2.0F, -2.0F}) {
    entry.deviationFromMedianLU = deviation;
    EXPECT_THAT(chapterPage(entry), HasSubstr("<tr class=\"chap-row\">"));
  }
  for (const float deviation : {2.01F, -2.01F}) {
    entry.deviationFromMedianLU = deviation;
    EXPECT_THAT(chapterPage(entry), HasSubstr("<tr class=\"chap-row chap-flagged\">"));
  }
}

TEST(ChapterTable, ShowsSilentAndUnmeasuredChaptersMuted) {
  auto entry = chapter();
  entry.deviationFromMedianLU = 5;
  entry.integratedLUFS = kSilence;
  EXPECT_THAT(chapterPage(entry), HasSubstr("<tr class=\"chap-row chap-muted\">"));
  EXPECT_THAT(chapterPage(entry),
              HasSubstr("<td class=\"chap-lufs\">silence</td><td class=\"chap-dev\">-</td>"));
  entry.integratedLUFS.reset();
  EXPECT_THAT(chapterPage(entry),
              HasSubstr("<td class=\"chap-lufs\">-</td><td class=\"chap-dev\">-</td>"));
}

TEST(ChapterTable, ShowsADashForAbsentFigures) {
  EXPECT_THAT(chapterPage({.index = 12, .integratedLUFS = -20}),
              HasSubstr("<tr class=\"chap-row\"><td class=\"chap-idx\">12</td>"
                        "<td class=\"chap-name\"></td><td class=\"chap-time\">0:00 &ndash; "
                        "0:00</td><td class=\"chap-dur\">0:00</td><td class=\"chap-num\">-</td>"
                        "<td class=\"chap-lufs\">-20.0</td><td class=\"chap-dev\">-</td>"
                        "<td class=\"chap-num\">-</td><td class=\"chap-num\">-</td>"
                        "<td class=\"chap-num\">-</td><td class=\"chap-num\">-</td>"
                        "<td class=\"chap-num\">-</td><td class=\"chap-num\">-</td>"
                        "<td class=\"chap-num\">-</td><td class=\"chap-num\">-</td></tr>"));
}

TEST(ChapterTable, ShowsNoNegativeDuration) {
  auto entry = chapter();
  entry.endSec = 60;
  EXPECT_THAT(chapterPage(entry), HasSubstr("<td class=\"chap-dur\">0:00</td>"));
}

TEST(ChapterTable, WarnsOfRMSOutsideItsLimits) {
  const auto warns = [](float rms) {
    auto entry = chapter();
    entry.rmsDBFS = rms;
    return chapterPage(entry).find("</td><td class=\"chap-num chap-warn\">") != std::string::npos;
  };
  EXPECT_FALSE(warns(-18));
  EXPECT_TRUE(warns(-17.99F));
  EXPECT_FALSE(warns(-23));
  EXPECT_TRUE(warns(-23.01F));
}

TEST(ChapterTable, WarnsOfTruePeakAndNoiseFloorAboveTheirLimits) {
  const auto warnings = [](float truePeak, float noiseFloor) {
    auto entry = chapter();
    entry.truePeakDBTP = truePeak;
    entry.noiseFloorDBRMS = noiseFloor;
    const std::string text = chapterPage(entry);
    int count = 0;
    for (auto at = text.find("chap-num chap-warn"); at != std::string::npos;
         at = text.find("chap-num chap-warn", at + 1))
      ++count;
    return count;
  };
  EXPECT_EQ(warnings(-3, -60), 0);
  EXPECT_EQ(warnings(-2.99F, -60), 1);
  EXPECT_EQ(warnings(-3, -59.99F), 1);
  EXPECT_EQ(warnings(kSilence, kSilence), 0);
}

TEST(ChapterTable, EscapesNames) {
  auto entry = chapter();
  entry.name = "</td><script>";
  EXPECT_THAT(chapterPage(entry),
              HasSubstr("<td class=\"chap-name\">&lt;/td&gt;&lt;script&gt;</td>"));
}

TEST(ChapterTable, IsLeftOutWhenThereIsNone) {
  EXPECT_THAT(page({}), Not(HasSubstr("Chapters</div>")));
}

}  // namespace
}  // namespace orvane
