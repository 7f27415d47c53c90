#pragma once

#include "orvane/edit/edit_result.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// Lowers the audio around each true peak that exceeds the ceiling (linear, above 0), with a
/// look-ahead of 5 ms and a release of 100 ms, and scales all of it where that leaves a peak above
/// the ceiling: `core::TruePeakMeter` then reads no more than it below 96 kHz, the filter's tail
/// included. Peaks are looked for at four times the rate, whatever the rate is. Samples that are
/// not finite become 0. Whether anything changed: audio below the ceiling stays as it is, bit for
/// bit. Throws `Cancelled`, with part of the audio limited.
ORVANE_API bool applyTruePeakLimiter(MutablePlanarView audio, float ceiling, double sampleRate,
                                     const Execution& execution = {});

/// The same to a ceiling of 10^(ceilingDBTP ÷ 20).
ORVANE_API EditResult limitTruePeak(ChannelArrays channelData, double sampleRate,
                                    double ceilingDBTP, const Execution& execution = {});

}  // namespace orvane::EditOperations
