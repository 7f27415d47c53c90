#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvane::core {

/// A chapter with what was measured of it; figures that were not measured are absent.
struct Chapter {
  std::int64_t index = 0;
  std::string name{};
  double startSec = 0;
  double endSec = 0;
  std::optional<float> integratedLUFS{};
  std::optional<float> rmsDBFS{};
  std::optional<float> truePeakDBTP{};
  std::optional<float> samplePeakDBFS{};
  std::optional<float> loudnessRange{};  ///< LU
  std::optional<float> maxMomentaryLUFS{};
  std::optional<float> maxShortTermLUFS{};
  std::optional<float> speechGatedLUFS{};
  std::optional<float> noiseFloorDBRMS{};
  std::optional<float> speechPercentage{};  ///< a fraction, 0 … 1

  bool operator==(const Chapter&) const = default;
};

}  // namespace orvane::core
