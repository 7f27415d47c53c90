#include "orvane/edit/programme_levels.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/platform/error.h"
#include "tests/edit/edit_samples.h"

namespace orvane {
namespace {

namespace edits = EditOperations;

TEST(ProgrammeLevels, AreThoseOfTheMeter) {
  using enum ChannelLabel;
  const auto audio = edits::buildBuffer({edits::test::noise(4, 100'000), 48'000, 4},
                                        ChannelLayout::fromLabels({left, right, center, lfe}));
  core::LoudnessProcessor meter(48'000, 4, std::nullopt, std::vector<float>{1, 1, 1, 0});
  meter.process(audio->view());
  meter.updateTruePeak(audio->view());
  meter.flushPartialBlock();
  for (const std::size_t threads : {1U, 2U})
    EXPECT_EQ(measureLevels(*audio, {.threadCount = threads}),
              (ProgrammeLevels{meter.integratedLUFS(), meter.truePeakDB()}));
}

TEST(ProgrammeLevels, OfSilenceAreNone) {
  constexpr float kNone = -std::numeric_limits<float>::infinity();
  const auto audio = edits::buildBuffer({{std::vector<float>(48'000)}, 48'000, 1});
  EXPECT_EQ(measureLevels(*audio), (ProgrammeLevels{kNone, kNone}));
}

TEST(ProgrammeLevels, CanBeInterrupted) {
  struct Impatient : ProgressObserver {
    void onProgress(std::string_view, double) override {}
    bool isCancelled() override { return true; }
  } observer;
  const auto audio = edits::buildBuffer({edits::test::noise(1, 10), 48'000, 1});
  EXPECT_THROW(measureLevels(*audio, {.observer = &observer}), Cancelled);
}

/// What the extension states is what measuring the file gives: of clipped samples, too.
TEST(BroadcastLoudness, IsThatOfTheStoredSamples) {
  constexpr std::size_t kFrames = 200'000;
  auto samples = edits::test::noise(2, kFrames);
  for (auto& channel : samples)
    for (std::size_t i = 0; i < channel.size(); ++i) channel[i] *= i < kFrames / 2 ? 4.0F : 0.01F;
  const auto audio = edits::buildBuffer({samples, 48'000, 2});
  for (auto& channel : samples)
    for (float& sample : channel)
      sample = std::clamp(std::nearbyint(sample * 32768), -32768.0F, 32767.0F) / 32768;
  const auto stored = edits::buildBuffer({samples, 48'000, 2});
  core::LoudnessProcessor meter(48'000, 2);
  meter.isRecording = true;
  meter.process(stored->view());
  meter.updateTruePeak(stored->view());
  meter.flushPartialBlock();
  BroadcastLoudness expected{
      meter.integratedLUFS(), meter.loudnessRange(), meter.truePeakDB(), {}, {}};
  for (const auto& entry : meter.history()) {
    expected.maxMomentaryLUFS = std::max(expected.maxMomentaryLUFS.value_or(-200), entry.momentary);
    expected.maxShortTermLUFS = std::max(expected.maxShortTermLUFS.value_or(-200), entry.shortTerm);
  }
  for (const std::size_t threads : {1U, 2U})
    EXPECT_EQ(measureBroadcastLoudness(audio->view(), audio->format(),
                                       SampleEncoding::signedInteger(2), {.threadCount = threads}),
              expected);
  EXPECT_NE(
      measureBroadcastLoudness(audio->view(), audio->format(), SampleEncoding::floatingPoint(4)),
      expected);
}

}  // namespace
}  // namespace orvane
