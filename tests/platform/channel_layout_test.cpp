#include "orvane/platform/channel_layout.h"

#include <gtest/gtest.h>

#include <set>

#include "orvane/platform/channel_layout_tags.h"

namespace orvane {
namespace {

using enum ChannelLabel;
using Labels = std::vector<ChannelLabel>;

TEST(ChannelLayoutTag, GivesTheLabelsOfCommonLayouts) {
  const std::pair<ChannelLayoutTag, Labels> cases[] = {
      {ChannelLayoutTags::mono, {center}},
      {ChannelLayoutTags::stereo, {left, right}},
      {ChannelLayoutTags::quadraphonic, {left, right, leftSurround, rightSurround}},
      {ChannelLayoutTags::mpeg30A, {left, right, center}},
      {ChannelLayoutTags::mpeg50A, {left, right, center, leftSurround, rightSurround}},
      {ChannelLayoutTags::mpeg51A, {left, right, center, lfe, leftSurround, rightSurround}},
      {ChannelLayoutTags::mpeg61A,
       {left, right, center, lfe, leftSurround, rightSurround, centerSurround}},
      {ChannelLayoutTags::mpeg71A,
       {left, right, center, lfe, leftSurround, rightSurround, leftCenter, rightCenter}},
      {ChannelLayoutTags::mpeg71C,
       {left, right, center, lfe, leftSurround, rightSurround, rearSurroundLeft,
        rearSurroundRight}},
      {0x00BD0008,
       {left, right, center, lfe, rearSurroundLeft, rearSurroundRight, leftSurround,
        rightSurround}},
      {0x00670002, {leftTotal, rightTotal}},
  };
  for (const auto& [tag, labels] : cases) {
    const auto layout = ChannelLayout::fromTag(tag);
    ASSERT_TRUE(layout) << std::hex << tag;
    EXPECT_EQ(layout->tag, tag);
    EXPECT_EQ(layout->labels, labels) << std::hex << tag;
  }
}

TEST(ChannelLayoutTag, CountsItsLabelsInTheLowBitsAndStandsOnce) {
  std::set<ChannelLayoutTag> seen;
  for (const auto& entry : ChannelLayoutTagTable::kTable) {
    EXPECT_EQ(entry.tag & 0xFFFF, entry.count) << std::hex << entry.tag;
    EXPECT_TRUE(seen.insert(entry.tag).second) << std::hex << entry.tag;
    const std::set<ChannelLabel> labels(entry.span().begin(), entry.span().end());
    EXPECT_EQ(labels.size(), entry.count) << std::hex << entry.tag;
  }
}

TEST(ChannelLayoutTag, RoundTripsThroughLabelsOrAnEqualTag) {
  for (const auto& entry : ChannelLayoutTagTable::kTable) {
    const auto layout = ChannelLayout::fromTag(entry.tag);
    ASSERT_TRUE(layout) << std::hex << entry.tag;
    const auto again = ChannelLayout::fromLabels(layout->labels);
    const auto fromAgain = ChannelLayout::fromTag(again.tag);
    ASSERT_TRUE(fromAgain) << std::hex << entry.tag;
    EXPECT_EQ(fromAgain->labels, layout->labels) << std::hex << entry.tag;
  }
}

TEST(ChannelLayoutTag, DiscreteTagsNumberTheirChannels) {
  const auto layout = ChannelLayout::fromTag(ChannelLayoutTags::discreteInOrder | 7);
  ASSERT_TRUE(layout);
  ASSERT_EQ(layout->labels.size(), 7U);
  EXPECT_EQ(layout->labels[0], discrete0);
  EXPECT_EQ(static_cast<std::uint32_t>(layout->labels[6]), 0x10006U);
  EXPECT_EQ(ChannelLayout::fromLabels(layout->labels), *layout);
}

TEST(ChannelLayoutTag, SpecialUnknownAndForeignTagsHaveNoLayout) {
  EXPECT_FALSE(ChannelLayout::fromTag(ChannelLayoutTags::useChannelDescriptions));
  EXPECT_FALSE(ChannelLayout::fromTag(ChannelLayoutTags::useChannelBitmap));
  EXPECT_FALSE(ChannelLayout::fromTag(ChannelLayoutTags::unknown | 2));
  EXPECT_FALSE(ChannelLayout::fromTag(ChannelLayoutTags::discreteInOrder));
  EXPECT_FALSE(ChannelLayout::fromTag(0x00650003));  // stereo with three channels
  EXPECT_FALSE(ChannelLayout::fromTag(0x7FFF0002));
}

TEST(ChannelLayoutLabels, TakeTheTagThatListsExactlyThem) {
  EXPECT_EQ(ChannelLayout::fromLabels({mono}).tag, ChannelLayoutTags::mono);
  EXPECT_EQ(ChannelLayout::fromLabels({center}).tag, ChannelLayoutTags::mono);
  EXPECT_EQ(ChannelLayout::fromLabels({left, right}).tag, ChannelLayoutTags::stereo);
  EXPECT_EQ(ChannelLayout::fromLabels({left, right, leftSurround, rightSurround}).tag,
            ChannelLayoutTags::quadraphonic);
  EXPECT_EQ(ChannelLayout::fromLabels({right, left}).tag,
            ChannelLayoutTags::useChannelDescriptions);
  EXPECT_EQ(ChannelLayout::fromLabels({}).tag, ChannelLayoutTags::useChannelDescriptions);
}

Labels fromMask(std::uint32_t mask, std::uint32_t channels) {
  const auto layout = ChannelLayout::fromWaveMask(mask, channels);
  return layout ? layout->labels : Labels{};
}

TEST(WaveMask, GivesLabelsInAscendingBitOrder) {
  EXPECT_EQ(fromMask(0x4, 1), (Labels{center}));
  EXPECT_EQ(fromMask(0x3, 2), (Labels{left, right}));
  EXPECT_EQ(fromMask(0xB, 3), (Labels{left, right, lfe}));
  EXPECT_EQ(fromMask(0xFF, 8), (Labels{left, right, center, lfe, leftSurround, rightSurround,
                                       leftCenter, rightCenter}));
  EXPECT_EQ(ChannelLayout::fromWaveMask(0xFF, 8)->tag, ChannelLayoutTags::mpeg71A);
}

TEST(WaveMask, ALonePairOfEitherKindIsTheSurroundPair) {
  const Labels surround = {left, right, center, lfe, leftSurround, rightSurround};
  EXPECT_EQ(fromMask(0x3F, 6), surround);
  EXPECT_EQ(fromMask(0x60F, 6), surround);
  EXPECT_EQ(ChannelLayout::fromWaveMask(0x60F, 6)->tag, ChannelLayoutTags::mpeg51A);
}

TEST(WaveMask, WithBothPairsTheBackPairIsTheRearPair) {
  EXPECT_EQ(fromMask(0x63F, 8), (Labels{left, right, center, lfe, rearSurroundLeft,
                                        rearSurroundRight, leftSurround, rightSurround}));
  EXPECT_EQ(
      fromMask(0x2D63F, 12),
      (Labels{left, right, center, lfe, rearSurroundLeft, rearSurroundRight, leftSurround,
              rightSurround, verticalHeightLeft, verticalHeightRight, topBackLeft, topBackRight}));
}

TEST(WaveMask, ChannelsBeyondTheBitsAreUnknownAndExcessBitsAreIgnored) {
  EXPECT_EQ(fromMask(0x3, 4), (Labels{left, right, unknown, unknown}));
  EXPECT_EQ(fromMask(0x3F, 2), (Labels{left, right}));
  // The side pair is not taken by any of six channels: the back pair stands alone.
  EXPECT_EQ(fromMask(0x63F, 6), (Labels{left, right, center, lfe, leftSurround, rightSurround}));
}

TEST(WaveMask, IsAbsentWhenItNamesNoPosition) {
  EXPECT_FALSE(ChannelLayout::fromWaveMask(0, 2));
  EXPECT_FALSE(ChannelLayout::fromWaveMask(0x80000000, 2));
  EXPECT_FALSE(ChannelLayout::fromWaveMask(0x3, 0));
}

TEST(WaveMask, RoundTripsWithLonePairsOnTheBackBits) {
  const std::pair<std::uint32_t, std::uint32_t> cases[] = {
      {0x4, 1},  {0x3, 2},  {0xB, 3},  {0x7, 3},   {0x33, 4},     {0x107, 4},
      {0x37, 5}, {0x3F, 6}, {0xFF, 8}, {0x63F, 8}, {0x2D63F, 12}, {0x3, 5}};
  for (const auto& [mask, channels] : cases) {
    const auto layout = ChannelLayout::fromWaveMask(mask, channels);
    ASSERT_TRUE(layout) << std::hex << mask;
    EXPECT_EQ(layout->waveMask(), mask) << std::hex << mask;
  }
  EXPECT_EQ(ChannelLayout::fromWaveMask(0x60F, 6)->waveMask(), 0x3FU);
}

TEST(WaveMask, OfLabelsNeedsBitsInAscendingOrder) {
  EXPECT_EQ(ChannelLayout::fromLabels({mono}).waveMask(), 0x4U);
  EXPECT_EQ(
      ChannelLayout::fromLabels({left, right, leftSurroundDirect, rightSurroundDirect}).waveMask(),
      0x603U);
  EXPECT_FALSE(ChannelLayout::fromLabels({right, left}).waveMask());
  EXPECT_FALSE(ChannelLayout::fromLabels({left, left}).waveMask());
  EXPECT_FALSE(ChannelLayout::fromLabels({left, unknown, right}).waveMask());
  EXPECT_FALSE(ChannelLayout::fromLabels({left, right, leftWide, rightWide}).waveMask());
  EXPECT_FALSE(ChannelLayout::fromLabels({unknown, unknown}).waveMask());
  // The canonical 7.1 order has the side pair before the rear pair, against the bits.
  EXPECT_FALSE(ChannelLayout::fromTag(ChannelLayoutTags::mpeg71C)->waveMask());
}

TEST(ChannelBitmap, NamesLabelsWithoutAPairRule) {
  EXPECT_EQ(ChannelLayout::fromBitmap(0x63F, 8)->labels,
            (Labels{left, right, center, lfe, leftSurround, rightSurround, leftSurroundDirect,
                    rightSurroundDirect}));
  EXPECT_EQ(ChannelLayout::fromBitmap(0x3, 3)->labels, (Labels{left, right, unknown}));
  EXPECT_EQ(ChannelLayout::fromBitmap(0x3F, 2)->labels, (Labels{left, right}));
  EXPECT_EQ(
      ChannelLayout::fromBitmap(1U << 21 | 1U << 23 | 1U << 24 | 1U << 25 | 1U << 26, 5)->labels,
      (Labels{leftTopMiddle, rightTopMiddle, leftTopRear, centerTopRear, rightTopRear}));
  EXPECT_FALSE(ChannelLayout::fromBitmap(0, 2));
  EXPECT_FALSE(ChannelLayout::fromBitmap(1U << 20, 2));
  EXPECT_FALSE(ChannelLayout::fromBitmap(3, 0));
}

TEST(ShortName, IsUniqueForEveryPositionAndEmptyForUnknown) {
  std::set<std::string> names;
  std::set<ChannelLabel> labels;
  for (const auto& entry : ChannelLayoutTagTable::kTable)
    labels.insert(entry.span().begin(), entry.span().end());
  for (const ChannelLabel label : labels) {
    const auto name = shortName(label);
    EXPECT_FALSE(name.empty());
    EXPECT_TRUE(names.insert(name).second) << name;
  }
  EXPECT_EQ(shortName(rearSurroundLeft), "Rls");
  EXPECT_EQ(shortName(discrete0), "D1");
  EXPECT_EQ(shortName(static_cast<ChannelLabel>(0x10002)), "D3");
  EXPECT_EQ(shortName(unknown), "");
  EXPECT_EQ(shortName(unused), "");
  EXPECT_EQ(shortName(discrete), "");
}

}  // namespace
}  // namespace orvane
