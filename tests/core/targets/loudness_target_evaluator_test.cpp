#include "orvane/core/targets/loudness_target_evaluator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace orvane::core {
namespace {

using LoudnessTargetEvaluator::brokenRules;
using LoudnessTargetEvaluator::evaluate;
using LoudnessTargetEvaluator::isMet;
using LoudnessTargetEvaluator::notJudged;
using LoudnessTargetEvaluator::tooltipText;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

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
  bool isMet;
};

TEST(LoudnessTargetEvaluator, JudgesServicesThatChangeTheLevel) {
  constexpr auto kSymmetric = BoostBehaviour::symmetric;
  constexpr auto kDown = BoostBehaviour::turnsDownOnly;
  const PenaltyCase cases[] = {
      {kSymmetric, -10, 0, {-4, true, true}, true},       // turned down, peak comes along
      {kSymmetric, -10, 3.5F, {-4, true, false}, false},  // still over after the turn-down
      {kSymmetric, -20, -8, {6, true, true}, true},
      {kSymmetric, -20, -6.5F, {6, true, false}, false},  // the boost would push it over
      {kSymmetric, -20, -7, {6, true, true}, true},       // exactly at the ceiling
      {kSymmetric, -14, 0, {0, false, false}, true},      // plays as it is
      {kDown, -10, -0.5F, {-4, true, true}, true},
      {kDown, -20, -0.5F, {6, false, false}, true},
      {kDown, -20, -6, {6, false, true}, true},
  };
  for (const auto& c : cases) {
    const auto evaluation = evaluate(penalty(c.boost), loud(c.integrated, c.truePeak));
    EXPECT_EQ(evaluation, LoudnessTargetEvaluation(c.expected))
        << c.integrated << " LUFS, " << c.truePeak << " dBTP";
    EXPECT_EQ(isMet(evaluation), c.isMet);
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
}

TEST(LoudnessTargetEvaluator, ReportsThePeakBesideCompliance) {
  const auto evaluation = evaluate(compliance(1.0F), loud(-23, -0.5F));
  EXPECT_EQ(evaluation, LoudnessTargetEvaluation(CompliantVerdict{false}));
  EXPECT_FALSE(isMet(evaluation));
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
  EXPECT_EQ(evaluate(target, measurement), LoudnessTargetEvaluation(NotJudgedVerdict{}));
}

std::optional<NotJudgedReason> reasonNotToJudge(const LoudnessTarget& target,
                                                const LoudnessTargetMeasurement& measurement) {
  const auto evaluation = evaluate(target, measurement);
  const auto* verdict = std::get_if<NotJudgedVerdict>(&evaluation);
  if (verdict == nullptr) return std::nullopt;
  EXPECT_FALSE(isMet(evaluation));
  EXPECT_THAT(brokenRules(target, measurement), IsEmpty());
  return verdict->reason;
}

// Silence was no miss, so that a check of it passed.
TEST(LoudnessTargetEvaluator, CannotJudgeSilence) {
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float level : {-infinity, -70.0F, -90.0F})
    for (const auto& target : {penalty(BoostBehaviour::symmetric), compliance(1.0F)})
      EXPECT_EQ(reasonNotToJudge(target, loud(level, -80)), NotJudgedReason::tooQuiet) << level;
}

// Of several only one was told, and none beside a rule that was broken.
TEST(LoudnessTargetEvaluator, TellsEveryRuleThatCannotBeJudged) {
  using enum NotJudgedReason;
  auto target = compliance(1.0F);
  target.maxShortTermLUFS = -18.0F;
  target.noiseFloorMaxDBRMS = -60.0F;
  auto measurement = loud(-20, -3);
  EXPECT_THAT(notJudged(target, measurement),
              ElementsAre(shortTermUnknown, speechUnknown, noiseFloorUnknown));
  EXPECT_THAT(brokenRules(target, measurement), SizeIs(1));
  measurement.speechPercentage = 100.0F;
  measurement.truePeakDBTP.reset();
  EXPECT_THAT(notJudged(target, measurement),
              ElementsAre(shortTermUnknown, noiseFloorUnknown, truePeakUnknown));
  // Silence has no true peak that could be too high.
  measurement.integratedLUFS.reset();
  EXPECT_THAT(notJudged(target, measurement),
              ElementsAre(tooQuiet, shortTermUnknown, noiseFloorUnknown));
  target.source = LoudnessTargetSource::dialogGated;
  measurement = {.truePeakDBTP = 0.0F, .maxShortTermLUFS = -20.0F};
  EXPECT_THAT(notJudged(target, measurement), ElementsAre(speechUnknown, noiseFloorUnknown));
  EXPECT_THAT(brokenRules(target, measurement),
              ElementsAre(NonCompliantVerdict{NonComplianceReason::truePeak, 0, -1}));
  target.maxSpeechPercentage = 15.0F;
  measurement.speechPercentage = 50.0F;
  EXPECT_THAT(notJudged(target, measurement), ElementsAre(tooMuchSpeech));
  EXPECT_THAT(brokenRules(target, measurement), IsEmpty());
}

// What was not measured broke no rule, so that a file with a loud noise floor was compliant.
TEST(LoudnessTargetEvaluator, PassesNothingThatWasNotMeasured) {
  auto target = compliance(1.0F);
  EXPECT_EQ(reasonNotToJudge(target, {.integratedLUFS = -23.0F}), NotJudgedReason::truePeakUnknown);
  EXPECT_EQ(reasonNotToJudge(penalty(BoostBehaviour::symmetric), {.integratedLUFS = -14.0F}),
            NotJudgedReason::truePeakUnknown);
  target.noiseFloorMaxDBRMS = -60.0F;
  auto measurement = loud(-23, -3);
  EXPECT_EQ(reasonNotToJudge(target, measurement), NotJudgedReason::speechUnknown);
  measurement.speechPercentage = 99.0F;
  EXPECT_EQ(reasonNotToJudge(target, measurement), NotJudgedReason::noiseFloorUnknown);
  measurement.noiseFloorDBRMS = -61.0F;
  EXPECT_EQ(reasonNotToJudge(target, measurement), std::nullopt);
  target.maxShortTermLUFS = -18.0F;
  EXPECT_EQ(reasonNotToJudge(target, measurement), NotJudgedReason::shortTermUnknown);
}

TEST(LoudnessTargetEvaluator, TellsSpeechThatIsMissingFromSpeechThatWasNotLookedFor) {
  auto target = compliance(1.0F);
  target.source = LoudnessTargetSource::dialogGated;
  LoudnessTargetMeasurement measurement = loud(-23, -3);
  EXPECT_EQ(reasonNotToJudge(target, measurement), NotJudgedReason::speechUnknown);
  measurement.speechPercentage = 0.0F;
  EXPECT_EQ(reasonNotToJudge(target, measurement), NotJudgedReason::noSpeech);
}

// The row for little dialogue was judged, and passed, whatever the dialogue.
TEST(LoudnessTargetEvaluator, JudgesATargetForLittleSpeechOnlyWhereThereIsLittle) {
  auto target = compliance(1.0F);
  target.maxSpeechPercentage = 15.0F;
  LoudnessTargetMeasurement measurement = loud(-23, -3);
  EXPECT_EQ(reasonNotToJudge(target, measurement), NotJudgedReason::speechUnknown);
  measurement.speechPercentage = 15.0F;
  EXPECT_EQ(reasonNotToJudge(target, measurement), NotJudgedReason::tooMuchSpeech);
  measurement.speechPercentage = 14.9F;
  EXPECT_TRUE(isMet(evaluate(target, measurement)));
}

TEST(LoudnessTargetEvaluator, FindsEveryBrokenRule) {
  auto target = compliance(1.0F);
  target.maxShortTermLUFS = -18.0F;
  target.noiseFloorMaxDBRMS = -60.0F;
  LoudnessTargetMeasurement measurement = loud(-20, 0);
  measurement.maxShortTermLUFS = -15.0F;
  measurement.noiseFloorDBRMS = -50.0F;
  using Reason = NonComplianceReason;
  EXPECT_THAT(brokenRules(target, measurement),
              ElementsAre(NonCompliantVerdict{Reason::loudness, -20, -22},
                          NonCompliantVerdict{Reason::shortTerm, -15, -18},
                          NonCompliantVerdict{Reason::noiseFloor, -50, -60},
                          NonCompliantVerdict{Reason::truePeak, 0, -1}));
  EXPECT_THAT(brokenRules(target, {.integratedLUFS = -20.0F}),
              ElementsAre(NonCompliantVerdict{Reason::loudness, -20, -22}));
  EXPECT_THAT(brokenRules(compliance(1.0F), loud(-23, -1)), IsEmpty());
  EXPECT_THAT(brokenRules(penalty(BoostBehaviour::symmetric), loud(-20, -6)),
              ElementsAre(NonCompliantVerdict{Reason::truePeak, 0, -1}));
  EXPECT_THAT(brokenRules(penalty(BoostBehaviour::turnsDownOnly), loud(-20, 0)), IsEmpty());
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
            "at most -18.0 LUFS, noise floor at most -60.0 dB RMS. Not measured. Verdict: not "
            "judged: no speech detection. Also not judged: no short-term loudness. Also not "
            "judged: no noise floor. Also not judged: no true peak. Source: a test, 2026 "
            "(unconfirmed).");
}

}  // namespace
}  // namespace orvane::core
