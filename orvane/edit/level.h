#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "orvane/edit/edit_result.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// 10^(gainDB ÷ 20), computed in double and rounded once.
inline float linearGain(double gainDB) {
  return static_cast<float>(std::pow(10.0, gainDB / 20));
}

/// Multiplies the frames [startFrame, endFrame) by `linearGain`.
ORVANE_API EditResult changeLevel(ChannelArrays channelData, double sampleRate, double gainDB,
                                  std::int64_t startFrame, std::int64_t endFrame);
ORVANE_API void changeLevelInPlace(MutablePlanarView audio, double gainDB, std::int64_t startFrame,
                                   std::int64_t endFrame);

/// Negates the frames [startFrame, endFrame).
ORVANE_API EditResult invertPhase(ChannelArrays channelData, double sampleRate,
                                  std::int64_t startFrame, std::int64_t endFrame);
ORVANE_API void invertPhaseInPlace(MutablePlanarView audio, std::int64_t startFrame,
                                   std::int64_t endFrame);

/// Exchanges the channels of stereo; anything else comes back unchanged.
ORVANE_API EditResult swapChannels(ChannelArrays channelData, double sampleRate);

/// One result per channel, in their order.
ORVANE_API std::vector<EditResult> splitToMono(ChannelArrays channelData, double sampleRate);

// The same for the part of a programme that `slice` holds; `range` lies within the programme.
ORVANE_API void changeLevelOfSlice(const ProgrammeSlice& slice, const FrameRange& range,
                                   double gainDB);
ORVANE_API void invertPhaseOfSlice(const ProgrammeSlice& slice, const FrameRange& range);

}  // namespace orvane::EditOperations
