#include "orvane/report/target_verdicts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane {
namespace {

using TargetVerdicts::Badge;
using TargetVerdicts::badge;
using ::testing::ElementsAre;

OrvaneReport reportFor(std::vector<std::string> targets) {
  const ReportInputs inputs{.fileInfo = {.channelCount = 2},
                            .fileLoudnessCurve = {{0.1, -20, -20, -20}},
                            .fileTruePeakDB = -2,
                            .fileMaxShortTermLUFS = -15,
                            .fileChannelRMSDB = {-20, -20},
                            .loudnessTargetSelection = {.targetIDs = std::move(targets)}};
  return OrvaneReport::build(inputs, {});
}

TEST(TargetVerdictsTest, JudgeTheTargetsOfAReportInItsOrder) {
  const auto verdicts = TargetVerdicts::of(reportFor({"tidal", "spotify"}));
  ASSERT_EQ(verdicts.size(), 2U);
  EXPECT_EQ(verdicts[0].target, core::LoudnessTargetCatalog::target("spotify"));
  EXPECT_EQ(verdicts[0].name, "Spotify");
  EXPECT_EQ(verdicts[0].measurement.integratedLUFS, -20.0F);
  EXPECT_EQ(verdicts[0].evaluation,
            core::LoudnessTargetEvaluation(core::NormalizationVerdict{6, true, false}));
  EXPECT_EQ(verdicts[1].target.id, "tidal");
}

TEST(TargetVerdictsTest, KnowATargetThatTheCatalogueHasNoMoreByItsRecord) {
  auto report = reportFor({"ebu-r128"});
  report.loudnessTargets.targets.at(0).id = "gone";
  report.loudnessTargets.targets.at(0).name = "Gone";
  const auto verdicts = TargetVerdicts::of(report);
  ASSERT_EQ(verdicts.size(), 1U);
  EXPECT_EQ(verdicts[0].name, "Gone");
  EXPECT_EQ(verdicts[0].target.referenceLUFS, -23.0F);
  EXPECT_FALSE(core::LoudnessTargetEvaluator::isMet(verdicts[0].evaluation));
}

TEST(TargetVerdictsTest, HaveAWordAndALineForEachKind) {
  const core::LoudnessTarget target{.source = core::LoudnessTargetSource::dialogGated};
  using Reason = core::NonComplianceReason;
  EXPECT_EQ(badge(target, core::NormalizationVerdict{1.25F, false, true}),
            (Badge{"pass", "Plays as-is · 1.2 dB under target"}));
  EXPECT_EQ(badge(target, core::NormalizationVerdict{-3, true, true}),
            (Badge{"normalize", "-3.0 dB · platform gain"}));
  EXPECT_EQ(badge(target, core::NormalizationVerdict{3, true, false}),
            (Badge{"fail", "+3.0 dB · TP over"}));
  EXPECT_EQ(badge(target, core::CompliantVerdict{true}), (Badge{"pass", "Compliant ✓"}));
  EXPECT_EQ(badge(target, core::CompliantVerdict{false}), (Badge{"fail", "TP over ceiling"}));
  EXPECT_EQ(badge(target, core::NonCompliantVerdict{Reason::loudness, -20, -25}),
            (Badge{"fail", "Not compliant · L (-20.0 LKFS)"}));
  EXPECT_EQ(badge(target, core::NonCompliantVerdict{Reason::truePeak, -1, -2}),
            (Badge{"fail", "Not compliant · TP (-1.0 dBTP)"}));
  EXPECT_EQ(badge(target, core::NonCompliantVerdict{Reason::shortTerm, -10, -18}),
            (Badge{"fail", "Not compliant · S↑ (-10.0 LUFS)"}));
  EXPECT_EQ(badge(target, core::NonCompliantVerdict{Reason::noiseFloor, -50, -60}),
            (Badge{"fail", "Not compliant · NF (-50.0 dB)"}));
  EXPECT_EQ(badge(target, core::NotJudgedVerdict{}), (Badge{"low", "-"}));
}

TEST(TargetVerdictsTest, AtFullLengthTellEveryBrokenRule) {
  const auto lines = [](float integrated, float peak) {
    ReportInputs inputs{.fileLoudnessCurve = {{0.1, integrated, integrated, integrated}},
                        .fileTruePeakDB = peak,
                        .fileMaxShortTermLUFS = -15,
                        .loudnessTargetSelection = {.targetIDs = {{"ebu-r128-s1"}}}};
    return TargetVerdicts::lines(TargetVerdicts::of(OrvaneReport::build(inputs, {})).at(0));
  };
  EXPECT_THAT(lines(-20, 0.5F),
              ElementsAre("Not compliant · L (-20.0 LUFS)", "S↑ (-15.0 LUFS)", "TP (0.5 dBTP)"));
  EXPECT_THAT(lines(-23, -3), ElementsAre("Not compliant · S↑ (-15.0 LUFS)"));
  EXPECT_THAT(lines(-80, -3), ElementsAre("too quiet to judge", "S↑ (-15.0 LUFS)"));
}

// A noise floor that could not be measured was passed over beside a level that was too high.
TEST(TargetVerdictsTest, AtFullLengthTellWhatCouldNotBeJudged) {
  const auto lines = [](float level) {
    ReportInputs inputs{.fileInfo = {.channelCount = 1},
                        .fileTruePeakDB = -0.5F,
                        .fileChannelRMSDB = {level},
                        .loudnessTargetSelection = {.targetIDs = {{"acx"}}}};
    return TargetVerdicts::lines(TargetVerdicts::of(OrvaneReport::build(inputs, {})).at(0));
  };
  EXPECT_THAT(lines(-10),
              ElementsAre("Not compliant · L (-10.0 dB RMS)", "TP (-0.5 dBTP)",
                          "not judged: no speech detection", "not judged: no noise floor"));
  EXPECT_THAT(lines(-80),
              ElementsAre("too quiet to judge", "TP (-0.5 dBTP)", "not judged: no speech detection",
                          "not judged: no noise floor"));
}

TEST(TargetVerdictsTest, KeepTheConditionOfATargetThatTheCatalogueHasNoMore) {
  auto report = reportFor({"netflix-lowdialog"});
  report.loudnessTargets.targets.at(0).id = "gone";
  EXPECT_EQ(
      TargetVerdicts::of(report).at(0).evaluation,
      core::LoudnessTargetEvaluation(core::NotJudgedVerdict{core::NotJudgedReason::speechUnknown}));
}

TEST(TargetVerdictsTest, TellWhatATargetAsks) {
  const auto demand = [](const char* id) {
    return TargetVerdicts::demandText(core::LoudnessTargetCatalog::target(id).value());
  };
  EXPECT_EQ(demand("spotify"), "ref -14 LUFS · ≤ -1 dBTP");
  EXPECT_EQ(demand("acx"), "-20.5±2.5 dB RMS · ≤ -3 dBTP · NF ≤ -60 dB");
  EXPECT_EQ(demand("netflix"), "dialog · -27±2 LKFS · ≤ -2 dBTP");
}

TEST(TargetVerdictsTest, ModesHaveTitles) {
  using Mode = core::LoudnessTargetMode;
  EXPECT_EQ(TargetVerdicts::modeTitle(Mode::music), "Music / Streaming");
  EXPECT_EQ(TargetVerdicts::modeTitle(Mode::podcast), "Podcast / Spoken Word");
  EXPECT_EQ(TargetVerdicts::modeTitle(Mode::vod), "VOD");
  EXPECT_EQ(TargetVerdicts::modeTitle(Mode::broadcast), "Broadcast");
}

}  // namespace
}  // namespace orvane
