#include "orvane/core/channel_order.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace orvane::core::ChannelOrder {
namespace {

using enum ChannelLabel;

constexpr ChannelLabel kCanonicalOrder[] = {left,
                                            right,
                                            center,
                                            lfe,
                                            leftSurround,
                                            rightSurround,
                                            rearSurroundLeft,
                                            rearSurroundRight,
                                            leftCenter,
                                            rightCenter,
                                            centerSurround,
                                            leftSurroundDirect,
                                            rightSurroundDirect,
                                            centerSurroundDirect,
                                            leftWide,
                                            rightWide,
                                            topCenterSurround,
                                            verticalHeightLeft,
                                            verticalHeightCenter,
                                            verticalHeightRight,
                                            topBackLeft,
                                            topBackCenter,
                                            topBackRight,
                                            leftTopMiddle,
                                            rightTopMiddle,
                                            leftTopRear,
                                            centerTopRear,
                                            rightTopRear,
                                            lfe2};

/// About 1.5 dB more for what comes from the side or behind (BS.1770-5, Annex 1, table 3).
constexpr float kSurroundWeight = 1.41F;

std::ptrdiff_t rankOf(ChannelLabel label) {
  const ChannelLabel position = label == mono ? center : label;
  return std::distance(std::begin(kCanonicalOrder), std::ranges::find(kCanonicalOrder, position));
}

/// Which source channel stands at each canonical place. Stable, so that channels without a position
/// and repeated labels keep their order.
std::vector<std::uint32_t> canonicalSources(const std::vector<ChannelLabel>& labels) {
  std::vector<std::uint32_t> sources(labels.size());
  std::iota(sources.begin(), sources.end(), 0U);
  std::ranges::stable_sort(sources, {}, [&](std::uint32_t c) { return rankOf(labels[c]); });
  return sources;
}

bool isSidePosition(ChannelLabel label) {
  return label == leftSurround || label == rightSurround || label == leftSurroundDirect ||
         label == rightSurroundDirect;
}

float weightOf(ChannelLabel label, bool hasSides) {
  switch (label) {
    case lfe:
    case lfe2:
      return 0;
    case leftSurround:
    case rightSurround:
    case leftSurroundDirect:
    case rightSurroundDirect:
    case leftWide:
    case rightWide:
      return kSurroundWeight;
    case rearSurroundLeft:
    case rearSurroundRight:
      return hasSides ? 1.0F : kSurroundWeight;
    default:
      return 1;
  }
}

std::vector<float> weightsOf(const std::vector<ChannelLabel>& labels) {
  const bool hasSides = std::ranges::any_of(labels, isSidePosition);
  std::vector<float> weights;
  weights.reserve(labels.size());
  for (const ChannelLabel label : labels) weights.push_back(weightOf(label, hasSides));
  return weights;
}

/// The labels of a format's layout; absent unless they list exactly its channels.
std::optional<std::vector<ChannelLabel>> labelsOf(const AudioFormat& format) {
  if (!format.layout) return std::nullopt;
  auto labels = channelLabels(*format.layout);
  if (labels.size() != format.channelCount) return std::nullopt;
  return labels;
}

}  // namespace

std::shared_ptr<PCMBuffer> canonicalize(std::shared_ptr<PCMBuffer> buffer) {
  if (!buffer) return buffer;
  const auto labels = labelsOf(buffer->format());
  if (!labels) return buffer;
  const auto sources = canonicalSources(*labels);
  if (std::ranges::is_sorted(sources)) return buffer;
  std::vector<ChannelLabel> ordered;
  ordered.reserve(sources.size());
  for (const std::uint32_t source : sources) ordered.push_back((*labels)[source]);
  buffer->permuteChannels(sources, ChannelLayout::fromLabels(std::move(ordered)));
  return buffer;
}

std::optional<std::vector<float>> bs1770Weights(const PCMBuffer& buffer) {
  return bs1770Weights(buffer.format());
}

std::optional<std::vector<float>> bs1770Weights(const AudioFormat& format) {
  const auto labels = labelsOf(format);
  if (!labels) return std::nullopt;
  return weightsOf(*labels);
}

std::vector<float> defaultWeights(std::uint32_t channelCount) {
  switch (channelCount) {
    case 4:
      return weightsOf({left, right, leftSurround, rightSurround});
    case 5:
      return weightsOf({left, right, center, leftSurround, rightSurround});
    case 6:
      return weightsOf({left, right, center, lfe, leftSurround, rightSurround});
    case 7:
      return weightsOf({left, right, center, lfe, leftSurround, rightSurround, centerSurround});
    case 8:
      return weightsOf({left, right, center, lfe, leftSurround, rightSurround, rearSurroundLeft,
                        rearSurroundRight});
    default:
      return std::vector<float>(channelCount, 1.0F);
  }
}

std::vector<ChannelLabel> channelLabels(const ChannelLayout& layout) {
  if (!layout.labels.empty()) return layout.labels;
  auto tagged = ChannelLayout::fromTag(layout.tag);
  return tagged ? std::move(tagged->labels) : std::vector<ChannelLabel>{};
}

std::optional<std::vector<std::uint32_t>> permutationToCanonical(
    const std::vector<ChannelLabel>& sourceLabels, std::uint32_t channelCount) {
  if (sourceLabels.size() != channelCount) return std::nullopt;
  const auto sources = canonicalSources(sourceLabels);
  std::vector<std::uint32_t> places(sources.size());
  for (std::uint32_t place = 0; place < sources.size(); ++place) places[sources[place]] = place;
  return places;
}

std::vector<std::string> displayShortNames(const ChannelLayout& layout) {
  std::vector<std::string> names;
  for (const ChannelLabel label : channelLabels(layout)) {
    const std::string name = shortName(label);
    names.push_back(name.empty() ? "Ch " + std::to_string(names.size() + 1) : name);
  }
  return names;
}

std::optional<ChannelLabel> loudspeakerNamed(std::string_view shortName) {
  const auto isMeant = [shortName](ChannelLabel label) {
    return orvane::shortName(label) == shortName;
  };
  for (const ChannelLabel label : {mono, leftTotal, rightTotal})  // without a place of their own
    if (isMeant(label)) return label;
  const auto* const found = std::ranges::find_if(kCanonicalOrder, isMeant);
  return found == std::end(kCanonicalOrder) ? std::nullopt : std::optional(*found);
}

}  // namespace orvane::core::ChannelOrder
