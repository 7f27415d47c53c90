#include "orvane/edit/level.h"

#include <bit>
#include <cmath>
#include <limits>

#include "tests/edit/edit_samples.h"
#include "tests/reference/edit_reference.h"
#include "tests/support/each_instruction_set.h"

namespace orvane::EditOperations {
namespace {

TEST(ChangeLevel, EqualsTheFormulaBitForBit) {
  const auto channels = test::noise(2, 1003);
  orvane::test::onEachInstructionSet([&] {
    for (const auto& range : test::rangesOf(1003)) {
      for (const double gainDB : {-6.0, 0.0, 3.3, 40.0, -120.0}) {
        const auto result = changeLevel(channels, 48'000, gainDB, range.start, range.end);
        for (std::size_t c = 0; c < 2; ++c)
          EXPECT_EQ(result.channelData[c],
                    reference::changeLevel(channels[c], gainDB, range.start, range.end));
      }
    }
  });
}

TEST(ChangeLevel, IsTheSameInSlicesOfAnySize) {
  const auto channels = test::noise(2, 1003);
  const auto whole = changeLevel(channels, 48'000, -3, 100, 900).channelData;
  EXPECT_EQ(test::inSlices(channels, {1, 64, 130},
                           [](const ProgrammeSlice& slice) {
                             changeLevelOfSlice(slice, {100, 900}, -3);
                           }),
            whole);
}

TEST(InvertPhase, TurnsTheSignAndNothingElse) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const std::vector<float> samples = {0.0F, -0.0F,  0.5F,  -1.0F, kInfinity,
                                      kNaN, 1e-44F, 0.25F, 1.0F};
  orvane::test::onEachInstructionSet([&] {
    const auto inverted = invertPhase({samples}, 48'000, 0, 100).channelData.front();
    for (std::size_t i = 0; i < samples.size(); ++i)
      EXPECT_EQ(std::bit_cast<std::uint32_t>(inverted[i]),
                std::bit_cast<std::uint32_t>(samples[i]) ^ 0x80000000U);
    EXPECT_EQ(invertPhase({{1, 2, 3}}, 48'000, 1, 2).channelData.front(),
              (std::vector<float>{1, -2, 3}));
  });
  const auto channels = test::noise(2, 99);
  EXPECT_EQ(invertPhase(channels, 48'000, 5, 5).channelData, channels);
  EXPECT_EQ(test::inSlices(channels, {3},
                           [](const ProgrammeSlice& slice) {
                             invertPhaseOfSlice(slice, {10, 50});
                           }),
            invertPhase(channels, 48'000, 10, 50).channelData);
}

TEST(SwapChannels, ExchangesThoseOfStereoOnly) {
  EXPECT_EQ(swapChannels({{1}, {2}}, 48'000).channelData, (ChannelArrays{{2}, {1}}));
  for (const std::size_t count : {0U, 1U, 3U, 6U}) {
    const auto channels = test::noise(count, 9);
    const auto result = swapChannels(channels, 48'000);
    EXPECT_EQ(result.channelData, channels);
    EXPECT_EQ(result.channelCount, static_cast<int>(count));
  }
}

TEST(SplitToMono, GivesOneResultPerChannel) {
  const auto results = splitToMono({{1, 2}, {3, 4}, {5, 6}}, 96'000);
  EXPECT_EQ(results, (std::vector<EditResult>{
                         {{{1, 2}}, 96'000, 1}, {{{3, 4}}, 96'000, 1}, {{{5, 6}}, 96'000, 1}}));
  EXPECT_TRUE(splitToMono({}, 96'000).empty());
}

}  // namespace
}  // namespace orvane::EditOperations
