#pragma once

#include <cstdint>

#include "orvane/edit/edit_result.h"
#include "orvane/edit/frame_map.h"
#include "orvane/platform/export.h"

namespace orvane::EditOperations {

/// Keeps only the frames [startFrame, endFrame).
ORVANE_API EditResult trim(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                           std::int64_t endFrame);

/// Removes the frames [startFrame, endFrame) and joins both sides by an equal-power crossfade, as
/// long as asked for and as there is audio on both sides. A cut that covers everything gives the
/// audio unchanged.
ORVANE_API EditResult cutRange(ChannelArrays channelData, double sampleRate,
                               std::int64_t startFrame, std::int64_t endFrame,
                               std::int64_t crossfadeFrames);

// Where these edits put the frames of a programme of `frameCount` frames.
ORVANE_API FrameMap trimMap(std::int64_t frameCount, std::int64_t startFrame,
                            std::int64_t endFrame);
ORVANE_API FrameMap cutMap(std::int64_t frameCount, std::int64_t startFrame, std::int64_t endFrame,
                           std::int64_t crossfadeFrames);

}  // namespace orvane::EditOperations
