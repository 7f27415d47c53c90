// How an analysis is carried out must not show in its figures.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/platform/error.h"
#include "tests/analysis/raw_programme.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::analyzeFile;
using test::Channel;
using test::RawProgramme;

Channel noise(unsigned seed, std::size_t frames) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<float> level(-0.5F, 0.5F);
  Channel samples(frames);
  for (float& sample : samples) sample = level(generator);
  return samples;
}

class Recorder : public ProgressObserver {
 public:
  void onProgress(std::string_view stage, double fraction) override {
    if (stages.empty() || stages.back() != stage) stages.emplace_back(stage);
    inOrder = inOrder && (fraction >= 0 && fraction <= 1);
    last = fraction;
    ++calls;
    if (onStage) onStage(stage);
  }
  bool isCancelled() override { return calls >= cancelAfter; }

  std::vector<std::string> stages;
  std::function<void(std::string_view)> onStage;
  double last = 0;
  bool inOrder = true;
  int calls = 0;
  int cancelAfter = 1 << 30;
};

TEST(AnalysisExecution, GivesTheSameFiguresOnAnyNumberOfThreads) {
  const RawProgramme programme(8000, {noise(1, 100'000), noise(2, 100'000)});
  const auto one = analyzeFile(programme.path(), programme.options(), {.threadCount = 1});
  const auto four = analyzeFile(programme.path(), programme.options(), {.threadCount = 4});
  EXPECT_EQ(one.integratedLUFS, four.integratedLUFS);
  EXPECT_EQ(one.truePeakDB, four.truePeakDB);
  EXPECT_EQ(one.loudnessRange, four.loudnessRange);
  EXPECT_EQ(one.loudnessCurve, four.loudnessCurve);
  EXPECT_EQ(one.stereoWidthCurve, four.stereoWidthCurve);
  EXPECT_EQ(one.channelRMSDB, four.channelRMSDB);
  EXPECT_EQ(one.dynamicRange, four.dynamicRange);
}

TEST(AnalysisExecution, ReportsReadingThenMeasuringToTheEnd) {
  const RawProgramme programme(48000, {noise(1, 48000)});
  Recorder recorder;
  analyzeFile(programme.path(), programme.options(), {.threadCount = 2, .observer = &recorder});
  EXPECT_EQ(recorder.stages, (std::vector<std::string>{"Reading", "Measuring"}));
  EXPECT_TRUE(recorder.inOrder);
  EXPECT_DOUBLE_EQ(recorder.last, 1.0);
}

TEST(AnalysisExecution, StopsWhenTheObserverAsksForIt) {
  const RawProgramme programme(48000, {noise(1, 48000)});
  for (const int calls : {0, 1, 2}) {
    Recorder recorder;
    recorder.cancelAfter = calls;
    EXPECT_THROW(analyzeFile(programme.path(), programme.options(), {.observer = &recorder}),
                 Cancelled)
        << "after " << calls << " calls";
  }
}

TEST(AnalysisExecution, ReportsNoSizeForAFileThatVanishes) {
  const RawProgramme programme(48000, {noise(1, 48000)});
  Recorder recorder;
  recorder.onStage = [&](std::string_view stage) {
    if (stage == "Measuring") std::filesystem::remove(programme.path());
  };
  const auto result = analyzeFile(programme.path(), programme.options(), {.observer = &recorder});
  EXPECT_EQ(result.fileSize, 0);
  EXPECT_GT(result.integratedLUFS, -30);
}

TEST(AnalysisExecution, FillsTheDetail) {
  Channel clipped = noise(3, 48000);
  for (std::size_t i = 1000; i < 1010; ++i) clipped[i] = 1.0F;
  const RawProgramme programme(48000, {clipped});
  OfflineAnalysisPipeline::AnalysisDetail detail;
  analyzeFile(programme.path(), programme.options(), {}, &detail);
  EXPECT_EQ(detail.blockPowers.size(), 7U);
  EXPECT_EQ(detail.clippingRunCount, 1);
  EXPECT_EQ(detail.clippingRuns,
            (std::vector<OfflineAnalysisPipeline::ClippingRun>{{0, 1000, 10}}));
  EXPECT_EQ(detail.nonFiniteSampleCount, 0);
}

}  // namespace
}  // namespace orvane
