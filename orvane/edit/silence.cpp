#include "orvane/edit/silence.h"

#include <algorithm>

#include "orvane/edit/channel_arrays.h"

namespace orvane::EditOperations {
FrameMap silenceMap(std::int64_t frameCount, std::int64_t startFrame, std::int64_t endFrame,
                    SilenceMode mode, std::int64_t durationFrames) {
  if (mode == SilenceMode::replace) return FrameMap::identity(frameCount);
  precondition(durationFrames >= 0, "silence lasts no negative time");
  const auto range = FrameRange{startFrame, endFrame}.clamped(frameCount);
  const std::int64_t at = mode == SilenceMode::insertBefore ? std::min(range.start, frameCount)
                                                            : std::max<std::int64_t>(range.end, 0);
  FrameMap map{.frameCount = frameCount + durationFrames};
  if (at > 0) map.pieces.push_back({.count = at});
  if (at < frameCount)
    map.pieces.push_back(
        {.sourceFirst = at, .count = frameCount - at, .place = at + durationFrames});
  return map;
}

void silenceSlice(const ProgrammeSlice& slice, const FrameRange& range) {
  const auto audio = slice.within(range).audio;
  for (std::size_t c = 0; c < audio.channelCount(); ++c) std::ranges::fill(audio.samples(c), 0.0F);
}

EditResult addSilence(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                      std::int64_t endFrame, SilenceMode mode, std::int64_t durationFrames) {
  if (mode == SilenceMode::replace)
    return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
      silenceSlice({audio}, clampedTo(audio, startFrame, endFrame));
    });
  const auto map =
      silenceMap(frameCountOf(channelData), startFrame, endFrame, mode, durationFrames);
  return rearranged(std::move(channelData), sampleRate, map);
}

}  // namespace orvane::EditOperations
