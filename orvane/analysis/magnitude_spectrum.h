#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "orvane/analysis/programme_view.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Mean spectra of a stretch.
struct MagnitudeSpectra {
  std::size_t fftSize = 0;  ///< frames per transform
  /// Channels × (fftSize ÷ 2 + 1) bins from 0 Hz to half the sample rate; linear, a full-scale sine
  /// in the middle of a bin reads 1.
  std::vector<std::vector<float>> channels{};
  /// (L + R) ÷ 2 and (L − R) ÷ 2 of a stretch of two channels.
  std::optional<std::pair<std::vector<float>, std::vector<float>>> midSide{};
};

/// Averages the power of Hann windows that overlap by half; of a long stretch as many as suffice,
/// spread evenly. Transforms have 8,192 frames, fewer (a power of two, at least 256) for stretches
/// shorter than that; what is missing of a window is silence. Non-finite samples count as 0.
ORVANE_TESTING_API MagnitudeSpectra magnitudeSpectra(const ProgrammeView& programme);

}  // namespace orvane
