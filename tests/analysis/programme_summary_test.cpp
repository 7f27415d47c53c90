#include "orvane/analysis/programme_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

TEST(ChannelNames, AreThoseOfTheLayoutElseOfTheCount) {
  const auto layout =
      ChannelLayout::fromLabels({ChannelLabel::left, ChannelLabel::right, ChannelLabel::lfe});
  EXPECT_THAT(channelNames(layout, 3), Optional(ElementsAre("L", "R", "LFE")));
  EXPECT_THAT(channelNames(layout, 2), Optional(ElementsAre("L", "R")));
  EXPECT_THAT(channelNames(layout, 1), Optional(ElementsAre("Mono")));
  EXPECT_THAT(channelNames(std::nullopt, 2), Optional(ElementsAre("L", "R")));
  EXPECT_EQ(channelNames(std::nullopt, 3), std::nullopt);
  EXPECT_EQ(channelNames(layout, 4), std::nullopt);
}

TEST(ChannelNames, CallALoneChannelMonoUnlessItIsLFE) {
  const auto lone = [](ChannelLabel label) { return ChannelLayout::fromLabels({label}); };
  EXPECT_THAT(channelNames(lone(ChannelLabel::center), 1), Optional(ElementsAre("Mono")));
  EXPECT_THAT(channelNames(lone(ChannelLabel::left), 1), Optional(ElementsAre("Mono")));
  EXPECT_THAT(channelNames(lone(ChannelLabel::lfe), 1), Optional(ElementsAre("LFE")));
  EXPECT_TRUE(isMono(std::nullopt, 1));
  EXPECT_TRUE(isMono(lone(ChannelLabel::center), 1));
  EXPECT_FALSE(isMono(lone(ChannelLabel::lfe), 1));
  EXPECT_FALSE(isMono(std::nullopt, 2));
}

TEST(AudibleCorrelation, LeavesOutWhatCannotBeHeard) {
  OfflineAnalysisPipeline::Result result;
  EXPECT_EQ(audibleCorrelation(result), std::nullopt);
  result.loudnessCurve = {{0.1, -70}, {0.2, -69.9F}, {0.3, -20}};
  result.stereoWidthCurve = {{0.1, -1}, {0.2, 0.5F}, {0.3, 0.25F}, {0.4, -1}};
  EXPECT_EQ(audibleCorrelation(result), (CorrelationSummary{.mean = 0.375F, .lowest = 0.25F}));
  result.loudnessCurve.resize(1);
  EXPECT_EQ(audibleCorrelation(result), std::nullopt);
}

}  // namespace
}  // namespace orvane
