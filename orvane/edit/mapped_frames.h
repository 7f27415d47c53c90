#pragma once

#include <cstdint>

#include "orvane/edit/frame_map.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// Fills `destination` with the frames of an edit's result from `first` on, made of the whole
/// `source` as `map` says. Two pieces that overlap are joined by an equal-power crossfade: with i
/// of n common frames, a = i ÷ n · 3.1415925 · 0.5 in single precision, the gains are cos a and sin
/// a. More than two may not overlap. Any cutting into slices gives the same samples.
ORVANE_TESTING_API void renderMappedFrames(const FrameMap& map, PlanarView source,
                                           std::int64_t first, MutablePlanarView destination);

/// The same in place: `room` begins with the `frameCount` frames of the source, and holds the
/// result too. The map brings every frame forward or leaves it where it is, or brings none forward.
ORVANE_TESTING_API void moveMappedFrames(const FrameMap& map, std::int64_t frameCount,
                                         MutablePlanarView room);

}  // namespace orvane
