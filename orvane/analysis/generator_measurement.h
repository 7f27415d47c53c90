#pragma once

#include <optional>
#include <vector>

#include "orvane/platform/export.h"

/// Measures a rendered test signal before it is written.
namespace orvane::GeneratorMeasurement {

/// Each figure is absent where it cannot be measured: for silence, and the loudness also of what no
/// gating block holds and at sample rates that the meter does not know.
struct Metrics {
  std::optional<float> peakDB{};          ///< highest sample of all channels, dBFS
  std::optional<float> rmsDB{};           ///< of all channels together, dBFS
  std::optional<float> integratedLUFS{};  ///< ITU-R BS.1770-5

  bool operator==(const Metrics&) const = default;
};

/// `channels`: channels × frames, all of one length; of none, or of no frames, all figures are
/// absent. A test signal's channels have no places: from three on each weighs 1, so none is taken
/// for a surround or LFE channel.
ORVANE_API Metrics measure(const std::vector<std::vector<float>>& channels, double sampleRate);

}  // namespace orvane::GeneratorMeasurement
