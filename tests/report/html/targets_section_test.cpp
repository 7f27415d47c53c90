#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "orvane/report/html/html_report_builder.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A target that no catalogue has, so that the page rebuilds it from the report.
ReportLoudnessTargetItem complianceItem() {
  return {.id = "none",
          .name = "House",
          .mode = "broadcast",
          .source = "integrated",
          .treatmentKind = "compliance",
          .referenceLUFS = -23,
          .toleranceLU = 0.5F,
          .truePeakCeilingDBTP = -1};
}

ReportLoudnessTargetItem penaltyItem(std::string boost) {
  return {.id = "none",
          .name = "Service",
          .mode = "music",
          .source = "integrated",
          .treatmentKind = "penalty",
          .referenceLUFS = -14,
          .truePeakCeilingDBTP = -1,
          .boostBehaviour = std::move(boost)};
}

OrvaneReport measured(float integrated, float truePeak, ReportLoudnessTargetItem item) {
  return {
      .fullFile = {.integratedLUFS = integrated, .truePeakDB = truePeak, .maxShortTermLUFS = -15},
      .loudnessTargets = {.activeMode = "music", .targets = {std::move(item)}}};
}

std::string textOf(const std::string& page, const std::string& cssClass) {
  const std::string head = "<div class=\"" + cssClass + "\">";
  const auto start = page.find(head) + head.size();
  return page.substr(start, page.find("</div>", start) - start);
}

/// Class and status of the only badge: "pass: Compliant ✓".
std::string badge(const OrvaneReport& report) {
  const std::string page = HTMLReportBuilder::build(report);
  const std::string head = "<div class=\"badge ";
  const auto start = page.find(head) + head.size();
  return page.substr(start, page.find('"', start) - start) + ": " + textOf(page, "badge-status");
}

std::string targetLine(const ReportLoudnessTargetItem& item) {
  return textOf(HTMLReportBuilder::build(measured(-23, -3, item)), "badge-target");
}

TEST(TargetBadges, TellTheGainOfAService) {
  EXPECT_EQ(badge(measured(-10, -2, penaltyItem("turnsDownOnly"))),
            "normalize: -4.0 dB · platform gain");
  EXPECT_EQ(badge(measured(-18, -8, penaltyItem("symmetric"))),
            "normalize: +4.0 dB · platform gain");
}

TEST(TargetBadges, TellThatAServicePlaysTheFileAsItIs) {
  EXPECT_EQ(badge(measured(-17.5F, -2, penaltyItem("turnsDownOnly"))),
            "pass: Plays as-is · 3.5 dB under target");
  EXPECT_EQ(badge(measured(-14, -2, penaltyItem("symmetric"))),
            "pass: Plays as-is · 0.0 dB under target");
}

TEST(TargetBadges, TellThatTheGainDrivesThePeakOverTheCeiling) {
  EXPECT_EQ(badge(measured(-18, -2, penaltyItem("symmetric"))), "fail: +4.0 dB · TP over");
  EXPECT_EQ(badge(measured(-13, 0.5F, penaltyItem("symmetric"))), "fail: -1.0 dB · TP over");
}

TEST(TargetBadges, TellComplianceAndAPeakOverTheCeiling) {
  EXPECT_EQ(badge(measured(-23, -1, complianceItem())), "pass: Compliant ✓");
  EXPECT_EQ(badge(measured(-23, -0.5F, complianceItem())), "fail: TP over ceiling");
}

TEST(TargetBadges, TellWhichRuleIsMissed) {
  EXPECT_EQ(badge(measured(-20, -3, complianceItem())), "fail: Not compliant · L (-20.0 LUFS)");
  auto speech = complianceItem();
  speech.source = "dialogGated";
  auto report = measured(-23, -3, speech);
  report.fullFile.speechGatedLUFS = -19;
  EXPECT_EQ(badge(report), "fail: Not compliant · L (-19.0 LKFS)");
  auto rms = complianceItem();
  rms.source = "rms";
  report = measured(-23, -3, rms);
  report.loudnessTargets.programRMSDBFS = -18;
  EXPECT_EQ(badge(report), "fail: Not compliant · L (-18.0 dB RMS)");
}

TEST(TargetBadges, TellThatThePeakShortTermOrNoiseFloorIsTooHigh) {
  auto peakOnly = complianceItem();
  peakOnly.toleranceLU.reset();
  EXPECT_EQ(badge(measured(-20, 0, peakOnly)), "fail: Not compliant · TP (0.0 dBTP)");
  auto shortTerm = complianceItem();
  shortTerm.maxShortTermLUFS = -18;
  EXPECT_EQ(badge(measured(-23, -3, shortTerm)), "fail: Not compliant · S↑ (-15.0 LUFS)");
  auto noise = complianceItem();
  noise.noiseFloorMaxDBRMS = -60;
  auto report = measured(-30, -3, noise);
  report.selection = ReportSelectionLoudness{
      .integratedLUFS = -23, .truePeakDB = -3, .speechGatedNoiseFloorDBRMS = -55};
  EXPECT_EQ(badge(report), "fail: Not compliant · NF (-55.0 dB)");
}

TEST(TargetBadges, TellThatAFileIsTooQuietToJudge) {
  EXPECT_EQ(badge(measured(-75, -60, complianceItem())), "low: -");
}

TEST(TargetBadges, ShowReferenceToleranceAndCeiling) {
  EXPECT_EQ(targetLine(complianceItem()), "-23±0.5 LUFS · ≤ -1 dBTP");
  auto wide = complianceItem();
  wide.referenceLUFS = -20.5F;
  wide.toleranceLU = 2;
  wide.source = "rms";
  EXPECT_EQ(targetLine(wide), "-20.5±2 dB RMS · ≤ -1 dBTP");
  EXPECT_EQ(targetLine(penaltyItem("symmetric")), "ref -14 LUFS · ≤ -1 dBTP");
  auto peakOnly = complianceItem();
  peakOnly.toleranceLU.reset();
  EXPECT_EQ(targetLine(peakOnly), "ref -23 LUFS · ≤ -1 dBTP");
}

TEST(TargetBadges, ShowDialogueNoiseFloorAndShortTermLimits) {
  auto item = complianceItem();
  item.source = "dialogGated";
  item.noiseFloorMaxDBRMS = -60;
  item.maxShortTermLUFS = -18;
  EXPECT_EQ(targetLine(item), "dialog · -23±0.5 LKFS · ≤ -1 dBTP · NF ≤ -60 dB · S ≤ -18 LUFS");
  auto service = penaltyItem("symmetric");
  service.source = "dialogGated";
  EXPECT_EQ(targetLine(service), "dialog · ref -14 LKFS · ≤ -1 dBTP");
}

TEST(TargetBadges, EscapeNamesAndTooltips) {
  auto item = complianceItem();
  item.name = "<b>\"R&D\"</b>";
  const std::string page = HTMLReportBuilder::build(measured(-23, -3, item));
  EXPECT_EQ(textOf(page, "badge-platform"), "&lt;b&gt;&quot;R&amp;D&quot;&lt;/b&gt;");
  EXPECT_THAT(page, HasSubstr("title=\"&lt;b&gt;&quot;R&amp;D"));
}

TEST(TargetBadges, TakeTheCataloguesTargetWhenItHasIt) {
  auto item = complianceItem();
  item.id = "ebu-r128";
  item.referenceLUFS = -5;  // no longer what the catalogue says
  const auto known = core::LoudnessTargetCatalog::target("ebu-r128").value();
  EXPECT_EQ(badge(measured(known.referenceLUFS, -3, item)), "pass: Compliant ✓");
}

TEST(TargetSection, IsTitledByItsMode) {
  const std::pair<std::string, std::string> rows[] = {{"music", "Music / Streaming"},
                                                      {"podcast", "Podcast / Spoken Word"},
                                                      {"vod", "VOD"},
                                                      {"broadcast", "Broadcast"},
                                                      {"other", "Music / Streaming"}};
  for (const auto& [mode, title] : rows) {
    auto report = measured(-23, -3, complianceItem());
    report.loudnessTargets.activeMode = mode;
    EXPECT_EQ(textOf(HTMLReportBuilder::build(report), "section-title"),
              "Loudness Targets: " + title);
  }
}

TEST(TargetSection, SaysThatNoTargetIsSelected) {
  const std::string page = HTMLReportBuilder::build(OrvaneReport{});
  EXPECT_THAT(page, HasSubstr("<div class=\"section-title\">Loudness Targets</div>\n"
                              "<p class=\"note\">No targets selected. Pick up to 4 in Orvane's "
                              "Settings → Targets.</p>"));
}

TEST(TargetSection, AsksForAnAnalysisWithoutIntegratedLoudness) {
  auto report = measured(0, -3, complianceItem());
  report.fullFile.integratedLUFS.reset();
  const std::string page = HTMLReportBuilder::build(report);
  EXPECT_THAT(page, HasSubstr("<div class=\"section-title\">Loudness Targets</div>\n"
                              "<p class=\"note\">Run full-file analysis to evaluate targets.</p>"));
  EXPECT_THAT(page, Not(HasSubstr("badge-status\">")));
}

}  // namespace
}  // namespace orvane
