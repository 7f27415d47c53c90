#include "orvane/edit/trim_cut.h"

#include <algorithm>

#include "orvane/edit/channel_arrays.h"
#include "orvane/edit/frame_range.h"

namespace orvane::EditOperations {

FrameMap trimMap(std::int64_t frameCount, std::int64_t startFrame, std::int64_t endFrame) {
  const auto kept = FrameRange{startFrame, endFrame}.clamped(frameCount);
  if (kept.isEmpty()) return FrameMap::identity(frameCount);
  return {{{.sourceFirst = kept.start, .count = kept.length()}}, kept.length()};
}

FrameMap cutMap(std::int64_t frameCount, std::int64_t startFrame, std::int64_t endFrame,
                std::int64_t crossfadeFrames) {
  const auto cut = FrameRange{startFrame, endFrame}.clamped(frameCount);
  if (cut.isEmpty() || cut.length() >= frameCount) return FrameMap::identity(frameCount);
  const std::int64_t behind = frameCount - cut.end;
  const std::int64_t crossfade =
      std::max<std::int64_t>(0, std::min({behind, cut.start, crossfadeFrames}));
  FrameMap map{.frameCount = frameCount - cut.length() - crossfade};
  if (cut.start > 0) map.pieces.push_back({.count = cut.start});
  if (behind > 0)
    map.pieces.push_back({.sourceFirst = cut.end, .count = behind, .place = cut.start - crossfade});
  return map;
}

EditResult trim(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                std::int64_t endFrame) {
  const auto map = trimMap(frameCountOf(channelData), startFrame, endFrame);
  return rearranged(std::move(channelData), sampleRate, map);
}

EditResult cutRange(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                    std::int64_t endFrame, std::int64_t crossfadeFrames) {
  const auto map = cutMap(frameCountOf(channelData), startFrame, endFrame, crossfadeFrames);
  return rearranged(std::move(channelData), sampleRate, map);
}

}  // namespace orvane::EditOperations
