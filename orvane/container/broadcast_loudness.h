#pragma once

#include <optional>

namespace orvane {

/// The loudness figures that a broadcast extension states (`bext`, EBU Tech 3285 version 2). What
/// is absent, not finite or beyond ±99.99 is not stated.
struct BroadcastLoudness {
  std::optional<float> integratedLUFS{};
  std::optional<float> rangeLU{};
  std::optional<float> maxTruePeakDB{};  ///< dBTP
  std::optional<float> maxMomentaryLUFS{};
  std::optional<float> maxShortTermLUFS{};

  bool operator==(const BroadcastLoudness&) const = default;
};

}  // namespace orvane
