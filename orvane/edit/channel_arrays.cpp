#include "orvane/edit/channel_arrays.h"

#include "orvane/edit/mapped_frames.h"

namespace orvane::EditOperations {

EditResult rearranged(ChannelArrays channels, double sampleRate, const FrameMap& map) {
  requireEqualLengths(channels, sampleRate);
  if (map == FrameMap::identity(frameCountOf(channels)))
    return resultOf(std::move(channels), sampleRate);
  // One channel after the other, so that no more than one is held twice.
  for (auto& channel : channels) {
    std::vector<float> result(static_cast<std::size_t>(map.frameCount));
    const float* const from = channel.data();
    float* const to = result.data();
    renderMappedFrames(map, PlanarView({&from, 1}, channel.size()), 0,
                       MutablePlanarView({&to, 1}, result.size()));
    channel = std::move(result);
  }
  return resultOf(std::move(channels), sampleRate);
}

}  // namespace orvane::EditOperations
