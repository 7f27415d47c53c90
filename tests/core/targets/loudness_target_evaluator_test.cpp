#include "orvane/core/targets/loudness_target_evaluator.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvane::core {
namespace {

using LoudnessTargetEvaluator::evaluate;
using LoudnessTargetEvaluator::isMissed;
using LoudnessTargetEvaluator::tooltipText;

LoudnessTarget penalty(BoostBehaviour boost) {
  return {.id = "p",
          .name = "P",
          .treatment = PenaltyTreatment{boost},
          .referenceLUFS = -14,
          .truePeakCeilingDBTP = -1,
          .provenance = "a test, 2026"};
}

LoudnessTarget compliance(std::optional<float> tolerance) {
  return {.id = "c",
          .name = "C",
          .mode = LoudnessTargetMode::broadcast,
          .treatment = ComplianceTreatment{tolerance},
          .referenceLUFS = -23,
          .truePeakCeilingDBTP = -1,
          .provenance = "a test, 2026"};
}

LoudnessTargetMeasurement loud(float integrated, float truePeak) {
  return {.integratedLUFS = integrated, .truePeakDBTP = truePeak};
}

struct PenaltyCase {
  BoostBehaviour boost;
  float integrated, truePeak;
  NormalizationVerdict expected;
  bool isMissed;
};

TEST(LoudnessTargetEvaluator, JudgesServicesThatChangeTheLevel) {
  constexpr auto kSymmetric = BoostBehaviour::symmetric;
  constexpr auto kDown = BoostBehaviour::turnsDownOnly;
  const PenaltyCase cases[] = {
      {kSymmetric, -10, 0, {-4, true, true}, false},     // turned down, peak comes along
      {kSymmetric, -10, 3.5F, {-4, true, false}, true},  // still over after the turn-down
      {kSymmetric, -20, -8, {6, true, true}, false},
      {kSymmetric, -20, -6.5F, {6, true, false}, true},  // the boost would push it over
      {kSymmetric, -20, -7, {6, true, true}, false},     // exactly at the ceiling
      {kSymmetric, -14, 0, {0, false, false}, false},    // plays as it is
      {kDown, -10, -0.5F, {-4, true, true}, false},
      {kDown, -20, -0.5F, {6, false, false}, false},
      {kDown, -20, -6, {6, false, true}, false},
  };
  for (const auto& c : cases) {
    const auto evaluation = evaluate(penalty(c.boost), loud(c.integrated, c.truePeak));
    EXPECT_EQ(evaluation, LoudnessTargetEvaluation(c.expected))
        << c.integrated << " LUFS, " << c.truePeak << " dBTP";
    EXPECT_EQ(isMissed(evaluation), c.isMissed);
  }
}

TEST(LoudnessTargetEvaluator, ChecksLoudnessOnBothSides) {
  const auto target = compliance(1.0F);
  EXPECT_EQ(evaluate(target, loud(-22, -3)), LoudnessTargetEvaluation(CompliantVerdict{true}));
  EXPECT_EQ(evaluate(target, loud(-24, -3)), LoudnessTargetEvaluation(CompliantVerdict{true}));
  EXPECT_EQ(
      evaluate(target, loud(-21.9F, -3)),
      LoudnessTargetEvaluation(NonCompliantVerdict{NonComplianceReason::loudness, -21.9F, -22.0F}));
  EXPECT_EQ(
      evaluate(target, loud(-24.1F, -3)),
      LoudnessTargetEvaluation(NonCompliantVerdict{NonComplianceReason::loudness, -24.1F, -24.0F}));
}

TEST(LoudnessTargetEvaluator, ChecksLoudnessThenShortTermThenNoiseFloor) {
  auto target = compliance(1.0F);
  target.maxShortTermLUFS = -18.0F;
  target.noiseFloorMaxDBRMS = -60.0F;
  LoudnessTargetMeasurement measurement = loud(-20, -3);
  measurement.maxShortTermLUFS = -15.0F;
  measurement.noiseFloorDBRMS = -50.0F;
  EXPECT_EQ(std::get<NonCompliantVerdict>(evaluate(target, measurement)).reason,
            NonComplianceReason::loudness);
  measurement.integratedLUFS = -23.0F;
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(NonCompliantVerdict{
                                               NonComplianceReason::shortTerm, -15.0F, -18.0F}));
  measurement.maxShortTermLUFS = -18.0F;
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(NonCompliantVerdict{
                                               NonComplianceReason::noiseFloor, -50.0F, -60.0F}));
  measurement.noiseFloorDBRMS = -60.0F;
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(CompliantVerdict{true}));
  measurement.noiseFloorDBRMS.reset();
  measurement.maxShortTermLUFS.reset();
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(CompliantVerdict{true}));
}

TEST(LoudnessTargetEvaluator, ReportsThePeakBesideCompliance) {
  const auto evaluation = evaluate(compliance(1.0F), loud(-23, -0.5F));
  EXPECT_EQ(evaluation, LoudnessTargetEvaluation(CompliantVerdict{false}));
  EXPECT_TRUE(isMissed(evaluation));
}

TEST(LoudnessTargetEvaluator, MakesThePeakAReasonWhereItIsTheOnlyRule) {
  EXPECT_EQ(
      evaluate(compliance(std::nullopt), loud(-5, -0.5F)),
      LoudnessTargetEvaluation(NonCompliantVerdict{NonComplianceReason::truePeak, -0.5F, -1.0F}));
  EXPECT_EQ(evaluate(compliance(std::nullopt), loud(-5, -1)),
            LoudnessTargetEvaluation(CompliantVerdict{true}));
}

TEST(LoudnessTargetEvaluator, JudgesEachSourceByItsOwnLevel) {
  auto target = compliance(1.0F);
  LoudnessTargetMeasurement measurement{.integratedLUFS = -30.0F,
                                        .truePeakDBTP = -3.0F,
                                        .speechGatedLUFS = -23.0F,
                                        .programRMSDBFS = -23.5F};
  target.source = LoudnessTargetSource::dialogGated;
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(CompliantVerdict{true}));
  target.source = LoudnessTargetSource::rms;
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(CompliantVerdict{true}));
  measurement.programRMSDBFS.reset();
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(TooQuietVerdict{}));
}

TEST(LoudnessTargetEvaluator, CannotJudgeSilence) {
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float level : {-infinity, -70.0F, -90.0F}) {
    const auto evaluation = evaluate(penalty(BoostBehaviour::symmetric), loud(level, -80));
    EXPECT_EQ(evaluation, LoudnessTargetEvaluation(TooQuietVerdict{})) << level;
    EXPECT_FALSE(isMissed(evaluation));
  }
}

TEST(LoudnessTargetEvaluator, ExplainsItself) {
  EXPECT_EQ(tooltipText(penalty(BoostBehaviour::turnsDownOnly), loud(-12.34F, -0.56F)),
            "P: integrated loudness -14.0 LUFS, turned down only, true peak at most -1.0 dBTP. "
            "Measured: -12.3 LUFS, -0.6 dBTP. Source: a test, 2026.");
  auto target = compliance(0.5F);
  target.source = LoudnessTargetSource::dialogGated;
  target.maxShortTermLUFS = -18.0F;
  target.noiseFloorMaxDBRMS = -60.0F;
  target.isConfirmed = false;
  EXPECT_EQ(tooltipText(target, {}),
            "C: loudness of the dialogue -23.0 ±0.5 LKFS, true peak at most -1.0 dBTP, short-term "
            "at most -18.0 LUFS, noise floor at most -60.0 dB RMS. Not measured. Source: a test, "
            "2026 (unconfirmed).");
}

}  // namespace
}  // namespace orvane::core
