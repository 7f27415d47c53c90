#pragma once

#include <cstdint>

#include "orvane/edit/edit_result.h"
#include "orvane/edit/frame_map.h"
#include "orvane/platform/export.h"

namespace orvane::EditOperations {

enum class SilenceMode {
  insertBefore,  ///< the range: at its start, at most at the end of the audio
  insertAfter,   ///< the range: at its end, at least at the start of the audio
  replace,       ///< the range becomes silence; the length stays and no duration is asked for
};

/// Inserts `durationFrames` of silence, which must not be negative, or silences the range
/// [startFrame, endFrame).
ORVANE_API EditResult addSilence(ChannelArrays channelData, double sampleRate,
                                 std::int64_t startFrame, std::int64_t endFrame, SilenceMode mode,
                                 std::int64_t durationFrames);

/// `SilenceMode::replace` for the part of a programme that `slice` holds; `range` lies within the
/// programme.
ORVANE_API void silenceSlice(const ProgrammeSlice& slice, const FrameRange& range);

/// Where that puts the frames of a programme of `frameCount` frames.
ORVANE_API FrameMap silenceMap(std::int64_t frameCount, std::int64_t startFrame,
                               std::int64_t endFrame, SilenceMode mode,
                               std::int64_t durationFrames);

}  // namespace orvane::EditOperations
