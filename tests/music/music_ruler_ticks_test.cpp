#include "orvane/music/music_ruler_ticks.h"

#include <gtest/gtest.h>

#include <bit>

#include "tests/support/random.h"

namespace orvane {
namespace {

using MusicRulerTicks::labelEvery;

TEST(MusicRulerTicks, LabelEveryBarWhileThereIsRoom) {
  EXPECT_EQ(labelEvery(0), 1);
  EXPECT_EQ(labelEvery(12), 1);
  EXPECT_EQ(labelEvery(12.001), 2);
  EXPECT_EQ(labelEvery(13), 2);
  EXPECT_EQ(labelEvery(3072), 256);
  EXPECT_EQ(labelEvery(3073), 512);
  EXPECT_EQ(labelEvery(6000), 512);
  EXPECT_EQ(labelEvery(1e9), 512);
}

TEST(MusicRulerTicks, TakeTheSmallestStepWithTwelveLabels) {
  test::Random random(2);
  for (int round = 0; round < 2000; ++round) {
    const double bars = random.between(0, 6144);
    const auto step = labelEvery(bars);
    EXPECT_TRUE(std::has_single_bit(static_cast<std::uint64_t>(step)));
    EXPECT_LE(bars / static_cast<double>(step), 12);
    if (step > 1) {
      EXPECT_GT(bars / static_cast<double>(step / 2), 12);
    }
  }
}

}  // namespace
}  // namespace orvane
