#pragma once

#include <cstdint>

#include "orvane/edit/frame_range.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// A stretch of a programme, and where in it.
struct ProgrammeSlice {
  MutablePlanarView audio{};
  std::int64_t firstFrame = 0;  ///< that `audio` begins with

  /// What of it lies within a range of the programme.
  ProgrammeSlice within(const FrameRange& range) const noexcept {
    const auto held = static_cast<std::int64_t>(audio.frameCount());
    const FrameRange common = range.within({firstFrame, firstFrame + held});
    if (common.isEmpty()) return {};
    return {audio.slice(static_cast<std::size_t>(common.start - firstFrame),
                        static_cast<std::size_t>(common.length())),
            common.start};
  }
};

}  // namespace orvane
