#include "orvane/speech/dialogue/dialogue_region.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace orvane {
namespace {

using Flags = std::vector<bool>;
using BlockRange = DialogueRegion::BlockRange;

constexpr double kBlock = DialogueRegion::blockDuration;

DialogueRegion region(double start, double end) {
  return {UUID::random(), start, end};
}

DialogueRegion detected(double start, double end, double fromStart, double fromEnd) {
  return {UUID::random(), start, end, std::nullopt,
          ClosedTimeRange{.lowerBound = fromStart, .upperBound = fromEnd}};
}

TEST(DialogueRegion, PutsSwappedEdgesRight) {
  const auto swapped = region(3.0, 1.0);
  EXPECT_EQ(swapped.start, 1.0);
  EXPECT_EQ(swapped.end, 3.0);
  EXPECT_EQ(swapped.duration(), 2.0);
  EXPECT_EQ(swapped.label, std::nullopt);
  EXPECT_EQ(swapped.vadOrigin, std::nullopt);
}

TEST(DialogueRegion, EqualityAndHashCoverEveryField) {
  const UUID id = UUID::random();
  const DialogueRegion first(id, 1, 2, "a", ClosedTimeRange{1, 2});
  EXPECT_EQ(first, DialogueRegion(id, 1, 2, "a", ClosedTimeRange{1, 2}));
  const std::hash<DialogueRegion> hash;
  EXPECT_EQ(hash(first), hash(DialogueRegion(id, 1, 2, "a", ClosedTimeRange{1, 2})));
  for (const auto& other :
       {DialogueRegion(UUID::random(), 1, 2, "a", ClosedTimeRange{1, 2}),
        DialogueRegion(id, 0, 2, "a", ClosedTimeRange{1, 2}),
        DialogueRegion(id, 1, 3, "a", ClosedTimeRange{1, 2}),
        DialogueRegion(id, 1, 2, "b", ClosedTimeRange{1, 2}),
        DialogueRegion(id, 1, 2, std::nullopt, ClosedTimeRange{1, 2}),
        DialogueRegion(id, 1, 2, "a", ClosedTimeRange{1, 3}), DialogueRegion(id, 1, 2, "a")}) {
    EXPECT_NE(first, other);
    EXPECT_NE(hash(first), hash(other));
  }
}

TEST(DialogueRegion, IsPristineUntilAnEdgeMovesByAMillisecond) {
  EXPECT_TRUE(detected(2.0, 3.0, 2.0, 3.0).isPristineVAD());
  EXPECT_TRUE(detected(2.0005, 3.0, 2.0, 3.0).isPristineVAD());
  EXPECT_TRUE(detected(2.0, 2.9995, 2.0, 3.0).isPristineVAD());
  EXPECT_TRUE(detected(0.001, 1.0, 0.0, 1.0).isModifiedVAD());
  EXPECT_TRUE(detected(-1.0, 0.001, -1.0, 0.0).isModifiedVAD());
  EXPECT_TRUE(detected(1.0, 2.0, 1.0, 2.0 + 1.0 / 512).isModifiedVAD());
  EXPECT_TRUE(detected(2.1, 3.1, 2.0, 3.0).isModifiedVAD());
}

TEST(DialogueRegion, IsExactlyOneOfManualPristineAndModified) {
  for (const auto& each : {region(0, 1), detected(0, 1, 0, 1), detected(0, 1, 0, 2)})
    EXPECT_EQ(each.isManual() + each.isPristineVAD() + each.isModifiedVAD(), 1);
  EXPECT_TRUE(region(0, 1).isManual());
}

TEST(DialogueRegion, CoversEveryBlockThatItTouches) {
  EXPECT_EQ(region(0.25, 0.31).blockRange(kBlock, 100), (BlockRange{2, 3}));
  EXPECT_EQ(region(0.2, 0.3).blockRange(kBlock, 100), (BlockRange{2, 2}));
  EXPECT_EQ(region(-5, 0.05).blockRange(kBlock, 100), (BlockRange{0, 0}));
  EXPECT_EQ(region(9.95, 50).blockRange(kBlock, 100), (BlockRange{99, 99}));
  EXPECT_EQ(region(-1e308, 1e308).blockRange(kBlock, 100), (BlockRange{0, 99}));
  EXPECT_EQ(region(0.25, 0.31).blockRange(0.25, 100), (BlockRange{1, 1}));
}

TEST(DialogueRegion, CoversNothingWithoutLengthOrOutsideTheFile) {
  EXPECT_EQ(region(0.2, 0.2).blockRange(kBlock, 100), std::nullopt);
  EXPECT_EQ(region(0, 0).blockRange(kBlock, 100), std::nullopt);
  EXPECT_EQ(region(10.0, 11.0).blockRange(kBlock, 100), std::nullopt);
  EXPECT_EQ(region(1e308, 1e308).blockRange(kBlock, 100), std::nullopt);
  EXPECT_EQ(region(-2.0, -1.0).blockRange(kBlock, 100), std::nullopt);
  EXPECT_EQ(region(0, 1).blockRange(kBlock, 0), std::nullopt);
  EXPECT_EQ(region(0, 1).blockRange(kBlock, -3), std::nullopt);
}

TEST(DialogueRegion, AZeroLengthInsideABlockTouchesIt) {
  EXPECT_EQ(region(0.25, 0.25).blockRange(kBlock, 100), (BlockRange{2, 2}));
}

TEST(DialogueRegionDeathTest, ATimeThatIsNotFiniteIsAProgrammingError) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_DEATH((void)region(0, kInfinity).blockRange(kBlock, 1), "finite");
  EXPECT_DEATH((void)region(-kInfinity, 0).blockRange(kBlock, 1), "finite");
  EXPECT_DEATH((void)region(std::nan(""), 1).blockRange(kBlock, 1), "finite");
  EXPECT_DEATH((void)DialogueRegion::sliceHistory({true}, 0, 1, kInfinity), "finite");
  EXPECT_DEATH((void)DialogueRegion::sliceHistory({true}, 0, 1, std::nan("")), "finite");
}

TEST(DialogueRegion, HistoryIsTrueWhereARegionLies) {
  EXPECT_EQ(DialogueRegion::toHistory({region(0.1, 0.3), region(0.15, 0.32), region(7, 8)}, 5),
            (Flags{false, true, true, true, false}));
  EXPECT_EQ(DialogueRegion::toHistory({region(0.5, 0.6)}, 5), Flags(5, false));
  EXPECT_EQ(DialogueRegion::toHistory({}, 2), Flags(2, false));
  EXPECT_EQ(DialogueRegion::toHistory({region(0, 1)}, 2, 0.5), Flags(2, true));
}

// Three blocks end at 0.30000000000000004 s; whoever wants that edge to mean the block's end moves
// it inwards, as the analysis does.
TEST(DialogueRegion, AnEdgeAHairBehindABlockTouchesTheNextOne) {
  EXPECT_EQ(DialogueRegion::toHistory({region(0, 0.3)}, 5),
            (Flags{true, true, true, false, false}));
  EXPECT_EQ(DialogueRegion::toHistory({region(0, 3 * 0.1)}, 5),
            (Flags{true, true, true, true, false}));
}

TEST(DialogueRegion, AHistoryOfNoBlocksIsEmpty) {
  EXPECT_TRUE(DialogueRegion::toHistory({region(0, 1)}, 0).empty());
  EXPECT_TRUE(DialogueRegion::toHistory({region(0, 1)}, -1).empty());
}

TEST(DialogueRegion, EveryRunBecomesAPristineRegion) {
  const auto regions = DialogueRegion::fromHistory({false, true, true, false, true}, 0.1);
  ASSERT_EQ(regions.size(), 2U);
  EXPECT_DOUBLE_EQ(regions[0].start, 0.1);
  EXPECT_DOUBLE_EQ(regions[0].end, 0.3);
  EXPECT_DOUBLE_EQ(regions[1].start, 0.4);
  EXPECT_DOUBLE_EQ(regions[1].end, 0.5);
  EXPECT_NE(regions[0].id, regions[1].id);
  for (const auto& each : regions) {
    EXPECT_TRUE(each.isPristineVAD());
    EXPECT_EQ(each.vadOrigin, (ClosedTimeRange{each.start, each.end}));
    EXPECT_EQ(each.label, std::nullopt);
  }
  EXPECT_TRUE(DialogueRegion::fromHistory({}).empty());
  EXPECT_TRUE(DialogueRegion::fromHistory(Flags(9, false)).empty());
}

// 0.1 has no exact binary form, so the edge of a run may land a hair beyond its block: the
// neighbouring block then counts as touched, but no flag is ever lost.
TEST(DialogueRegion, HistoriesComeBackFromTheirRegionsWithNoFlagLost) {
  std::mt19937 random(20240229);
  for (const std::int64_t count : {1, 2, 63, 64, 65, 1000, 360'000}) {
    Flags history(static_cast<std::size_t>(count));
    for (auto&& flag : history) flag = random() % 3 != 0;
    const auto back = DialogueRegion::toHistory(DialogueRegion::fromHistory(history), count);
    for (std::size_t i = 0; i < history.size(); ++i) {
      const bool hasNeighbour =
          (i > 0 && history[i - 1]) || (i + 1 < history.size() && history[i + 1]);
      EXPECT_TRUE(history[i] ? back[i] : !back[i] || hasNeighbour) << i;
    }
  }
}

TEST(DialogueRegion, HistoriesComeBackExactlyWhereTheBlockIsABinaryFraction) {
  std::mt19937 random(20240301);
  Flags history(100'000);
  for (auto&& flag : history) flag = random() % 3 != 0;
  EXPECT_EQ(DialogueRegion::toHistory(DialogueRegion::fromHistory(history, 0.125), 100'000, 0.125),
            history);
}

TEST(DialogueRegion, SliceRoundsTheStartAndCoversTheLength) {
  const Flags history{false, true, false, true, true};
  const auto slice = [&](std::int64_t start, std::int64_t count) {
    return DialogueRegion::sliceHistory(history, start, count, 48000);
  };
  EXPECT_EQ(slice(0, 24000), history);
  EXPECT_EQ(slice(0, 1'000'000), history);
  EXPECT_EQ(slice(-100, 24000), history);
  EXPECT_EQ(slice(4800, 4800), Flags{true});
  EXPECT_EQ(slice(4800, 4801), (Flags{true, false}));
  EXPECT_EQ(slice(2399, 1), Flags{false});
  EXPECT_EQ(slice(2400, 1), Flags{true}) << "halves round away from zero";
  EXPECT_EQ(slice(19200, 90000), Flags{true});
  EXPECT_EQ(slice(0, INT64_MAX), history);
}

TEST(DialogueRegion, SliceOfOneFrameIsOneFlag) {
  EXPECT_EQ(DialogueRegion::sliceHistory({true, false}, 0, 1, 48000), Flags{true});
}

TEST(DialogueRegion, SliceIsAbsentOutsideTheHistoryAndWithoutFrames) {
  const Flags history(5, true);
  EXPECT_EQ(DialogueRegion::sliceHistory(history, 24000, 10, 48000), std::nullopt);
  EXPECT_EQ(DialogueRegion::sliceHistory(history, 21600, 10, 48000), std::nullopt);
  EXPECT_EQ(DialogueRegion::sliceHistory(history, INT64_MAX, 10, 48000), std::nullopt);
  EXPECT_EQ(DialogueRegion::sliceHistory({}, 0, 10, 48000), std::nullopt);
  EXPECT_EQ(DialogueRegion::sliceHistory(history, 0, 0, 48000), std::nullopt);
  EXPECT_EQ(DialogueRegion::sliceHistory(history, 0, -1, 48000), std::nullopt);
  EXPECT_EQ(DialogueRegion::sliceHistory(history, 0, 10, 0), std::nullopt);
  EXPECT_EQ(DialogueRegion::sliceHistory(history, 0, 10, -1), std::nullopt);
}

TEST(DialogueRegion, SliceTakesABlockOfLessThanOneFrameAsOneFrame) {
  EXPECT_EQ(DialogueRegion::sliceHistory({true, false, true}, 1, 2, 2), (Flags{false, true}));
}

TEST(DialogueRegionSource, HasItsFixedTexts) {
  for (const auto& [source, text] : {std::pair{DialogueRegionSource::silero, "silero"},
                                     std::pair{DialogueRegionSource::userEdited, "user-edited"},
                                     std::pair{DialogueRegionSource::imported, "imported"}}) {
    EXPECT_EQ(rawValue(source), text);
    EXPECT_EQ(dialogueRegionSourceFromRawValue(text), source);
  }
  for (const char* text : {"", "manual", "Silero", "userEdited", "silero "})
    EXPECT_EQ(dialogueRegionSourceFromRawValue(text), std::nullopt);
}

}  // namespace
}  // namespace orvane
