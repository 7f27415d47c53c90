#include "orvane/speech/detector/silero_vad_analyser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

#include "orvane/platform/instruction_sets.h"
#include "tests/speech/detector/speech_test_support.h"

namespace orvane {
namespace {

using Analyser = SileroVADAnalyser;

std::unique_ptr<VadManager> makeCurrent(const VadManager::Config& config) {
  return std::make_unique<VadManager>(config, test::currentModel());
}

std::shared_ptr<PCMBuffer> noiseBuffer(double rate, std::uint32_t channels, std::uint32_t frames) {
  auto buffer = PCMBuffer::make({.sampleRate = rate, .channelCount = channels}, frames);
  buffer->setFrameLength(frames);
  for (std::uint32_t c = 0; c < channels; ++c) {
    const auto noise = test::burstyNoise(frames, c + 1);
    std::copy(noise.begin(), noise.end(), buffer->channel(c));
  }
  return buffer;
}

/// The arithmetic of the input preparation, sample by sample.
std::vector<float> referenceInput(const PCMBuffer& buffer) {
  const auto frames = static_cast<std::int64_t>(buffer.frameLength());
  const float scale = 1.0F / static_cast<float>(buffer.channelCount());
  std::vector<float> mono(static_cast<std::size_t>(frames));
  for (std::uint32_t c = 0; c < buffer.channelCount(); ++c)
    for (std::size_t i = 0; i < mono.size(); ++i) {
      const float scaled = buffer.channel(c)[i] * scale;
      mono[i] += scaled;
    }
  const double ratio = buffer.sampleRate() / 16000;
  if (ratio == 1) return mono;
  std::vector<float> result(static_cast<std::size_t>(static_cast<double>(frames) / ratio));
  for (std::size_t i = 0; i < result.size(); ++i) {
    const double position = ratio * static_cast<double>(i);
    const auto i0 = std::min(frames - 1, static_cast<std::int64_t>(position));
    const auto i1 = std::min(frames - 1, i0 + 1);
    const auto fraction = static_cast<float>(position - static_cast<double>(i0));
    const float a = mono[static_cast<std::size_t>(i0)];
    const float step = (mono[static_cast<std::size_t>(i1)] - a) * fraction;
    result[i] = a + step;
  }
  return result;
}

TEST(SileroVADTuning, HasItsDefaults) {
  EXPECT_EQ(SileroVADTuning::defaults(), (SileroVADTuning{0.5F, 0.1, 0.1}));
  EXPECT_NE(SileroVADTuning::defaults(), (SileroVADTuning{0.6F, 0.1, 0.1}));
}

TEST(SileroVADAnalyser, BringsStereoAt48kHzTo16kHzMono) {
  const auto input = Analyser::prepareInput(*noiseBuffer(48000, 2, 48000));
  ASSERT_TRUE(input);
  EXPECT_EQ(input->samples16k.size(), 16000U);
  EXPECT_EQ(input->sourceFrameCount, 48000);
  EXPECT_EQ(input->sourceSampleRate, 48000);
  Analyser analyser(makeCurrent);
  const auto flags = analyser.classify(*input, SileroVADTuning::defaults());
  ASSERT_TRUE(flags);
  EXPECT_EQ(flags->size(), 10U);
}

TEST(SileroVADAnalyser, PreparesExactlyByTheFormulaAtEveryRateAndChannelCount) {
  for (const InstructionSet& set : availableInstructionSets()) {
    SCOPED_TRACE(set.name);
    forceInstructionSet(set);
    for (const double rate : {8000.0, 11025.0, 16000.0, 22050.0, 32000.0, 44100.0, 48000.0, 64000.0,
                              96000.0, 384000.0, 15999.5, 1e7}) {
      for (const std::uint32_t channels : {1U, 2U, 3U, 6U}) {
        SCOPED_TRACE(std::to_string(rate) + " Hz, " + std::to_string(channels));
        const auto buffer = noiseBuffer(rate, channels, 220501);
        const auto expected = referenceInput(*buffer);
        const auto input = Analyser::prepareInput(*buffer);
        ASSERT_TRUE(input);
        EXPECT_EQ(input->samples16k, expected);
        EXPECT_EQ(Analyser::prepareInput(*buffer, 3), input);
      }
    }
  }
  useBestInstructionSet();
}

TEST(SileroVADAnalyser, InterpolatesUpFromLowRates) {
  const auto buffer = noiseBuffer(8000, 1, 800);
  const auto input = Analyser::prepareInput(*buffer);
  ASSERT_TRUE(input);
  ASSERT_EQ(input->samples16k.size(), 1600U);
  EXPECT_EQ(input->samples16k[2], buffer->channel(0)[1]);
  const float difference = buffer->channel(0)[2] - buffer->channel(0)[1];
  EXPECT_EQ(input->samples16k[3], buffer->channel(0)[1] + difference * 0.5F);
  EXPECT_EQ(input->samples16k[1599], buffer->channel(0)[799]);
}

TEST(SileroVADAnalyser, HasNoInputForWhatHoldsNoAudio) {
  const auto buffer = noiseBuffer(48000, 1, 100);
  const float* const channel = buffer->channel(0);
  const std::span<const float* const> one(&channel, 1);
  EXPECT_FALSE(Analyser::prepareInput({}, 100, 48000));
  EXPECT_FALSE(Analyser::prepareInput(one, 0, 48000));
  EXPECT_FALSE(Analyser::prepareInput(one, -1, 48000));
  EXPECT_FALSE(Analyser::prepareInput(one, 100, 0));
  EXPECT_FALSE(Analyser::prepareInput(one, 100, -48000));
  EXPECT_FALSE(Analyser::prepareInput(one, 100, std::numeric_limits<double>::quiet_NaN()));
  EXPECT_FALSE(Analyser::prepareInput(one, 100, std::numeric_limits<double>::infinity()));
  EXPECT_FALSE(Analyser::prepareInput(one, 2, 48000));  // less than one sample at 16 kHz
  EXPECT_TRUE(Analyser::prepareInput(one, 3, 48000));
  buffer->setFrameLength(0);
  EXPECT_FALSE(Analyser::prepareInput(*buffer));
}

TEST(SileroVADAnalyser, InterpolatesMonoArrays) {
  const std::vector<float> ramp{0, 1, 2, 3, 4, 5, 6};
  EXPECT_EQ(Analyser::linInterp(ramp, 48000, 48000), ramp);
  EXPECT_EQ(Analyser::linInterp({}, 48000, 16000), std::vector<float>());
  EXPECT_EQ(Analyser::linInterp(ramp, 48000, 16000), (std::vector<float>{0, 3}));
  EXPECT_EQ(Analyser::linInterp(ramp, 32000, 16000), (std::vector<float>{0, 2, 4}));
  EXPECT_EQ(Analyser::linInterp(ramp, 24000, 16000), (std::vector<float>{0, 1.5F, 3, 4.5F}));
  EXPECT_EQ(Analyser::linInterp(std::vector<float>{1, 2}, 8000, 16000),
            (std::vector<float>{1, 1.5F, 2, 2}));
  EXPECT_TRUE(Analyser::linInterp(std::vector<float>{1, 2}, 48000, 16000).empty());
}

TEST(SileroVADAnalyser, ClassifiesMonoArraysLikePreparedInput) {
  const auto buffer = noiseBuffer(44100, 1, 300000);
  Analyser analyser(makeCurrent);
  const auto input = Analyser::prepareInput(*buffer);
  const std::span<const float> mono(buffer->channel(0), buffer->frameLength());
  const auto flags = analyser.classify(mono, 44100, SileroVADTuning::defaults());
  ASSERT_TRUE(flags);
  EXPECT_EQ(flags, analyser.classify(*input, SileroVADTuning::defaults()));
  EXPECT_EQ(flags->size(), 68U);
}

TEST(SileroVADAnalyser, GivesAtLeastOneFlagAndRoundsTheirNumber) {
  Analyser analyser(makeCurrent);
  const auto count = [&](std::uint32_t frames) {
    const auto input = Analyser::prepareInput(*noiseBuffer(48000, 1, frames));
    return analyser.classify(*input, SileroVADTuning::defaults())->size();
  };
  EXPECT_EQ(count(1920), 1U);
  EXPECT_EQ(count(2400), 1U);
  EXPECT_EQ(count(7200), 1U);  // 7200 / 48000 / 0.1 lies just below 1.5
  EXPECT_EQ(count(7201), 2U);
  EXPECT_EQ(count(12000), 3U);  // 2.5 rounds away from zero
}

TEST(SileroVADAnalyser, HasNoResultForNoSamples) {
  Analyser analyser(makeCurrent);
  EXPECT_FALSE(analyser.classify(std::vector<float>(), 48000, SileroVADTuning::defaults()));
  EXPECT_FALSE(analyser.classify(Analyser::Input{}, SileroVADTuning::defaults()));
}

using Segments = std::vector<VadSegment>;
using Flags = std::vector<bool>;

TEST(SileroVADAnalyser, SetsEveryBlockThatASegmentTouches) {
  EXPECT_EQ(Analyser::blockHistory(Segments{{0.25, 0.31}}, 5, 0.1), (Flags{0, 0, 1, 1, 0}));
  EXPECT_EQ(Analyser::blockHistory(Segments{{0.2, 0.2}}, 5, 0.1), (Flags{0, 0, 0, 0, 0}));
  EXPECT_EQ(Analyser::blockHistory(Segments{{0.2, 0.3}}, 5, 0.1), (Flags{0, 0, 1, 0, 0}));
}

TEST(SileroVADAnalyser, SetsNothingBeyondTheBlocks) {
  EXPECT_EQ(Analyser::blockHistory(Segments{{0.15, 99}}, 3, 0.1), (Flags{0, 1, 1}));
  EXPECT_EQ(Analyser::blockHistory(Segments{{0.4, 0.5}}, 3, 0.1), (Flags{0, 0, 0}));
  EXPECT_EQ(Analyser::blockHistory(Segments{{-1, 0.05}, {1e300, 1e301}}, 3, 0.1), (Flags{1, 0, 0}));
  EXPECT_EQ(Analyser::blockHistory(Segments{{0, 0.25}, {0.1, 0.15}}, 3, 0.1), (Flags{1, 1, 1}));
  EXPECT_TRUE(Analyser::blockHistory(Segments{{0, 1}}, 0, 0.1).empty());
  EXPECT_TRUE(Analyser::blockHistory(Segments{{0, 1}}, -4, 0.1).empty());
}

TEST(SileroVADAnalyser, ReloadsTheModelOnlyForAnotherThreshold) {
  std::vector<float> thresholds;
  Analyser analyser([&](const VadManager::Config& config) {
    EXPECT_EQ(config.computeUnits, VadManager::ComputeUnits::cpuAndNeuralEngine);
    EXPECT_FALSE(config.debugMode);
    thresholds.push_back(config.defaultThreshold);
    return makeCurrent(config);
  });
  const std::vector<float> audio(16000);
  auto tuning = SileroVADTuning::defaults();
  EXPECT_TRUE(analyser.classify(audio, 16000, tuning));
  tuning.minSilenceDuration = 2;
  tuning.minSpeechDuration = 1;
  EXPECT_TRUE(analyser.classify(audio, 16000, tuning));
  EXPECT_EQ(thresholds, (std::vector<float>{0.5F}));
  tuning.threshold = 0.7F;
  EXPECT_TRUE(analyser.classify(audio, 16000, tuning));
  tuning.threshold = 0.5F;
  EXPECT_TRUE(analyser.classify(audio, 16000, tuning));
  EXPECT_EQ(thresholds, (std::vector<float>{0.5F, 0.7F, 0.5F}));
}

TEST(SileroVADAnalyser, HasNoResultWithoutAModelAndKeepsTheOneItHas) {
  bool isAvailable = false;
  int loads = 0;
  Analyser analyser([&](const VadManager::Config& config) {
    ++loads;
    return std::make_unique<VadManager>(config, isAvailable ? test::currentModel() : "/nowhere");
  });
  const std::vector<float> audio(16000);
  auto tuning = SileroVADTuning::defaults();
  EXPECT_FALSE(analyser.classify(audio, 16000, tuning));
  isAvailable = true;
  EXPECT_TRUE(analyser.classify(audio, 16000, tuning));
  isAvailable = false;
  tuning.threshold = 0.9F;
  EXPECT_FALSE(analyser.classify(audio, 16000, tuning));
  tuning.threshold = 0.5F;
  EXPECT_TRUE(analyser.classify(audio, 16000, tuning));
  EXPECT_EQ(loads, 3);
}

TEST(SileroVADAnalyser, ServesManyThreadsFromOneModel) {
  std::atomic<int> loads{0};
  Analyser analyser([&](const VadManager::Config& config) {
    ++loads;
    return makeCurrent(config);
  });
  const auto audio = test::syntheticProgramme();
  const auto expected = analyser.classify(audio, 16000, SileroVADTuning::defaults());
  ASSERT_TRUE(expected);
  EXPECT_TRUE(std::find(expected->begin(), expected->end(), true) != expected->end());
  std::vector<std::jthread> threads;
  for (std::size_t i = 0; i < 8; ++i)
    threads.emplace_back([&, i] {
      const Execution execution{.threadCount = i % 3 + 1};
      EXPECT_EQ(analyser.classify(audio, 16000, SileroVADTuning::defaults(), execution), expected);
    });
  threads.clear();
  EXPECT_EQ(loads, 1);
}

class Refuser : public ProgressObserver {
 public:
  void onProgress(std::string_view, double) override {}
  bool isCancelled() override { return true; }
};

TEST(SileroVADAnalyser, PassesCancellingOnAndWorksAfterwards) {
  Analyser analyser(makeCurrent);
  const auto audio = test::syntheticProgramme();
  Refuser refuser;
  const Execution execution{.threadCount = 2, .observer = &refuser};
  EXPECT_THROW(analyser.classify(audio, 16000, SileroVADTuning::defaults(), execution), Cancelled);
  EXPECT_TRUE(analyser.classify(audio, 16000, SileroVADTuning::defaults()));
}

TEST(SileroVADAnalyser, IsSharedByTheProcess) {
  EXPECT_EQ(&Analyser::shared(), &Analyser::shared());
}

TEST(SileroVADAnalyser, FindsTheInstalledModelByItself) {
  const auto audio = test::syntheticProgramme();
  Analyser reference(makeCurrent);
  const auto flags = Analyser::shared().classify(audio, 16000, SileroVADTuning::defaults());
  ASSERT_TRUE(flags) << "The speech model is not installed beside the library: "
                        "scripts/install-model FOLDER/OrvaneHeadless_OrvaneHeadless.bundle";
  EXPECT_EQ(flags, reference.classify(audio, 16000, SileroVADTuning::defaults()));
}

}  // namespace
}  // namespace orvane
