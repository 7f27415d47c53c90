#include <gtest/gtest.h>

#include <limits>

#include "orvane/core/targets/loudness_target.h"
#include "orvane/report/orvane_report.h"

namespace orvane {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

ReportInputs measured(float integrated, std::vector<std::string> targets) {
  return {.fileInfo = {.channelCount = 2},
          .fileLoudnessCurve = {{0.1, integrated, integrated, integrated}},
          .fileTruePeakDB = -2,
          .fileMaxShortTermLUFS = -15,
          .fileChannelRMSDB = {-20, -20},
          .fileSpeechGatedLUFS = -18.5F,
          .loudnessTargetSelection = {.targetIDs = std::move(targets)}};
}

std::vector<ReportLoudnessTargetItem> items(const ReportInputs& inputs) {
  return OrvaneReport::build(inputs, {}).loudnessTargets.targets;
}

TEST(ReportTargets, KeepTheFieldsOfAPenaltyTarget) {
  const auto item = items(measured(-10, {"tidal"})).at(0);
  const auto target = core::LoudnessTargetCatalog::target("tidal").value();
  EXPECT_EQ(item.id, "tidal");
  EXPECT_EQ(item.name, target.name);
  EXPECT_EQ(item.mode, "music");
  EXPECT_EQ(item.source, "integrated");
  EXPECT_EQ(item.treatmentKind, "penalty");
  EXPECT_EQ(item.boostBehaviour, "turnsDownOnly");
  EXPECT_EQ(item.toleranceLU, std::nullopt);
  EXPECT_EQ(item.referenceLUFS, target.referenceLUFS);
  EXPECT_EQ(item.truePeakCeilingDBTP, target.truePeakCeilingDBTP);
}

TEST(ReportTargets, KeepTheFieldsOfAComplianceTarget) {
  const auto item = items(measured(-10, {"acx"})).at(0);
  EXPECT_EQ(item.mode, "podcast");
  EXPECT_EQ(item.source, "rms");
  EXPECT_EQ(item.treatmentKind, "compliance");
  EXPECT_EQ(item.boostBehaviour, std::nullopt);
  EXPECT_EQ(item.toleranceLU, 2.5F);
  EXPECT_EQ(item.noiseFloorMaxDBRMS, -60.0F);
}

TEST(ReportTargets, StandInCatalogueOrder) {
  const auto all = core::LoudnessTargetCatalog::targets(core::LoudnessTargetMode::music);
  const auto found = items(measured(-10, {all[2].id, all[0].id}));
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].id, all[0].id);
  EXPECT_EQ(found[1].id, all[2].id);
}

TEST(ReportTargets, TellTheGainOfANormalisation) {
  const auto verdict = items(measured(-10, {"tidal"})).at(0).verdict.value();
  EXPECT_EQ(verdict, (ReportTargetVerdict{.status = "normalization",
                                          .actualLUFS = -10,
                                          .penaltyGainDB = -4.0F,
                                          .penaltyApplies = true,
                                          .truePeakClean = true}));
}

TEST(ReportTargets, TellThatNoGainIsApplied) {
  const auto verdict = items(measured(-20, {"tidal"})).at(0).verdict.value();
  EXPECT_EQ(verdict.penaltyGainDB, 6.0F);
  EXPECT_EQ(verdict.penaltyApplies, false);
}

TEST(ReportTargets, TellCompliance) {
  const auto verdict = items(measured(-23, {"ebu-r128"})).at(0).verdict.value();
  EXPECT_EQ(verdict,
            (ReportTargetVerdict{.status = "compliant", .actualLUFS = -23, .truePeakClean = true}));
}

TEST(ReportTargets, TellWhatIsMissedAndByWhich) {
  const auto verdict = items(measured(-30, {"ebu-r128"})).at(0).verdict.value();
  EXPECT_EQ(verdict.status, "nonCompliant");
  EXPECT_EQ(verdict.actualLUFS, -30);
  EXPECT_EQ(verdict.nonComplianceReason, "loudness");
  EXPECT_EQ(verdict.nonComplianceActual, -30.0F);
  EXPECT_LT(verdict.nonComplianceLimit.value(), -23);
}

TEST(ReportTargets, TellWhatIsTooQuietToJudge) {
  const auto verdict = items(measured(-kInfinity, {"ebu-r128"})).at(0).verdict.value();
  EXPECT_EQ(verdict, (ReportTargetVerdict{.status = "tooQuiet", .actualLUFS = -kInfinity}));
}

TEST(ReportTargets, AreJudgedOnTheirOwnMeasure) {
  EXPECT_EQ(items(measured(-10, {"aes-td1008-speech"})).at(0).verdict->actualLUFS, -18.5F);
  EXPECT_FLOAT_EQ(items(measured(-10, {"acx"})).at(0).verdict->actualLUFS, -20);
}

TEST(ReportTargets, AreJudgedOnTheSelectionWhenThereIsOne) {
  ReportInputs inputs = measured(-30, {"ebu-r128", "acx"});
  inputs.selectionAnalysis = SelectionAnalysisResult{.rmsDB = {-20.5F, -20.5F},
                                                     .integratedLUFS = -23,
                                                     .truePeakDB = -2,
                                                     .speechGatedNoiseFloorDBRMS = -50};
  const auto found = items(inputs);
  for (const auto& item : found) {
    if (item.id == "ebu-r128") {
      EXPECT_EQ(item.verdict->status, "compliant");
    } else {
      EXPECT_EQ(item.verdict->nonComplianceReason, "noiseFloor");
    }
  }
  EXPECT_EQ(found.size(), 2U);
}

}  // namespace
}  // namespace orvane
