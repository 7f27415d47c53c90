#include "orvane/platform/channel_layout.h"

#include <algorithm>
#include <array>
#include <utility>

#include "orvane/platform/channel_layout_tags.h"

namespace orvane {
namespace {

constexpr std::uint32_t kPositionBits = 18;  ///< positions that a WAVE mask can name

constexpr std::uint32_t bitOf(ChannelLabel label) {
  return 1U << (static_cast<std::uint32_t>(label) - 1);
}

constexpr std::uint32_t kSidePair =
    bitOf(ChannelLabel::leftSurroundDirect) | bitOf(ChannelLabel::rightSurroundDirect);

ChannelLabel discreteChannel(std::uint32_t index) {
  return static_cast<ChannelLabel>(static_cast<std::uint32_t>(ChannelLabel::discrete0) + index);
}

bool isDiscreteInOrder(const std::vector<ChannelLabel>& labels) {
  for (std::uint32_t i = 0; i < labels.size(); ++i)
    if (labels[i] != discreteChannel(i)) return false;
  return !labels.empty() && labels.size() <= 0xFFFF;
}

ChannelLayoutTag tagOf(const std::vector<ChannelLabel>& labels) {
  if (isDiscreteInOrder(labels))
    return ChannelLayoutTags::discreteInOrder | static_cast<ChannelLayoutTag>(labels.size());
  if (labels.size() == 1 && labels[0] == ChannelLabel::mono) return ChannelLayoutTags::mono;
  for (const auto& entry : ChannelLayoutTagTable::kTable)
    if (std::ranges::equal(entry.span(), labels)) return entry.tag;
  return ChannelLayoutTags::useChannelDescriptions;
}

/// The position of one mask bit, given the bits that channels really take.
ChannelLabel waveLabel(std::uint32_t bit, std::uint32_t takenBits) {
  using enum ChannelLabel;
  switch (static_cast<ChannelLabel>(bit + 1)) {
    case leftSurround:
      return (takenBits & kSidePair) != 0 ? rearSurroundLeft : leftSurround;
    case rightSurround:
      return (takenBits & kSidePair) != 0 ? rearSurroundRight : rightSurround;
    case leftSurroundDirect:
      return leftSurround;
    case rightSurroundDirect:
      return rightSurround;
    default:
      return static_cast<ChannelLabel>(bit + 1);
  }
}

/// The lowest `count` bits that are set.
std::uint32_t lowestBits(std::uint32_t bits, std::uint32_t count) {
  std::uint32_t kept = 0;
  for (; bits != 0 && count > 0; --count) {
    kept |= bits & (~bits + 1);
    bits &= bits - 1;
  }
  return kept;
}

/// The mask bit of a label; 0 when it has none.
std::uint32_t waveBit(ChannelLabel label, bool hasRearPair) {
  using enum ChannelLabel;
  switch (label) {
    case leftSurround:
      return bitOf(hasRearPair ? leftSurroundDirect : leftSurround);
    case rightSurround:
      return bitOf(hasRearPair ? rightSurroundDirect : rightSurround);
    case rearSurroundLeft:
      return bitOf(leftSurround);
    case rearSurroundRight:
      return bitOf(rightSurround);
    case mono:
      return bitOf(center);
    default:
      break;
  }
  const auto number = static_cast<std::uint32_t>(label);
  return number >= 1 && number <= kPositionBits ? bitOf(label) : 0;
}

/// Bitmap bits above the eighteen of the WAVE mask.
constexpr std::array<std::pair<std::uint32_t, ChannelLabel>, 5> kUpperBitmapBits = {{
    {21, ChannelLabel::leftTopMiddle},
    {23, ChannelLabel::rightTopMiddle},
    {24, ChannelLabel::leftTopRear},
    {25, ChannelLabel::centerTopRear},
    {26, ChannelLabel::rightTopRear},
}};

}  // namespace

std::optional<ChannelLayout> ChannelLayout::fromTag(ChannelLayoutTag tag) {
  constexpr std::uint32_t kIdentifierBits = 0xFFFF0000;
  const std::uint32_t count = tag & 0xFFFF;
  if ((tag & kIdentifierBits) == ChannelLayoutTags::discreteInOrder && count > 0) {
    ChannelLayout layout{tag, {}};
    layout.labels.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) layout.labels.push_back(discreteChannel(i));
    return layout;
  }
  for (const auto& entry : ChannelLayoutTagTable::kTable)
    if (entry.tag == tag) return ChannelLayout{tag, {entry.span().begin(), entry.span().end()}};
  return std::nullopt;
}

ChannelLayout ChannelLayout::fromLabels(std::vector<ChannelLabel> labels) {
  const ChannelLayoutTag tag = tagOf(labels);
  return {tag, std::move(labels)};
}

std::optional<ChannelLayout> ChannelLayout::fromWaveMask(std::uint32_t mask,
                                                         std::uint32_t channelCount) {
  const std::uint32_t taken = lowestBits(mask & ((1U << kPositionBits) - 1), channelCount);
  if (taken == 0) return std::nullopt;
  std::vector<ChannelLabel> labels;
  labels.reserve(channelCount);
  for (std::uint32_t bit = 0; bit < kPositionBits; ++bit)
    if ((taken >> bit & 1) != 0) labels.push_back(waveLabel(bit, taken));
  labels.resize(channelCount, ChannelLabel::unknown);
  return fromLabels(std::move(labels));
}

std::optional<ChannelLayout::WaveOrder> ChannelLayout::waveOrder() const {
  const bool hasRearPair = std::ranges::any_of(labels, [](ChannelLabel label) {
    return label == ChannelLabel::rearSurroundLeft || label == ChannelLabel::rearSurroundRight;
  });
  std::vector<std::pair<std::uint32_t, std::uint32_t>> places;  // bit, channel
  WaveOrder order;
  for (std::uint32_t channel = 0; channel < labels.size(); ++channel) {
    constexpr std::uint32_t kBehindAll = 1U << 31;
    const bool isUnknown = labels[channel] == ChannelLabel::unknown;
    const std::uint32_t bit = isUnknown ? kBehindAll : waveBit(labels[channel], hasRearPair);
    if (bit == 0 || (order.mask & bit) != 0) return std::nullopt;
    if (!isUnknown) order.mask |= bit;
    places.emplace_back(bit, channel);
  }
  if (order.mask == 0) return std::nullopt;
  std::ranges::sort(places);
  for (const auto& place : places) order.channels.push_back(place.second);
  return order;
}

std::optional<std::uint32_t> ChannelLayout::waveMask() const {
  const auto order = waveOrder();
  return order && std::ranges::is_sorted(order->channels) ? std::optional(order->mask)
                                                          : std::nullopt;
}

std::optional<ChannelLayout> ChannelLayout::fromBitmap(std::uint32_t bitmap,
                                                       std::uint32_t channelCount) {
  std::vector<ChannelLabel> labels;
  for (std::uint32_t bit = 0; bit < kPositionBits; ++bit)
    if ((bitmap >> bit & 1) != 0) labels.push_back(static_cast<ChannelLabel>(bit + 1));
  for (const auto& [bit, label] : kUpperBitmapBits)
    if ((bitmap >> bit & 1) != 0) labels.push_back(label);
  if (labels.empty() || channelCount == 0) return std::nullopt;
  labels.resize(channelCount, ChannelLabel::unknown);
  return fromLabels(std::move(labels));
}

std::string shortName(ChannelLabel label) {
  using enum ChannelLabel;
  switch (label) {
    case left:
      return "L";
    case right:
      return "R";
    case center:
      return "C";
    case lfe:
      return "LFE";
    case leftSurround:
      return "Ls";
    case rightSurround:
      return "Rs";
    case leftCenter:
      return "Lc";
    case rightCenter:
      return "Rc";
    case centerSurround:
      return "Cs";
    case leftSurroundDirect:
      return "Lsd";
    case rightSurroundDirect:
      return "Rsd";
    case topCenterSurround:
      return "Ts";
    case verticalHeightLeft:
      return "Vhl";
    case verticalHeightCenter:
      return "Vhc";
    case verticalHeightRight:
      return "Vhr";
    case topBackLeft:
      return "Tbl";
    case topBackCenter:
      return "Tbc";
    case topBackRight:
      return "Tbr";
    case rearSurroundLeft:
      return "Rls";
    case rearSurroundRight:
      return "Rrs";
    case leftWide:
      return "Lw";
    case rightWide:
      return "Rw";
    case lfe2:
      return "LFE2";
    case leftTotal:
      return "Lt";
    case rightTotal:
      return "Rt";
    case hearingImpaired:
      return "HI";
    case narration:
      return "N";
    case mono:
      return "M";
    case dialogCentricMix:
      return "DCM";
    case centerSurroundDirect:
      return "Csd";
    case haptic:
      return "Hap";
    case leftTopMiddle:
      return "Ltm";
    case rightTopMiddle:
      return "Rtm";
    case leftTopRear:
      return "Ltr";
    case centerTopRear:
      return "Ctr";
    case rightTopRear:
      return "Rtr";
    case ambisonicW:
      return "W";
    case ambisonicX:
      return "X";
    case ambisonicY:
      return "Y";
    case ambisonicZ:
      return "Z";
    case midSideMid:
      return "Mid";
    case midSideSide:
      return "Side";
    case xyX:
      return "XYx";
    case xyY:
      return "XYy";
    case binauralLeft:
      return "Bl";
    case binauralRight:
      return "Br";
    case headphonesLeft:
      return "Hl";
    case headphonesRight:
      return "Hr";
    case unused:
    case useCoordinates:
    case discrete:
    case discrete0:
    case unknown:
      break;
  }
  const auto number = static_cast<std::uint32_t>(label);
  const auto first = static_cast<std::uint32_t>(discrete0);
  if (number >= first && number < 2 * first) return "D" + std::to_string(number - first + 1);
  return {};
}

}  // namespace orvane
