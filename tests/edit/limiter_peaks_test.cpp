#include "orvane/edit/limiter_peaks.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/edit/edit_samples.h"
#include "tests/edit/hostile_programme.h"
#include "tests/reference/limiter_reference.h"
#include "tests/support/each_instruction_set.h"

namespace orvane::EditOperations {
namespace {

constexpr float kCeiling = 0.7F;

/// The peaks that are found slice by slice, the last one raised to what is behind the end.
std::vector<float> peaksOf(ChannelArrays& channels, const std::vector<std::size_t>& sizes,
                           bool* hasSilenced = nullptr) {
  LimiterPeaks finder(channels.size(), kCeiling);
  std::vector<float> peaks(channels.front().size());
  channels = test::inSlices(std::move(channels), sizes, [&](const ProgrammeSlice& slice) {
    finder.find(slice.audio, std::span(peaks).subspan(static_cast<std::size_t>(slice.firstFrame),
                                                      slice.audio.frameCount()));
  });
  peaks.back() = std::max(peaks.back(), finder.behindTheEnd());
  if (hasSilenced != nullptr) *hasSilenced = finder.hasSilencedSamples();
  return peaks;
}

TEST(LimiterPeaks, AreThoseOfTheFramesAboveTheCeiling) {
  orvane::test::onEachInstructionSet([] {
    for (std::uint64_t seed = 1; seed < 40; ++seed) {
      auto channels = orvane::test::hostileProgramme(4 * seed + 1, 16000).channels;
      auto expected = reference::framePeaks(channels);
      for (float& peak : expected) peak = std::max(peak, kCeiling);
      EXPECT_EQ(peaksOf(channels, {1, 5, 12, 13, 14, 63, 64, 1000}), expected) << seed;
      EXPECT_EQ(peaksOf(channels, {4096}), expected) << seed;
    }
  });
}

TEST(LimiterPeaks, SilenceWhatIsNoNumberBeforeTheyLookAtIt) {
  for (std::uint64_t seed = 4; seed < 80; seed += 4) {
    auto channels = orvane::test::hostileProgramme(seed, 16000).channels;
    auto clean = channels;
    for (auto& channel : clean)
      for (float& x : channel)
        if (!std::isfinite(x)) x = 0;
    const auto expected = peaksOf(clean, {100});
    bool hasSilenced = false;
    EXPECT_EQ(peaksOf(channels, {100}, &hasSilenced), expected);
    EXPECT_TRUE(hasSilenced);
    EXPECT_EQ(channels, clean);
    peaksOf(channels, {100}, &hasSilenced);
    EXPECT_FALSE(hasSilenced);
  }
}

}  // namespace
}  // namespace orvane::EditOperations
