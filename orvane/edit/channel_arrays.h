#pragma once

#include <cmath>
#include <utility>
#include <vector>

#include "orvane/edit/edit_result.h"
#include "orvane/edit/frame_map.h"
#include "orvane/platform/precondition.h"

namespace orvane::EditOperations {

inline std::int64_t frameCountOf(const ChannelArrays& channels) {
  return channels.empty() ? 0 : static_cast<std::int64_t>(channels.front().size());
}

/// Stops the process where a caller broke the rules of every edit in memory.
inline void requireEqualLengths(const ChannelArrays& channels, double sampleRate) {
  precondition(!std::isnan(sampleRate), "a sample rate is a number");
  for (const auto& channel : channels)
    precondition(channel.size() == channels.front().size(), "all channels have equal length");
}

inline EditResult resultOf(ChannelArrays channels, double sampleRate) {
  const auto count = static_cast<int>(channels.size());
  return {std::move(channels), sampleRate, count};
}

/// `[startFrame, endFrame)` as far as there is audio.
inline FrameRange clampedTo(const PlanarView& audio, std::int64_t startFrame,
                            std::int64_t endFrame) {
  return FrameRange{startFrame, endFrame}.clamped(static_cast<std::int64_t>(audio.frameCount()));
}

/// An edit in place, done to arrays.
template <class Edit>
EditResult edited(ChannelArrays channels, double sampleRate, Edit edit) {
  requireEqualLengths(channels, sampleRate);
  std::vector<float*> pointers;
  for (auto& channel : channels) pointers.push_back(channel.data());
  edit(MutablePlanarView(pointers, static_cast<std::size_t>(frameCountOf(channels))));
  return resultOf(std::move(channels), sampleRate);
}

/// An edit that moves frames, done to arrays of the length that `map` was made for.
EditResult rearranged(ChannelArrays channels, double sampleRate, const FrameMap& map);

}  // namespace orvane::EditOperations
