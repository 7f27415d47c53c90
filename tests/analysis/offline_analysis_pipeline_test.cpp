#include "orvane/analysis/offline_analysis_pipeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "orvane/platform/error.h"
#include "tests/analysis/raw_programme.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::analyzeFile;
using test::Channel;
using test::RawProgramme;
using test::sine;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::FloatEq;
using ::testing::FloatNear;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(OfflineAnalysisPipeline, FloorsTheStatisticsOfDigitalSilence) {
  const auto result = RawProgramme(48000, {Channel(48000), Channel(48000)}).analyze();
  EXPECT_THAT(result.channelPeakDB, ElementsAre(FloatEq(-240), FloatEq(-240)));
  EXPECT_THAT(result.channelRMSDB, ElementsAre(FloatEq(-120), FloatEq(-120)));
  EXPECT_THAT(result.channelCrestFactorDB, ElementsAre(FloatEq(-120), FloatEq(-120)));
  EXPECT_THAT(result.channelDCOffset, ElementsAre(0, 0));
  EXPECT_THAT(result.channelHasClipping, ElementsAre(false, false));
  EXPECT_EQ(result.samplePeakDB, -kInfinity);
  EXPECT_EQ(result.truePeakDB, -kInfinity);
  EXPECT_EQ(result.integratedLUFS, -kInfinity);
  EXPECT_EQ(result.maxMomentaryLUFS, -kInfinity);
  EXPECT_EQ(result.maxShortTermLUFS, -kInfinity);
  EXPECT_EQ(result.loudnessRange, 0);
  EXPECT_EQ(result.dynamicRange, 0);
  EXPECT_THAT(result.loudnessCurve, SizeIs(10));
}

TEST(OfflineAnalysisPipeline, FillsEveryFieldOfAStereoTone) {
  // 997 Hz at −23 dBFS peak in both channels reads −23 LUFS.
  const double amplitude = std::pow(10.0, -23.0 / 20.0);
  const auto tone = sine(48000, 997, amplitude, 10 * 48000);
  const RawProgramme programme(48000, {tone, tone});
  const auto result = programme.analyze();
  EXPECT_EQ(result.url, programme.path());
  ASSERT_TRUE(result.buffer);
  EXPECT_EQ(result.buffer->frameLength(), 480000U);
  EXPECT_EQ(result.sampleRate, 48000);
  EXPECT_EQ(result.channelCount, 2);
  EXPECT_EQ(result.durationSeconds, 10.0);
  EXPECT_EQ(result.fileFormat, "RAW f32le");
  EXPECT_EQ(result.fileSize, 10 * 48000 * 2 * 4);
  EXPECT_EQ(result.bitDepth, 32);
  EXPECT_EQ(result.rawFormat, programme.options().rawFormat);
  EXPECT_NEAR(result.integratedLUFS, -23.0, 0.001);
  EXPECT_NEAR(result.loudnessRange, 0.0, 0.01);
  EXPECT_NEAR(result.samplePeakDB, -23.0, 0.01);
  EXPECT_NEAR(result.truePeakDB, -23.0, 0.05);
  EXPECT_NEAR(result.maxMomentaryLUFS, -23.0, 0.005);
  EXPECT_NEAR(result.maxShortTermLUFS, -23.0, 0.005);
  EXPECT_EQ(result.dynamicRange, 0);
  EXPECT_THAT(result.channelPeakDB, Each(FloatNear(-23.0F, 0.01F)));
  EXPECT_THAT(result.channelRMSDB, Each(FloatNear(-26.01F, 0.01F)));
  EXPECT_THAT(result.channelCrestFactorDB, Each(FloatNear(3.01F, 0.01F)));
  EXPECT_THAT(result.channelDCOffset, Each(FloatNear(0.0F, 1e-5F)));
  ASSERT_THAT(result.loudnessCurve, SizeIs(100));
  EXPECT_DOUBLE_EQ(result.loudnessCurve.front().time, 0.1);
  EXPECT_DOUBLE_EQ(result.loudnessCurve.back().time, 10.0);
  EXPECT_NEAR(result.loudnessCurve.back().momentary, -23.0, 0.001);
  EXPECT_EQ(result.loudnessCurve.front().integrated, -kInfinity);
  EXPECT_NEAR(result.loudnessCurve[3].integrated, -23.0, 0.05);
}

TEST(OfflineAnalysisPipeline, LeavesTheSpeechFiguresEmptyWithoutTheDetector) {
  const auto tone = sine(48000, 997, 0.1, 48000);
  const auto result = RawProgramme(48000, {tone}).analyze();
  EXPECT_FALSE(result.speechHistory);
  EXPECT_EQ(result.speechGatedLUFS, -kInfinity);
  EXPECT_EQ(result.speechPercentage, 0);
}

TEST(OfflineAnalysisPipeline, GivesNoStereoCurveForMono) {
  const auto tone = sine(48000, 440, 0.5, 48000);
  EXPECT_THAT(RawProgramme(48000, {tone}).analyze().stereoWidthCurve, IsEmpty());
}

TEST(OfflineAnalysisPipeline, GivesNoStereoCurveUnasked) {
  const auto tone = sine(48000, 440, 0.5, 48000);
  EXPECT_THAT(RawProgramme(48000, {tone, tone}).analyze(false).stereoWidthCurve, IsEmpty());
}

TEST(OfflineAnalysisPipeline, CorrelatesEqualOppositeAndSilentChannels) {
  const auto tone = sine(48000, 440, 0.5, 48000);
  Channel opposite = tone;
  for (float& sample : opposite) sample = -sample;
  const auto correlation = [&tone](const Channel& right) {
    return RawProgramme(48000, {tone, right}).analyze().stereoWidthCurve;
  };
  EXPECT_THAT(correlation(tone),
              AllOf(SizeIs(10), Each(Field(&StereoWidthCurvePoint::correlation, FloatEq(1)))));
  EXPECT_THAT(correlation(opposite),
              AllOf(SizeIs(10), Each(Field(&StereoWidthCurvePoint::correlation, FloatEq(-1)))));
  EXPECT_THAT(correlation(Channel(48000)),
              AllOf(SizeIs(10), Each(Field(&StereoWidthCurvePoint::correlation, 0.0F))));
}

TEST(OfflineAnalysisPipeline, RoundsTheLoudnessStepAndTruncatesTheStereoWindow) {
  // At 11,025 Hz a step is 1,103 frames and a window 1,102.
  const auto result = RawProgramme(11025, {Channel(11020), Channel(11020)}).analyze();
  EXPECT_THAT(result.loudnessCurve, SizeIs(10));  // nine whole steps and a partial one
  EXPECT_THAT(result.stereoWidthCurve, SizeIs(10));
  EXPECT_DOUBLE_EQ(result.stereoWidthCurve.back().time, 1.0);
  const auto shorter = RawProgramme(11025, {Channel(11019), Channel(11019)}).analyze();
  EXPECT_THAT(shorter.stereoWidthCurve, SizeIs(9));
  // At 44,100 Hz both are 4,410.
  const auto cd = RawProgramme(44100, {Channel(44100), Channel(44100)}).analyze();
  EXPECT_THAT(cd.loudnessCurve, SizeIs(10));
  EXPECT_THAT(cd.stereoWidthCurve, SizeIs(10));
}

TEST(OfflineAnalysisPipeline, MeasuresAFileShorterThanOneStereoWindow) {
  const auto tone = sine(48000, 997, 0.5, 4000);
  const auto result = RawProgramme(48000, {tone, tone}).analyze();
  EXPECT_THAT(result.stereoWidthCurve, IsEmpty());
  EXPECT_THAT(result.loudnessCurve, SizeIs(1));
  EXPECT_GT(result.integratedLUFS, -10);
  EXPECT_EQ(result.loudnessCurve.back().integrated, result.integratedLUFS);
}

TEST(OfflineAnalysisPipeline, MarksAChannelWithASampleOf0999AsClipping) {
  Channel clipping(4800), clean(4800);
  clipping[100] = -0.999F;
  clean[100] = 0.9989F;
  const auto result = RawProgramme(48000, {clipping, clean}).analyze();
  EXPECT_THAT(result.channelHasClipping, ElementsAre(true, false));
}

TEST(OfflineAnalysisPipeline, ReportsTheDCOffset) {
  const auto result =
      RawProgramme(48000, {Channel(48000, 0.25F), Channel(48000, -0.125F)}).analyze();
  EXPECT_THAT(result.channelDCOffset, ElementsAre(0.25F, -0.125F));
}

TEST(OfflineAnalysisPipeline, KeepsGoingOverNonFiniteSamples) {
  auto tone = sine(48000, 997, 0.1, 48000);
  const auto expected = RawProgramme(48000, {tone, tone}).analyze();
  auto broken = tone;
  broken[24000] = std::numeric_limits<float>::quiet_NaN();
  broken[24001] = kInfinity;
  auto repaired = tone;
  repaired[24000] = repaired[24001] = 0;
  const RawProgramme programme(48000, {tone, broken});
  OfflineAnalysisPipeline::AnalysisDetail detail;
  const auto result = analyzeFile(programme.path(), programme.options(), {}, &detail);
  const auto wanted = RawProgramme(48000, {tone, repaired}).analyze();
  EXPECT_EQ(result.integratedLUFS, wanted.integratedLUFS);
  EXPECT_EQ(result.truePeakDB, wanted.truePeakDB);
  EXPECT_EQ(result.loudnessCurve, wanted.loudnessCurve);
  EXPECT_EQ(detail.nonFiniteSampleCount, 2);
  EXPECT_EQ(result.dynamicRange, wanted.dynamicRange / 2);
  EXPECT_EQ(result.channelRMSDB[0], expected.channelRMSDB[0]);
  EXPECT_TRUE(std::isnan(result.channelRMSDB[1]));
}

TEST(OfflineAnalysisPipeline, PassesLoadErrorsOn) {
  const RawProgramme programme(48000, {Channel(100)});
  auto options = programme.options();
  options.rawFormat->channelCount = 65;
  try {
    analyzeFile(programme.path(), options);
    FAIL() << "65 channels were accepted";
  } catch (const Error& error) {
    EXPECT_EQ(error.errorDescription(), "The declared raw format is invalid.");
  }
  options.rawFormat.reset();
  EXPECT_THROW(analyzeFile("/nowhere/at/all.wav", options), PlatformError);
}

}  // namespace
}  // namespace orvane
