#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "orvane/audio/audio_source.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// Takes the slices of a source one after another.
using SliceTaker = std::function<void(PlanarView slice)>;

/// Reads the rest of a source in slices of `frames` frames and gives all of them, in order, to each
/// taker, of which there is at least one. The takers run beside each other and beside the reading,
/// each on one thread at a time: whoever of the execution's threads is free does what can be done
/// next. A few slices are in memory at a time, one for a single thread. Only the last slice is
/// shorter than `frames`; what a container promises is not believed. Throws what reading and the
/// takers throw.
ORVANE_TESTING_API void relaySlices(AudioSource& source, std::uint32_t frames,
                                    const Execution& execution, std::span<const SliceTaker> takers);

}  // namespace orvane
