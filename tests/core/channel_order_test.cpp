#include "orvane/core/channel_order.h"

#include <gtest/gtest.h>

#include "orvane/core/pcm_buffer_allocation.h"

namespace orvane::core {
namespace {

using enum ChannelLabel;
using Labels = std::vector<ChannelLabel>;
using Weights = std::vector<float>;

/// A buffer whose every sample of stored channel c is c.
std::shared_ptr<PCMBuffer> numbered(std::optional<ChannelLayout> layout, std::uint32_t channels) {
  auto buffer = PCMBufferAllocation::make(
      {.sampleRate = 48000, .channelCount = channels, .layout = std::move(layout)}, 4);
  buffer->setFrameLength(3);
  for (std::uint32_t c = 0; c < channels; ++c)
    std::fill_n(buffer->channel(c), 3, static_cast<float>(c));
  return buffer;
}

std::shared_ptr<PCMBuffer> labelled(const Labels& labels) {
  return numbered(ChannelLayout::fromLabels(labels), static_cast<std::uint32_t>(labels.size()));
}

/// Which stored channel stands at each place.
std::vector<int> order(const PCMBuffer& buffer) {
  std::vector<int> stored;
  for (std::uint32_t c = 0; c < buffer.channelCount(); ++c)
    stored.push_back(static_cast<int>(buffer.channel(c)[2]));
  return stored;
}

TEST(Canonicalize, ReordersByLabels) {
  // C L R Ls Rs LFE, as MPEG 5.1 D stores it.
  const auto buffer = ChannelOrder::canonicalize(numbered(ChannelLayout::fromTag(0x007C0006), 6));
  EXPECT_EQ(order(*buffer), (std::vector<int>{1, 2, 0, 5, 3, 4}));
  EXPECT_EQ(buffer->format().layout, ChannelLayout::fromTag(ChannelLayoutTags::mpeg51A));
}

TEST(Canonicalize, PutsTheSidePairBeforeTheRearPair) {
  const auto buffer =
      ChannelOrder::canonicalize(numbered(ChannelLayout::fromWaveMask(0x63F, 8), 8));
  EXPECT_EQ(order(*buffer), (std::vector<int>{0, 1, 2, 3, 6, 7, 4, 5}));
  EXPECT_EQ(buffer->format().layout->tag, ChannelLayoutTags::mpeg71C);
}

TEST(Canonicalize, PutsCentresWidesAndHeightsBehindAndUnlabelledOnesLastAsTheyCome) {
  const auto buffer = ChannelOrder::canonicalize(
      labelled({unknown, rightTopRear, leftTotal, rightWide, verticalHeightLeft, centerSurround,
                discrete0, rightCenter, leftCenter, topBackLeft, right, leftWide, left}));
  EXPECT_EQ(buffer->format().layout->labels,
            (Labels{left, right, leftCenter, rightCenter, centerSurround, leftWide, rightWide,
                    verticalHeightLeft, topBackLeft, rightTopRear, unknown, leftTotal, discrete0}));
  EXPECT_EQ(order(*buffer), (std::vector<int>{12, 10, 8, 7, 5, 11, 3, 4, 9, 1, 0, 2, 6}));
}

TEST(Canonicalize, KeepsFramesChannelCountAndTheBufferItself) {
  const auto buffer = labelled({right, left});
  EXPECT_EQ(ChannelOrder::canonicalize(buffer), buffer);
  EXPECT_EQ(buffer->frameLength(), 3U);
  EXPECT_EQ(buffer->channelCount(), 2U);
  EXPECT_EQ(order(*buffer), (std::vector<int>{1, 0}));
}

TEST(Canonicalize, NeverGuessesForABufferWithoutALayout) {
  const auto buffer = ChannelOrder::canonicalize(numbered(std::nullopt, 6));
  EXPECT_EQ(order(*buffer), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  EXPECT_FALSE(buffer->format().layout);
}

TEST(Canonicalize, LeavesALayoutOfAnotherChannelCountAlone) {
  const auto layout = ChannelLayout::fromLabels({right, left});
  const auto buffer = ChannelOrder::canonicalize(numbered(layout, 3));
  EXPECT_EQ(order(*buffer), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(buffer->format().layout, layout);
}

TEST(Canonicalize, LeavesADiscreteLayoutAlone) {
  const auto layout = ChannelLayout::fromTag(ChannelLayoutTags::discreteInOrder | 7);
  const auto buffer = ChannelOrder::canonicalize(numbered(layout, 7));
  EXPECT_EQ(order(*buffer), (std::vector<int>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(buffer->format().layout, layout);
}

TEST(Canonicalize, KeepsRepeatedLabelsInTheirOrder) {
  const auto buffer = ChannelOrder::canonicalize(labelled({right, left, right, left}));
  EXPECT_EQ(order(*buffer), (std::vector<int>{1, 3, 0, 2}));
}

TEST(Canonicalize, PassesANullBufferOn) {
  EXPECT_EQ(ChannelOrder::canonicalize(nullptr), nullptr);
}

TEST(BS1770Weights, FollowTheLabels) {
  EXPECT_EQ(ChannelOrder::bs1770Weights(*labelled({left, right})), (Weights{1, 1}));
  EXPECT_EQ(ChannelOrder::bs1770Weights(
                *labelled({center, left, right, leftSurround, rightSurround, lfe})),
            (Weights{1, 1, 1, 1.41F, 1.41F, 0}));
  EXPECT_EQ(ChannelOrder::bs1770Weights(*labelled(
                {left, right, leftWide, rightWide, lfe2, verticalHeightLeft, topBackRight})),
            (Weights{1, 1, 1.41F, 1.41F, 0, 1, 1}));
  EXPECT_EQ(ChannelOrder::bs1770Weights(*labelled({leftCenter, centerSurround, unknown})),
            (Weights{1, 1, 1}));
}

TEST(BS1770Weights, ARearPairWeighsMoreOnlyWhenItIsTheOnlySurroundPair) {
  EXPECT_EQ(
      ChannelOrder::bs1770Weights(*labelled({left, right, rearSurroundLeft, rearSurroundRight})),
      (Weights{1, 1, 1.41F, 1.41F}));
  EXPECT_EQ(ChannelOrder::bs1770Weights(*numbered(ChannelLayout::fromWaveMask(0x63F, 8), 8)),
            (Weights{1, 1, 1, 0, 1, 1, 1.41F, 1.41F}));
  EXPECT_EQ(ChannelOrder::bs1770Weights(*labelled(
                {rearSurroundLeft, rearSurroundRight, leftSurroundDirect, rightSurroundDirect})),
            (Weights{1, 1, 1.41F, 1.41F}));
}

TEST(BS1770Weights, AreAbsentWithoutAFittingLayout) {
  EXPECT_FALSE(ChannelOrder::bs1770Weights(*numbered(std::nullopt, 2)));
  EXPECT_FALSE(ChannelOrder::bs1770Weights(*numbered(ChannelLayout::fromLabels({left, right}), 3)));
}

TEST(BS1770Weights, AreOneForEachDiscreteChannel) {
  const auto layout = ChannelLayout::fromTag(ChannelLayoutTags::discreteInOrder | 6);
  EXPECT_EQ(ChannelOrder::bs1770Weights(*numbered(layout, 6)), Weights(6, 1.0F));
}

TEST(DefaultWeights, FollowTheChannelCount) {
  const float s = 1.41F;
  EXPECT_EQ(ChannelOrder::defaultWeights(0), Weights{});
  EXPECT_EQ(ChannelOrder::defaultWeights(1), (Weights{1}));
  EXPECT_EQ(ChannelOrder::defaultWeights(2), (Weights{1, 1}));
  EXPECT_EQ(ChannelOrder::defaultWeights(3), (Weights{1, 1, 1}));
  EXPECT_EQ(ChannelOrder::defaultWeights(4), (Weights{1, 1, s, s}));
  EXPECT_EQ(ChannelOrder::defaultWeights(5), (Weights{1, 1, 1, s, s}));
  EXPECT_EQ(ChannelOrder::defaultWeights(6), (Weights{1, 1, 1, 0, s, s}));
  EXPECT_EQ(ChannelOrder::defaultWeights(7), (Weights{1, 1, 1, 0, s, s, 1}));
  EXPECT_EQ(ChannelOrder::defaultWeights(8), (Weights{1, 1, 1, 0, s, s, 1, 1}));
  EXPECT_EQ(ChannelOrder::defaultWeights(9), Weights(9, 1.0F));
  EXPECT_EQ(ChannelOrder::defaultWeights(64), Weights(64, 1.0F));
}

TEST(PermutationToCanonical, GivesOneCanonicalIndexPerSourceChannel) {
  // C L R Ls Rs LFE: C goes to place 2, L to 0 …
  EXPECT_EQ(ChannelOrder::permutationToCanonical(
                {center, left, right, leftSurround, rightSurround, lfe}, 6),
            (std::vector<std::uint32_t>{2, 0, 1, 4, 5, 3}));
  EXPECT_FALSE(ChannelOrder::permutationToCanonical({left, right}, 3));
  EXPECT_FALSE(ChannelOrder::permutationToCanonical({}, 2));
}

TEST(PermutationToCanonical, UndoesCanonicalize) {
  const Labels labels = {unknown, lfe, rearSurroundLeft, right, discrete0, left, left};
  const auto buffer = ChannelOrder::canonicalize(labelled(labels));
  const auto places = ChannelOrder::permutationToCanonical(labels, 7);
  ASSERT_TRUE(places);
  for (std::uint32_t c = 0; c < 7; ++c)
    EXPECT_EQ(buffer->channel((*places)[c])[0], static_cast<float>(c));
}

TEST(ChannelLabels, ComeFromTheTagWhenNoneAreListed) {
  EXPECT_EQ(ChannelOrder::channelLabels({ChannelLayoutTags::stereo, {}}), (Labels{left, right}));
  EXPECT_EQ(ChannelOrder::channelLabels({ChannelLayoutTags::stereo, {right, left}}),
            (Labels{right, left}));
  EXPECT_TRUE(ChannelOrder::channelLabels({ChannelLayoutTags::unknown | 2, {}}).empty());
}

TEST(DisplayShortNames, NumberChannelsWithoutAName) {
  EXPECT_EQ(
      ChannelOrder::displayShortNames(ChannelLayout::fromLabels({left, lfe, unknown, discrete0})),
      (std::vector<std::string>{"L", "LFE", "Ch 3", "D1"}));
}

TEST(LoudspeakerNamed, UndoesShortNames) {
  for (const auto label :
       {left, lfe, rearSurroundRight, centerSurroundDirect, leftTopRear, lfe2, mono, rightTotal})
    EXPECT_EQ(ChannelOrder::loudspeakerNamed(shortName(label)), label) << shortName(label);
  EXPECT_EQ(ChannelOrder::loudspeakerNamed("Boom"), std::nullopt);
  EXPECT_EQ(ChannelOrder::loudspeakerNamed(""), std::nullopt);
}

}  // namespace
}  // namespace orvane::core
