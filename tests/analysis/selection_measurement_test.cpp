#include "orvane/analysis/selection_measurement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "tests/analysis/raw_programme.h"

namespace orvane {
namespace {

using SelectionMeasurement::ChapterSpan;
using SelectionMeasurement::measure;
using SelectionMeasurement::measureChapter;
using test::Channel;
using test::RawProgramme;
using test::sine;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::size_t kRate = 48000;

/// Five seconds at −20 dBFS, five at −40.
Channel loudThenQuiet() {
  auto samples = sine(kRate, 997, 0.1, 5 * kRate);
  const auto quiet = sine(kRate, 997, 0.01, 5 * kRate);
  samples.insert(samples.end(), quiet.begin(), quiet.end());
  return samples;
}

TEST(SelectionMeasurement, OfTheWholeFileEqualsTheFilesFigures) {
  const auto left = loudThenQuiet();
  const auto file = RawProgramme(kRate, {left, sine(kRate, 500, 0.2, left.size())}).analyze();
  const auto selection = measure(*file.buffer, 0, 10 * kRate, std::nullopt);
  ASSERT_TRUE(selection);
  EXPECT_EQ(selection->timeRange, (ClosedTimeRange{0, 10}));
  EXPECT_EQ(selection->integratedLUFS, file.integratedLUFS);
  EXPECT_EQ(selection->loudnessRange, file.loudnessRange);
  EXPECT_EQ(selection->truePeakDB, file.truePeakDB);
  EXPECT_EQ(selection->samplePeakDB, file.samplePeakDB);
  EXPECT_EQ(selection->maxMomentaryLUFS, file.maxMomentaryLUFS);
  EXPECT_EQ(selection->maxShortTermLUFS, file.maxShortTermLUFS);
  EXPECT_EQ(selection->dynamicRange, file.dynamicRange);
  EXPECT_EQ(selection->peakDB, file.channelPeakDB);
  EXPECT_EQ(selection->rmsDB, file.channelRMSDB);
  EXPECT_EQ(selection->crestFactorDB, file.channelCrestFactorDB);
  ASSERT_EQ(selection->dcOffset.size(), 2U);
  for (std::size_t c = 0; c < 2; ++c)  // added up in other pieces
    EXPECT_NEAR(selection->dcOffset[c], file.channelDCOffset[c], 1e-12);
  EXPECT_EQ(selection->headroomDB, -file.samplePeakDB);
  ASSERT_EQ(selection->truePeakDBByChannel.size(), 2U);
  EXPECT_EQ(std::max(selection->truePeakDBByChannel[0], selection->truePeakDBByChannel[1]),
            file.truePeakDB);
  ASSERT_EQ(selection->channelDR.size(), 2U);
  ASSERT_EQ(selection->momentaryCurve.size(), file.loudnessCurve.size());
  for (std::size_t i = 0; i < file.loudnessCurve.size(); ++i) {
    EXPECT_DOUBLE_EQ(selection->momentaryCurve[i].time, file.loudnessCurve[i].time);
    EXPECT_EQ(selection->momentaryCurve[i].lufs, file.loudnessCurve[i].momentary);
    EXPECT_EQ(selection->shortTermCurve[i].lufs, file.loudnessCurve[i].shortTerm);
    EXPECT_EQ(selection->integratedCurve[i].lufs, file.loudnessCurve[i].integrated);
  }
  EXPECT_EQ(selection->truePeakCurve.size(), 100U);
  EXPECT_EQ(selection->fftSize, 8192);
  EXPECT_EQ(selection->fftMagnitudes.size(), 2U);
  EXPECT_TRUE(selection->msFftMagnitudes);
  EXPECT_EQ(selection->sampleRate, kRate);
}

TEST(SelectionMeasurement, MeasuresOnlyItsFrames) {
  const auto file = RawProgramme(kRate, {loudThenQuiet()}).analyze();
  const auto quiet = measure(*file.buffer, 6 * kRate, 9 * kRate, std::nullopt);
  ASSERT_TRUE(quiet);
  EXPECT_EQ(quiet->timeRange, (ClosedTimeRange{6, 9}));
  EXPECT_NEAR(quiet->integratedLUFS, -43.01, 0.05);
  EXPECT_NEAR(quiet->samplePeakDB, -40, 0.01);
  EXPECT_EQ(quiet->momentaryCurve.size(), 30U);
  EXPECT_DOUBLE_EQ(quiet->momentaryCurve.front().time, 6.1);
  EXPECT_FALSE(quiet->msFftMagnitudes);
  for (const auto& point : quiet->truePeakCurve) EXPECT_NEAR(point.lufs, -40, 0.05);
}

TEST(SelectionMeasurement, FollowsTheTruePeakStepByStep) {
  const auto file = RawProgramme(kRate, {loudThenQuiet()}).analyze();
  const auto selection = measure(*file.buffer, 0, 10 * kRate, std::nullopt);
  ASSERT_EQ(selection->truePeakCurve.size(), 100U);
  for (std::size_t i = 0; i < 100; ++i)
    if (i != 50) {  // the step that holds the fall between the two levels
      EXPECT_NEAR(selection->truePeakCurve[i].lufs, i < 50 ? -20 : -40, 0.05) << i;
    }
}

TEST(SelectionMeasurement, IsAbsentOutsideTheFile) {
  const auto file = RawProgramme(kRate, {Channel(kRate)}).analyze();
  EXPECT_FALSE(measure(*file.buffer, kRate, 2 * kRate, std::nullopt));
  EXPECT_FALSE(measure(*file.buffer, 100, 100, std::nullopt));
  EXPECT_FALSE(measure(*file.buffer, 200, 100, std::nullopt));
  EXPECT_FALSE(measure(*file.buffer, -100, 0, std::nullopt));
  const auto clamped = measure(*file.buffer, -100, 10 * kRate, std::nullopt);
  ASSERT_TRUE(clamped);
  EXPECT_EQ(clamped->timeRange, (ClosedTimeRange{0, 1}));
}

TEST(SelectionMeasurement, GatesOnSpeechAndMeasuresTheFloorBetween) {
  const auto file = RawProgramme(kRate, {loudThenQuiet()}).analyze();
  std::vector<bool> flags(100, false);
  std::fill(flags.begin(), flags.begin() + 50, true);
  const auto selection = measure(*file.buffer, 2 * kRate, 8 * kRate, flags);
  ASSERT_TRUE(selection);
  EXPECT_NEAR(selection->speechPercentage, 50, 0.001);
  EXPECT_NEAR(selection->speechGatedLUFS, -23.01, 0.35);  // the last blocks reach into the quiet
  EXPECT_NEAR(selection->speechGatedNoiseFloorDBRMS, -43.01, 0.05);
  ASSERT_EQ(selection->speechRanges.size(), 1U);
  EXPECT_NEAR(selection->speechRanges[0].lowerBound, 2, 1e-9);
  EXPECT_NEAR(selection->speechRanges[0].upperBound, 5, 1e-9);
}

TEST(SelectionMeasurement, HasNoFloorWithoutHalfASecondBetweenSpeech) {
  const auto file = RawProgramme(kRate, {loudThenQuiet()}).analyze();
  EXPECT_EQ(measure(*file.buffer, 0, kRate, std::nullopt)->speechGatedNoiseFloorDBRMS, -kInfinity);
  std::vector<bool> flags(100, true);
  for (int i = 0; i < 4; ++i) flags[static_cast<std::size_t>(i)] = false;
  EXPECT_EQ(measure(*file.buffer, 0, kRate, flags)->speechGatedNoiseFloorDBRMS, -kInfinity);
  flags[4] = false;
  EXPECT_NEAR(measure(*file.buffer, 0, kRate, flags)->speechGatedNoiseFloorDBRMS, -23.01, 0.05);
}

TEST(ChapterMeasurement, HoldsTheSelectionsFigures) {
  const auto file = RawProgramme(kRate, {loudThenQuiet()}).analyze();
  std::vector<bool> flags(100, false);
  std::fill(flags.begin(), flags.begin() + 25, true);
  const auto chapter = measureChapter(*file.buffer, {3, "Loud", 0, 5}, flags);
  const auto selection = measure(*file.buffer, 0, 5 * kRate, flags);
  EXPECT_EQ(chapter.index, 3);
  EXPECT_EQ(chapter.name, "Loud");
  EXPECT_EQ(chapter.startSec, 0);
  EXPECT_EQ(chapter.endSec, 5);
  EXPECT_EQ(chapter.integratedLUFS, selection->integratedLUFS);
  EXPECT_NEAR(*chapter.rmsDBFS, -23.01, 0.01);
  EXPECT_EQ(chapter.truePeakDBTP, selection->truePeakDB);
  EXPECT_EQ(chapter.samplePeakDBFS, selection->samplePeakDB);
  EXPECT_EQ(chapter.loudnessRange, selection->loudnessRange);
  EXPECT_EQ(chapter.maxMomentaryLUFS, selection->maxMomentaryLUFS);
  EXPECT_EQ(chapter.maxShortTermLUFS, selection->maxShortTermLUFS);
  EXPECT_EQ(chapter.speechGatedLUFS, selection->speechGatedLUFS);
  EXPECT_EQ(chapter.noiseFloorDBRMS, selection->speechGatedNoiseFloorDBRMS);
  EXPECT_FLOAT_EQ(*chapter.speechPercentage, 0.5F);
}

// A silent chapter had no figures, as if it had never been measured.
TEST(ChapterMeasurement, GivesMinusInfinityForSilenceAndNothingForWhatIsNotThere) {
  const auto file = RawProgramme(kRate, {Channel(kRate)}).analyze();
  const auto silent = measureChapter(*file.buffer, {0, "Silence", 0, 1}, std::nullopt);
  EXPECT_EQ(silent.integratedLUFS, -kInfinity);
  EXPECT_EQ(silent.truePeakDBTP, -kInfinity);
  EXPECT_EQ(silent.maxMomentaryLUFS, -kInfinity);
  EXPECT_FALSE(silent.speechGatedLUFS);
  EXPECT_FALSE(silent.noiseFloorDBRMS);
  EXPECT_FALSE(silent.speechPercentage);
  EXPECT_EQ(silent.loudnessRange, 0.0F);
  const double huge = std::numeric_limits<double>::infinity();
  for (const ChapterSpan& span :
       {ChapterSpan{1, "Behind", 2, 3}, ChapterSpan{1, "Turned", 0.5, 0.2},
        ChapterSpan{1, "Endless", huge, huge}, ChapterSpan{1, "Nowhere", NAN, NAN}})
    EXPECT_FALSE(measureChapter(*file.buffer, span, std::nullopt).loudnessRange) << span.name;
}

}  // namespace
}  // namespace orvane
