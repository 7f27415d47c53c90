#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/analysis/programme_measurement.h"
#include "orvane/core/loudness/loudness_processor.h"

namespace orvane {

/// What the meters say of a stretch, in the units of reports. Levels are minus infinity where they
/// are undefined; arrays have one entry per channel.
struct ProgrammeFigures {
  float integratedLUFS = 0;
  float loudnessRange = 0;     ///< LU
  float truePeakDB = 0;        ///< dBTP
  float samplePeakDB = 0;      ///< dBFS
  float maxMomentaryLUFS = 0;  ///< highest finite value of the history
  float maxShortTermLUFS = 0;  ///< highest finite value of the history
  float speechGatedLUFS = 0;
  float speechPercentage = 0;  ///< 0 … 100
  std::int64_t dynamicRange = 0;
  std::vector<std::int64_t> channelDR{};
  std::vector<float> channelTruePeakDB{};             ///< dBTP
  std::vector<float> channelPeakDB{};                 ///< dBFS, floored at −240
  std::vector<float> channelRMSDB{};                  ///< dBFS, floored at −120
  std::vector<float> channelCrestFactorDB{};          ///< peak − RMS, dB
  std::vector<float> channelDCOffset{};               ///< mean sample value, linear
  std::vector<bool> channelHasClipping{};             ///< peak magnitude 0.999 or more
  std::vector<core::LoudnessHistoryEntry> history{};  ///< one entry per 100 ms
};

/// Reads the meters.
ProgrammeFigures figuresOf(const ProgrammeMeasurement& measurement);

}  // namespace orvane
