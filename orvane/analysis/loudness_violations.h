#pragma once

#include <span>
#include <vector>

#include "orvane/core/curve_points.h"
#include "orvane/core/time_range.h"
#include "orvane/platform/export.h"

/// Where a programme is louder than its maker allows.
namespace orvane::LoudnessViolations {

/// The runs of points whose momentary loudness lies above `thresholdLUFS`. Point k stands for the
/// time from k × 0.1 s to (k + 1) × 0.1 s. Seconds, in order, without overlap.
ORVANE_API std::vector<HalfOpenTimeRange> momentary(std::span<const LoudnessCurvePoint> curve,
                                                    float thresholdLUFS);

/// The same of the short-term loudness.
ORVANE_API std::vector<HalfOpenTimeRange> shortTerm(std::span<const LoudnessCurvePoint> curve,
                                                    float thresholdLUFS);

}  // namespace orvane::LoudnessViolations
