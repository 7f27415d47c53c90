#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/core/time_range.h"

namespace orvane {

/// What was measured of a stretch of a file. Arrays per channel are in canonical channel order, one
/// entry for each channel. Levels are minus infinity where they are undefined.
struct SelectionAnalysisResult {
  /// One point of a curve over time. `lufs` holds a true-peak level in the true-peak curve.
  struct TimedLevel {
    double time = 0;  ///< seconds from the start of the file
    float lufs = 0;

    bool operator==(const TimedLevel&) const = default;
  };

  struct MidSideMagnitudes {
    std::vector<float> mid{};
    std::vector<float> side{};

    bool operator==(const MidSideMagnitudes&) const = default;
  };

  ClosedTimeRange timeRange{};               ///< seconds from the start of the file
  std::vector<float> peakDB{};               ///< dBFS
  std::vector<float> truePeakDBByChannel{};  ///< dBTP
  std::vector<float> rmsDB{};                ///< dBFS
  std::vector<float> crestFactorDB{};        ///< peak − RMS, dB
  std::vector<float> dcOffset{};             ///< mean sample value, linear
  float samplePeakDB = 0;                    ///< highest of `peakDB`
  float headroomDB = 0;                      ///< from the highest peak to full scale, dB
  std::int64_t dynamicRange = 0;             ///< DR score
  std::vector<std::int64_t> channelDR{};
  float integratedLUFS = 0;
  float loudnessRange = 0;  ///< LU
  float truePeakDB = 0;     ///< highest of `truePeakDBByChannel`
  float speechGatedLUFS = 0;
  float speechPercentage = 0;                          ///< 0 … 100
  float speechGatedNoiseFloorDBRMS = 0;                ///< level between the speech, dB RMS
  std::vector<ClosedTimeRange> speechRanges{};         ///< seconds, inside the selection
  std::vector<std::vector<float>> fftMagnitudes{};     ///< channels × bins
  std::optional<MidSideMagnitudes> msFftMagnitudes{};  ///< of stereo selections
  std::vector<TimedLevel> truePeakCurve{};             ///< dBTP
  std::int64_t fftSize = 0;                            ///< frames per transform
  double sampleRate = 0;                               ///< Hz
  float maxMomentaryLUFS = 0;
  float maxShortTermLUFS = 0;
  std::vector<TimedLevel> momentaryCurve{};
  std::vector<TimedLevel> shortTermCurve{};
  std::vector<TimedLevel> integratedCurve{};

  bool operator==(const SelectionAnalysisResult&) const = default;
};

}  // namespace orvane
