#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "orvane/report/html/html_report_builder.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr float kSilence = -std::numeric_limits<float>::infinity();

OrvaneReport withCurve(std::vector<LoudnessSample> momentary, double duration) {
  return {.file = {.duration = duration}, .fullFile = {.momentaryCurve = std::move(momentary)}};
}

OrvaneReport withWidth(std::vector<StereoWidthSample> curve, double duration) {
  return {.file = {.duration = duration},
          .stereoWidth = ReportStereoWidth{.curve = std::move(curve)}};
}

/// The data of the first path of the page.
std::string firstPath(const OrvaneReport& report) {
  const std::string page = HTMLReportBuilder::build(report);
  const auto start = page.find("<path d=\"") + 9;
  return page.substr(start, page.find('"', start) - start);
}

std::size_t pointCount(const OrvaneReport& report) {
  const std::string path = firstPath(report);
  return static_cast<std::size_t>(std::count(path.begin(), path.end(), ','));
}

std::vector<LoudnessSample> flatCurve(std::size_t count) {
  std::vector<LoudnessSample> curve;
  for (std::size_t i = 1; i <= count; ++i) curve.push_back({static_cast<double>(i) * 0.1, -20});
  return curve;
}

TEST(LoudnessChart, PutsLevelsBetweenItsEdges) {
  EXPECT_EQ(
      firstPath(withCurve(
          {{0, -5}, {1, -4.9F}, {2, 3}, {3, -50}, {4, -50.1F}, {5, -90}, {6, -27.5F}, {7, -14}},
          7)),
      "M0.0,0.0 L102.0,0.0 L204.0,0.0 L306.0,160.0 L408.0,160.0 L510.0,160.0 L612.0,80.0 "
      "L714.0,32.0");
}

TEST(LoudnessChart, LeavesOutWhatIsNoMeasurementWithoutBreakingThePath) {
  EXPECT_EQ(firstPath(withCurve({{0, kSilence}, {1, -50}, {2, -200}, {3, -199.9F}}, 3)),
            "M238.0,160.0 L714.0,160.0");
  EXPECT_EQ(firstPath(withCurve({{0, kSilence}}, 3)), "");
}

TEST(LoudnessChart, DrawsAShortCurveWholeAndThinsALongOne) {
  EXPECT_EQ(pointCount(withCurve(flatCurve(1499), 150)), 1499U);
  EXPECT_EQ(pointCount(withCurve(flatCurve(1500), 150)), 1500U);
  EXPECT_EQ(pointCount(withCurve(flatCurve(3000), 300)), 1500U);
  EXPECT_EQ(pointCount(withCurve(flatCurve(360'000), 36'000)), 1500U);
}

TEST(LoudnessChart, DrawsEverySecondOfThreeThousandPoints) {
  const std::string path = firstPath(withCurve(flatCurve(3000), 300));
  // Points 1, 3, 5: 0.1 s, 0.3 s, 0.5 s of 300 s on 714 px.
  EXPECT_THAT(path, testing::StartsWith("M0.2,53.3 L0.7,53.3 L1.2,53.3 "));
}

TEST(LoudnessChart, IsDrawnForAFileWithoutDuration) {
  EXPECT_EQ(firstPath(withCurve({{0, -50}, {0.001, -50}}, 0)), "M0.0,160.0 L714.0,160.0");
}

// With the width divided by the duration first these came out at 53.6 and 125.0.
TEST(LoudnessChart, DividesTheTimeByTheDurationFirst) {
  EXPECT_EQ(firstPath(withCurve({{0.75, -50}, {1.75, -50}}, 10)), "M53.5,160.0 L124.9,160.0");
}

TEST(LoudnessChart, HasBackgroundGridAndCurvesInTheirStyles) {
  OrvaneReport report = withCurve({{0, -50}}, 1);
  report.fullFile.shortTermCurve = {{0, -5}};
  report.fullFile.integratedCurve = {{1, -50}};
  const std::string page = HTMLReportBuilder::build(report);
  EXPECT_THAT(page, HasSubstr("<svg viewBox=\"0 0 714.0 160.0\" width=\"100%\""));
  EXPECT_THAT(page, HasSubstr("<rect width=\"714.0\" height=\"160.0\" fill=\"#0d1117\"/>"));
  EXPECT_THAT(page, HasSubstr("<path d=\"M0.0,160.0\" fill=\"none\" stroke-linejoin=\"round\" "
                              "stroke=\"#d4a820\" stroke-width=\"0.9\"/>\n"
                              "<path d=\"M0.0,0.0\" fill=\"none\" stroke-linejoin=\"round\" "
                              "stroke=\"#4d8fff\" stroke-width=\"1.4\"/>\n"
                              "<path d=\"M714.0,160.0\" fill=\"none\" stroke-linejoin=\"round\" "
                              "stroke=\"#3fb950\" stroke-width=\"1.6\"/>"));
}

TEST(LoudnessChart, HasAGridLineAndALabelPerLevel) {
  const std::string page = HTMLReportBuilder::build(withCurve({{0, -50}}, 1));
  const std::pair<std::string, std::pair<std::string, std::string>> rows[] = {
      {"-10", {"17.8", "14.8"}},
      {"-14", {"32.0", "29.0"}},
      {"-16", {"39.1", "36.1"}},
      {"-30", {"88.9", "85.9"}},
      {"-40", {"124.4", "121.4"}}};
  const std::string style =
      "stroke=\"#0d1117\" stroke-width=\"2\" stroke-linejoin=\"round\" paint-order=\"stroke\" "
      "font-family=\"'SF Mono', 'Menlo', monospace\">";
  for (const auto& [level, y] : rows) {
    EXPECT_THAT(page, HasSubstr("<line x1=\"0\" y1=\"" + y.first + "\" x2=\"714.0\" y2=\"" +
                                y.first + "\" stroke=\"#2a2d33\" stroke-width=\"0.5\"/>\n"));
    EXPECT_THAT(page,
                HasSubstr("<text x=\"4\" y=\"" + y.second + "\" font-size=\"9\" fill=\"#40464f\" " +
                          style + level + " LUFS</text>"));
  }
  EXPECT_THAT(page, HasSubstr("<line x1=\"0\" y1=\"64.0\" x2=\"714.0\" y2=\"64.0\" "
                              "stroke=\"#4d8fff\" stroke-width=\"0.75\" "
                              "stroke-dasharray=\"5 4\"/>\n"));
  EXPECT_THAT(page, HasSubstr("<text x=\"4\" y=\"61.0\" font-size=\"9\" fill=\"#4d8fff\" " + style +
                              "-23 LUFS</text>"));
}

// Loud programmes hid them behind their curves.
TEST(Charts, HaveTheirLabelsAboveTheCurves) {
  OrvaneReport report = withWidth({{0, 0}}, 1);
  report.fullFile.momentaryCurve = {{0, -23}};
  const std::string page = HTMLReportBuilder::build(report);
  for (std::size_t chart = page.find("<svg"); chart != std::string::npos;
       chart = page.find("<svg", chart + 1)) {
    const auto end = page.find("</svg>", chart);
    EXPECT_LT(page.rfind("<path", end), page.find("<text", chart));
  }
}

TEST(LoudnessChart, SaysWhichPartOfTheFileItShows) {
  OrvaneReport report = withCurve({{1, -14}}, 10);
  EXPECT_THAT(HTMLReportBuilder::build(report),
              HasSubstr("<div class=\"chart-range\">Full file</div>"));
  report.selection =
      ReportSelectionLoudness{.startTime = 1.25, .endTime = 7.05, .momentaryCurve = {{5, -5}}};
  EXPECT_THAT(HTMLReportBuilder::build(report),
              HasSubstr("<div class=\"chart-range\">Selection 1.2 s to 7.0 s</div>"));
  EXPECT_EQ(firstPath(report), "M357.0,0.0");
}

TEST(LoudnessChart, IsLeftOutWithoutAMomentaryCurve) {
  OrvaneReport report = withCurve({}, 10);
  report.fullFile.shortTermCurve = {{1, -14}};
  EXPECT_THAT(HTMLReportBuilder::build(report), Not(HasSubstr("Loudness Curve")));
  report.fullFile.momentaryCurve = {{1, -14}};
  report.selection = ReportSelectionLoudness{};
  EXPECT_THAT(HTMLReportBuilder::build(report), Not(HasSubstr("Loudness Curve")));
}

TEST(StereoWidthChart, PutsCorrelationsBetweenItsEdges) {
  EXPECT_EQ(firstPath(withWidth({{0, 1}, {1, 0}, {2, -1}, {3, 0.5F}}, 3)),
            "M0.0,0.0 L238.0,45.0 L476.0,90.0 L714.0,22.5");
}

TEST(StereoWidthChart, IsThinnedLikeTheLoudness) {
  std::vector<StereoWidthSample> curve(3000, StereoWidthSample{1, 0.5F});
  EXPECT_EQ(pointCount(withWidth(curve, 300)), 1500U);
  curve.resize(1499);
  EXPECT_EQ(pointCount(withWidth(curve, 300)), 1499U);
}

TEST(StereoWidthChart, HasABandPerZone) {
  EXPECT_THAT(
      HTMLReportBuilder::build(withWidth({{0, 0}}, 1)),
      HasSubstr("<svg viewBox=\"0 0 714.0 90.0\" width=\"100%\" role=\"img\" "
                "aria-label=\"Stereo correlation over time\">\n"
                "<rect x=\"0\" y=\"67.5\" width=\"714.0\" height=\"22.5\" fill=\"#2e0a0a\"/>\n"
                "<rect x=\"0\" y=\"45.0\" width=\"714.0\" height=\"22.5\" fill=\"#2e1800\"/>\n"
                "<rect x=\"0\" y=\"22.5\" width=\"714.0\" height=\"22.5\" fill=\"#0a2010\"/>\n"
                "<rect x=\"0\" y=\"2.3\" width=\"714.0\" height=\"20.2\" fill=\"#1e1a00\"/>\n"
                "<rect x=\"0\" y=\"-0.0\" width=\"714.0\" height=\"2.3\" fill=\"#202020\"/>\n"
                "<line x1=\"0\" y1=\"45.0\" x2=\"714.0\" y2=\"45.0\" stroke=\"#2a2d33\" "
                "stroke-width=\"0.5\"/>\n"));
}

TEST(StereoWidthChart, NamesTheZoneOfTheAverage) {
  const std::pair<float, std::string> rows[] = {
      {0.95F, "0.95 · Mono"},   {0.94F, "0.94 · Narrow"},        {0.5F, "0.50 · Narrow"},
      {0.49F, "0.49 · Stereo"}, {0.0F, "0.00 · Stereo"},         {-0.01F, "-0.01 · Wide"},
      {-0.5F, "-0.50 · Wide"},  {-0.51F, "-0.51 · Out of phase"}};
  for (const auto& [average, text] : rows) {
    OrvaneReport report = withWidth({{0, 0}}, 1);
    report.stereoWidth->averageCorrelation = average;
    EXPECT_THAT(HTMLReportBuilder::build(report),
                HasSubstr("<div class=\"chart-legend\">avg correlation " + text +
                          " <span style=\"color:#f85149\">0% OOP</span>"));
  }
}

TEST(StereoWidthChart, ListsTheSharesOfTheZones) {
  OrvaneReport report = withWidth({{0, 0}}, 1);
  report.stereoWidth->monoPercent = 10.4F;
  report.stereoWidth->narrowPercent = 20.6F;
  report.stereoWidth->stereoPercent = 30;
  report.stereoWidth->widePercent = 35;
  report.stereoWidth->outOfPhasePercent = 4;
  EXPECT_THAT(HTMLReportBuilder::build(report),
              HasSubstr("<div class=\"zone-legend\">\n"
                        "<span class=\"zone mono\">Mono 10%</span>\n"
                        "<span class=\"zone narrow\">Narrow 21%</span>\n"
                        "<span class=\"zone stereo\">Stereo 30%</span>\n"
                        "<span class=\"zone wide\">Wide 35%</span>\n"
                        "<span class=\"zone oop\">OOP 4%</span>\n</div>"));
}

}  // namespace
}  // namespace orvane
