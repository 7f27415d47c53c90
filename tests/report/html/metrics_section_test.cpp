#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "orvane/report/html/html_report_builder.h"

namespace orvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr const char* kGreen = "#3fb950";
constexpr const char* kAmber = "#d29922";
constexpr const char* kRed = "#f85149";

OrvaneReport inMode(std::string mode, ReportFullFileLoudness figures = {}) {
  return {.fullFile = std::move(figures), .loudnessTargets = {.activeMode = std::move(mode)}};
}

/// The card of that label: its style and its value, "#3fb950 -14.0 LUFS".
std::string card(const OrvaneReport& report, const std::string& label) {
  const std::string page = HTMLReportBuilder::build(report);
  const std::string head =
      "<div class=\"metric-label\">" + label + "</div><div class=\"metric-value\"";
  auto start = page.find(head);
  if (start == std::string::npos) return "none";
  start += head.size();
  std::string text = page.substr(start, page.find("</div>", start) - start);
  const std::string style = " style=\"color:";
  if (text.starts_with(style)) return text.replace(0, style.size(), "").replace(7, 2, " ");
  return text.substr(1);
}

std::vector<std::string> labels(const OrvaneReport& report) {
  const std::string page = HTMLReportBuilder::build(report);
  const std::string head = "<div class=\"metric-label\">";
  std::vector<std::string> result;
  for (auto at = page.find(head); at != std::string::npos; at = page.find(head, at)) {
    at += head.size();
    result.push_back(page.substr(at, page.find('<', at) - at));
  }
  return result;
}

TEST(MetricCards, StandInTheirOrderByMode) {
  EXPECT_THAT(labels(inMode("music")), ElementsAre("Integrated", "True Peak", "LRA", "DR",
                                                   "Max Momentary", "Max Short-term"));
  EXPECT_THAT(labels(inMode("podcast")),
              ElementsAre("Integrated", "True Peak", "LRA", "Speech-Gated", "Max Momentary",
                          "Max Short-term", "Noise Floor"));
  EXPECT_THAT(labels(inMode("vod")), ElementsAre("Integrated", "True Peak", "LRA", "Speech-Gated",
                                                 "Max Momentary", "Max Short-term"));
  EXPECT_THAT(labels(inMode("broadcast")),
              ElementsAre("Integrated", "True Peak", "LRA", "Speech-Gated", "DR", "Max Momentary",
                          "Max Short-term"));
}

TEST(MetricCards, AreThoseOfMusicInAnUnknownMode) {
  EXPECT_EQ(labels(inMode("cinema")), labels(inMode("music")));
}

TEST(MetricCards, ShowADashWithoutColourForWhatIsMissing) {
  for (const auto& label : labels(inMode("podcast")))
    EXPECT_EQ(card(inMode("podcast"), label), "-") << label;
  EXPECT_EQ(card(inMode("music"), "DR"), "-");
  EXPECT_EQ(card(inMode("music", {.integratedLUFS = -kInfinity}), "Integrated"), "-");
}

TEST(MetricCards, ColourLoudnessByLevel) {
  const std::pair<float, std::string> rows[] = {{-5.9F, std::string(kRed) + " -5.9 LUFS"},
                                                {-6.0F, std::string(kAmber) + " -6.0 LUFS"},
                                                {-13.9F, std::string(kAmber) + " -13.9 LUFS"},
                                                {-14.0F, std::string(kGreen) + " -14.0 LUFS"},
                                                {-40.0F, std::string(kGreen) + " -40.0 LUFS"}};
  for (const auto& [level, text] : rows) {
    EXPECT_EQ(card(inMode("music", {.integratedLUFS = level}), "Integrated"), text);
    EXPECT_EQ(card(inMode("music", {.maxMomentaryLUFS = level}), "Max Momentary"), text);
    EXPECT_EQ(card(inMode("music", {.maxShortTermLUFS = level}), "Max Short-term"), text);
  }
  EXPECT_EQ(card(inMode("vod", {.speechGatedLUFS = -5.5F}), "Speech-Gated"),
            std::string(kRed) + " -5.5 LKFS");
}

TEST(MetricCards, ColourTheTruePeakByLevel) {
  const std::pair<float, std::string> rows[] = {{0.25F, std::string(kRed) + " 0.2 dBTP"},
                                                {-0.5F, std::string(kAmber) + " -0.5 dBTP"},
                                                {-2.9F, std::string(kAmber) + " -2.9 dBTP"},
                                                {-3.0F, "-3.0 dBTP"}};
  for (const auto& [peak, text] : rows)
    EXPECT_EQ(card(inMode("music", {.truePeakDB = peak}), "True Peak"), text);
}

TEST(MetricCards, ShowTheSamplePeakWhenThereIsNoTruePeak) {
  const OrvaneReport report = inMode("music", {.samplePeakDB = -0.25F});
  EXPECT_EQ(card(report, "True Peak"), std::string(kRed) + " -0.2 dBFS*");
  EXPECT_THAT(HTMLReportBuilder::build(report),
              HasSubstr("<p class=\"note\">* Sample peak shown; true peak measurement unavailable "
                        "for this file.</p>"));
  EXPECT_THAT(HTMLReportBuilder::build(inMode("music", {.samplePeakDB = -1, .truePeakDB = -1})),
              Not(HasSubstr("Sample peak shown")));
  EXPECT_THAT(HTMLReportBuilder::build(inMode("music")), Not(HasSubstr("Sample peak shown")));
}

TEST(MetricCards, ShowTheLoudnessRangeWithoutColour) {
  EXPECT_EQ(card(inMode("music", {.loudnessRange = 0}), "LRA"), "0.0 LU");
}

TEST(MetricCards, ColourTheDynamicRangeByScore) {
  const std::pair<std::int64_t, std::string> rows[] = {
      {14, std::string(kGreen) + " 14"}, {10, std::string(kGreen) + " 10"},
      {9, std::string(kAmber) + " 9"},   {6, std::string(kAmber) + " 6"},
      {5, std::string(kRed) + " 5"},     {0, std::string(kRed) + " 0"}};
  for (const auto& [score, text] : rows)
    EXPECT_EQ(card(inMode("broadcast", {.dynamicRange = score}), "DR"), text);
}

TEST(MetricCards, ColourTheNoiseFloorByLevel) {
  const std::pair<float, std::string> rows[] = {{-59.9F, std::string(kRed) + " -59.9 dB"},
                                                {-60.0F, std::string(kAmber) + " -60.0 dB"},
                                                {-62.9F, std::string(kAmber) + " -62.9 dB"},
                                                {-63.0F, std::string(kGreen) + " -63.0 dB"}};
  for (const auto& [floor, text] : rows) {
    OrvaneReport report = inMode("podcast");
    report.selection = ReportSelectionLoudness{.speechGatedNoiseFloorDBRMS = floor};
    EXPECT_EQ(card(report, "Noise Floor"), text);
  }
}

TEST(MetricCards, ShowTheSelectionWhenThereIsOne) {
  OrvaneReport report = inMode("broadcast", {.integratedLUFS = -30, .dynamicRange = 3});
  report.selection = ReportSelectionLoudness{.integratedLUFS = -16,
                                             .loudnessRange = 4,
                                             .truePeakDB = -kInfinity,
                                             .samplePeakDB = -4,
                                             .dynamicRange = 12,
                                             .speechGatedLUFS = -17};
  EXPECT_EQ(card(report, "Integrated"), std::string(kGreen) + " -16.0 LUFS");
  EXPECT_EQ(card(report, "True Peak"), "-4.0 dBFS*");
  EXPECT_EQ(card(report, "LRA"), "4.0 LU");
  EXPECT_EQ(card(report, "DR"), std::string(kGreen) + " 12");
  EXPECT_EQ(card(report, "Speech-Gated"), std::string(kGreen) + " -17.0 LKFS");
}

}  // namespace
}  // namespace orvane
