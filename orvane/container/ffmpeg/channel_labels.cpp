#include "orvane/container/ffmpeg/channel_labels.h"

#include <array>
#include <vector>

namespace orvane {
namespace {

/// With both pairs present the back pair is the rear one, as in WAVE masks.
ChannelLabel labelFrom(AVChannel channel, bool hasSidePair) {
  switch (channel) {
    case AV_CHAN_BACK_LEFT:
      return hasSidePair ? ChannelLabel::rearSurroundLeft : ChannelLabel::leftSurround;
    case AV_CHAN_BACK_RIGHT:
      return hasSidePair ? ChannelLabel::rearSurroundRight : ChannelLabel::rightSurround;
    case AV_CHAN_SIDE_LEFT:
      return ChannelLabel::leftSurround;
    case AV_CHAN_SIDE_RIGHT:
      return ChannelLabel::rightSurround;
    case AV_CHAN_STEREO_LEFT:
      return ChannelLabel::leftTotal;
    case AV_CHAN_STEREO_RIGHT:
      return ChannelLabel::rightTotal;
    case AV_CHAN_WIDE_LEFT:
      return ChannelLabel::leftWide;
    case AV_CHAN_WIDE_RIGHT:
      return ChannelLabel::rightWide;
    case AV_CHAN_SURROUND_DIRECT_LEFT:
      return ChannelLabel::leftSurroundDirect;
    case AV_CHAN_SURROUND_DIRECT_RIGHT:
      return ChannelLabel::rightSurroundDirect;
    case AV_CHAN_LOW_FREQUENCY_2:
      return ChannelLabel::lfe2;
    case AV_CHAN_TOP_SIDE_LEFT:
      return ChannelLabel::leftTopMiddle;
    case AV_CHAN_TOP_SIDE_RIGHT:
      return ChannelLabel::rightTopMiddle;
    default:
      break;
  }
  // The first eighteen are numbered as the bits of a WAVE mask, one below their label.
  if (channel >= AV_CHAN_FRONT_LEFT && channel <= AV_CHAN_TOP_BACK_RIGHT)
    return static_cast<ChannelLabel>(static_cast<std::uint32_t>(channel) + 1);
  return ChannelLabel::unknown;
}

/// First-order components in FFmpeg's (ACN) order.
constexpr std::array kAmbisonicLabels{ChannelLabel::ambisonicW, ChannelLabel::ambisonicY,
                                      ChannelLabel::ambisonicZ, ChannelLabel::ambisonicX};

}  // namespace

std::optional<ChannelLayout> channelLayoutFrom(const AVChannelLayout& layout) {
  if (layout.order == AV_CHANNEL_ORDER_UNSPEC) {
    if (layout.nb_channels == 1) return ChannelLayout::fromLabels({ChannelLabel::center});
    if (layout.nb_channels == 2)
      return ChannelLayout::fromLabels({ChannelLabel::left, ChannelLabel::right});
    return std::nullopt;
  }
  if (layout.nb_channels <= 0) return std::nullopt;
  const bool hasSidePair = av_channel_layout_index_from_channel(&layout, AV_CHAN_SIDE_LEFT) >= 0 &&
                           av_channel_layout_index_from_channel(&layout, AV_CHAN_SIDE_RIGHT) >= 0;
  std::vector<ChannelLabel> labels;
  for (unsigned i = 0; i < static_cast<unsigned>(layout.nb_channels); ++i) {
    if (layout.order == AV_CHANNEL_ORDER_AMBISONIC)
      labels.push_back(i < kAmbisonicLabels.size() ? kAmbisonicLabels[i] : ChannelLabel::unknown);
    else
      labels.push_back(labelFrom(av_channel_layout_channel_from_index(&layout, i), hasSidePair));
  }
  return ChannelLayout::fromLabels(std::move(labels));
}

}  // namespace orvane
