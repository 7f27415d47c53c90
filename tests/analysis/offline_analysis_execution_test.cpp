// How an analysis is carried out must not show in its figures.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/platform/error.h"
#include "tests/analysis/raw_programme.h"
#include "tests/analysis/same_figures.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::analyzeFile;
using test::Channel;
using test::expectSameFigures;
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
  const auto one =
      analyzeFile(programme.path(), programme.options(), {.execution = {.threadCount = 1}});
  const auto four =
      analyzeFile(programme.path(), programme.options(), {.execution = {.threadCount = 4}});
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
  analyzeFile(programme.path(), programme.options(),
              {.execution = {.threadCount = 2, .observer = &recorder}});
  EXPECT_EQ(recorder.stages, (std::vector<std::string>{"Reading", "Measuring"}));
  EXPECT_TRUE(recorder.inOrder);
  EXPECT_DOUBLE_EQ(recorder.last, 1.0);
}

TEST(AnalysisExecution, StopsWhenTheObserverAsksForIt) {
  const RawProgramme programme(48000, {noise(1, 48000)});
  for (const int calls : {0, 1, 2}) {
    Recorder recorder;
    recorder.cancelAfter = calls;
    EXPECT_THROW(
        analyzeFile(programme.path(), programme.options(), {.execution = {.observer = &recorder}}),
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
  const auto result =
      analyzeFile(programme.path(), programme.options(), {.execution = {.observer = &recorder}});
  EXPECT_EQ(result.fileSize, 0);
  EXPECT_GT(result.integratedLUFS, -30);
}

// Slices are short where there are many channels, and 2^22 frames where there are few.
TEST(AnalysisExecution, GivesTheSameFiguresWithoutKeepingTheAudio) {
  struct Case {
    std::size_t channels;
    std::size_t frames;
    std::size_t sliceEnd;  // where a clipping run lies across
  };
  for (const auto& [channels, frames, sliceEnd] :
       {Case{2, 50'000, 8192}, Case{64, 140'001, 1 << 17}, Case{1, 4'300'000, 1 << 22}}) {
    SCOPED_TRACE(channels);
    std::vector<Channel> samples;
    for (std::size_t c = 0; c < channels; ++c)
      samples.push_back(noise(static_cast<unsigned>(c), frames));
    const auto clipped = samples[0].begin() + static_cast<std::ptrdiff_t>(sliceEnd);
    std::fill(clipped - 100, clipped + 100, 1.0F);
    const RawProgramme programme(8000, samples);
    auto options = programme.options();
    options.enableSileroVAD = channels == 2;
    OfflineAnalysisPipeline::AnalysisDetail kept, passed;
    const auto whole =
        analyzeFile(programme.path(), options, {.execution = {.threadCount = 2}}, &kept);
    for (const std::size_t threads : {1U, 3U}) {
      const auto sliced =
          analyzeFile(programme.path(), options,
                      {.execution = {.threadCount = threads}, .keepsBuffer = false}, &passed);
      EXPECT_FALSE(sliced.buffer);
      expectSameFigures(whole, sliced);
      EXPECT_EQ(kept.blockPowers, passed.blockPowers);
      EXPECT_EQ(kept.clippingRuns, passed.clippingRuns);
      EXPECT_EQ(kept.layout, passed.layout);
    }
    EXPECT_EQ(kept.clippingRunCount, 1);
    EXPECT_EQ(kept.layout, whole.buffer->format().layout);
  }
}

TEST(AnalysisExecution, ReportsReadingToTheEndWithoutKeepingTheAudio) {
  const RawProgramme programme(48000, std::vector<Channel>(64, noise(1, 140'000)));
  for (const int calls : {1 << 30, 3}) {
    Recorder recorder;
    recorder.cancelAfter = calls;
    const auto analyze = [&] {
      analyzeFile(programme.path(), programme.options(),
                  {.execution = {.threadCount = 2, .observer = &recorder}, .keepsBuffer = false});
    };
    if (calls == 3) {
      EXPECT_THROW(analyze(), Cancelled);
    } else {
      analyze();
      EXPECT_DOUBLE_EQ(recorder.last, 1.0);
    }
    EXPECT_EQ(recorder.stages, std::vector<std::string>{"Reading"});
    EXPECT_TRUE(recorder.inOrder);
  }
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
