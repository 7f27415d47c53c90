// Regions that stand for the detector gate as its own flags would.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "tests/analysis/raw_programme.h"

namespace orvane {
namespace {

using Flags = std::vector<bool>;

/// The flags that a silent file of that many blocks is measured with.
Flags gated(std::int64_t blocks, const std::vector<DialogueRegion>& regions) {
  constexpr double kRate = 8000;
  const test::RawProgramme programme(kRate,
                                     {test::Channel(static_cast<std::size_t>(blocks) * 800, 0.0F)});
  const auto result = OfflineAnalysisPipeline::analyzeFile(
      programme.path(), programme.options(false), {.dialogueRegions = regions});
  return result.speechHistory.value_or(Flags{});
}

// 0.1 has no exact binary form: three blocks end at 0.30000000000000004 s, which lies a hair beyond
// the third one, and the fourth was gated too.
TEST(DialogueGating, RegionsOfTheDetectorGateExactlyItsBlocks) {
  constexpr std::int64_t kBlocks = 5000;
  std::mt19937 random(20240229);
  Flags history(kBlocks);
  for (auto&& flag : history) flag = random() % 3 != 0;
  EXPECT_EQ(gated(kBlocks, DialogueRegion::fromHistory(history)), history);
}

TEST(DialogueGating, EveryBlockThatARegionReallyTouchesIsGated) {
  const auto at = [](double start, double end) {
    return DialogueRegion(UUID::random(), start, end);
  };
  EXPECT_EQ(gated(6, {at(0.25, 0.31)}), (Flags{false, false, true, true, false, false}));
  EXPECT_EQ(gated(6, {at(0.2, 0.3), at(0.55, 9)}), (Flags{false, false, true, false, false, true}));
  EXPECT_EQ(gated(6, {at(0.2, 0.2), at(0.6, 0.7), at(1e300, 1e308)}), Flags(6, false));
  EXPECT_EQ(gated(6, {}), Flags(6, false));
}

}  // namespace
}  // namespace orvane
