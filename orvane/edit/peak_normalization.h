#pragma once

#include "orvane/edit/edit_result.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// Scales all of it so that its sample peak lies at `targetDB`. Audio without a peak, silent or
/// empty, stays as it is.
ORVANE_API EditResult normalizePeak(ChannelArrays channelData, double sampleRate, double targetDB);
ORVANE_API void normalizePeakInPlace(MutablePlanarView audio, double targetDB);

/// The largest magnitude of all channels; samples that are not finite are left out.
ORVANE_API float finitePeak(PlanarView audio) noexcept;

/// The gain that does it: `targetDB` less the peak in dBFS; 0 without a peak.
ORVANE_API double peakNormalizationGainDB(float peak, double targetDB) noexcept;

}  // namespace orvane::EditOperations
