#pragma once

#include <cstdint>
#include <vector>

#include "orvane/edit/edit_result.h"
#include "orvane/edit/fade_curve.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// The gains of a fade over `count` frames, in single precision, with t = i ÷ (max(count, 2) − 1):
///   linear       t
///   logarithmic  log10(9·t + 1)
///   equal power  fading in sin x, fading out cos x, with x = t · 3.1415925 · 0.5
/// and 1 − g for a linear or logarithmic fade out. The constant is one step below π in single
/// precision, so that an equal-power fade out ends just above 0.
ORVANE_API std::vector<float> fadeEnvelope(std::int64_t count, FadeDirection direction,
                                           FadeCurve curve);

/// Multiplies the frames [startFrame, endFrame) by their envelope.
ORVANE_API EditResult fade(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                           std::int64_t endFrame, FadeDirection direction, FadeCurve curve);
ORVANE_API void fadeInPlace(MutablePlanarView audio, std::int64_t startFrame, std::int64_t endFrame,
                            FadeDirection direction, FadeCurve curve);

/// The same for the part of a programme that `slice` holds; `range` lies within the programme.
ORVANE_API void fadeSlice(const ProgrammeSlice& slice, const FrameRange& range,
                          FadeDirection direction, FadeCurve curve);

}  // namespace orvane::EditOperations
