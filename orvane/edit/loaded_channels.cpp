#include "orvane/edit/loaded_channels.h"

#include <algorithm>
#include <cstdint>

namespace orvane::EditOperations {

ChannelArrays loadChannels(AudioSource& source) {
  constexpr std::int64_t kPieceFrames = 1 << 16;
  source.requireLoadable();
  const std::int64_t frameCount = source.frameLength();
  ChannelArrays channels(source.format().channelCount);
  for (auto& channel : channels) channel.reserve(static_cast<std::size_t>(frameCount));
  const auto piece =
      source.makeBuffer(static_cast<std::uint32_t>(std::min(kPieceFrames, frameCount)));
  do {
    source.read(*piece);
    for (std::uint32_t c = 0; c < piece->channelCount(); ++c)
      channels[c].insert(channels[c].end(), piece->channel(c),
                         piece->channel(c) + piece->frameLength());
  } while (piece->frameLength() == piece->frameCapacity());
  return channels;
}

}  // namespace orvane::EditOperations
