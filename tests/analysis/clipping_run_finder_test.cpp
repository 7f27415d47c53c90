#include "orvane/analysis/clipping_run_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/random.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::ClippingRun;
using OfflineAnalysisPipeline::kMaximumClippingRuns;

/// Offers one channel in pieces of the given length.
ClippingRunFinder find(const std::vector<float>& samples, std::size_t pieceFrames) {
  ClippingRunFinder finder(1);
  for (std::size_t begin = 0; begin < samples.size(); begin += pieceFrames) {
    const std::size_t count = std::min(pieceFrames, samples.size() - begin);
    float peak = 0;
    for (std::size_t i = 0; i < count; ++i) peak = std::max(peak, std::fabs(samples[begin + i]));
    finder.process(0, samples.data() + begin, begin, count, peak);
  }
  finder.finish();
  return finder;
}

TEST(ClippingRunFinder, FindsRunsAcrossPieces) {
  std::vector<float> samples(100);
  for (std::size_t i = 8; i < 25; ++i) samples[i] = i % 2 == 0 ? 1.0F : -1.0F;
  for (std::size_t i = 90; i < 100; ++i) samples[i] = 0.999F;
  for (const std::size_t piece : {1U, 7U, 10U, 100U}) {
    const auto finder = find(samples, piece);
    EXPECT_EQ(finder.runs, (std::vector<ClippingRun>{{0, 8, 17}, {0, 90, 10}})) << piece;
    EXPECT_EQ(finder.count, 2);
  }
}

TEST(ClippingRunFinder, FindsWhatLookingAtEachSampleFinds) {
  std::vector<float> samples(5000);
  test::Random random(4);
  for (std::size_t i = 0; i < samples.size();) {
    const float value = random.below(2) == 0 ? 0.5F : -1.0F;
    const auto end = std::min(samples.size(), i + 1 + random.below(random.below(4) == 0 ? 300 : 6));
    std::fill(samples.begin() + static_cast<std::ptrdiff_t>(i),
              samples.begin() + static_cast<std::ptrdiff_t>(end), value);
    i = end;
  }
  std::vector<ClippingRun> expected;
  std::int64_t length = 0;
  for (std::size_t i = 0; i <= samples.size(); ++i) {
    if (i < samples.size() && samples[i] == -1.0F) {
      ++length;
      continue;
    }
    if (length >= 3) expected.push_back({0, static_cast<std::int64_t>(i) - length, length});
    length = 0;
  }
  for (const std::size_t piece : {1U, 63U, 64U, 65U, 1000U, 5000U})
    EXPECT_EQ(find(samples, piece).runs, expected) << piece;
}

TEST(ClippingRunFinder, PassesOverOneOrTwoSamples) {
  std::vector<float> samples(20);
  samples[3] = samples[10] = samples[11] = 1.0F;
  EXPECT_EQ(find(samples, 6).count, 0);
}

TEST(ClippingRunFinder, OrdersRunsOfAllChannelsByTime) {
  ClippingRunFinder finder(2);
  const std::vector<float> loud(5, 1.0F), quiet(5, 0.0F);
  finder.process(0, quiet.data(), 0, 5, 0.0F);
  finder.process(1, loud.data(), 0, 5, 1.0F);
  finder.process(0, loud.data(), 5, 5, 1.0F);
  finder.process(1, quiet.data(), 5, 5, 0.0F);
  finder.finish();
  EXPECT_EQ(finder.runs, (std::vector<ClippingRun>{{1, 0, 5}, {0, 5, 5}}));
}

TEST(ClippingRunFinder, CountsRunsBeyondTheList) {
  std::vector<float> samples(4 * (kMaximumClippingRuns + 10));
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i % 4 == 3 ? 0.0F : 1.0F;
  const auto finder = find(samples, 64);
  EXPECT_EQ(finder.runs.size(), kMaximumClippingRuns);
  EXPECT_EQ(finder.count, static_cast<std::int64_t>(kMaximumClippingRuns) + 10);
}

}  // namespace
}  // namespace orvane
