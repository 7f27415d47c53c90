#include "orvane/edit/programme_levels.h"

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

}  // namespace
}  // namespace orvane
