#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "orvane/music/music_analysis_result.h"
#include "orvane/platform/export.h"

namespace orvane::MusicActivityDecimation {

/// A stem's activity between two times in as many columns of equal width: of each the highest point
/// that lies in it, so that no peak is lost; of one without points the level of the last point
/// before it, 0 at first. Points are in order of time. Zeros without points and for an empty
/// stretch; nothing for no columns.
ORVANE_API std::vector<float> columns(std::span<const MusicAnalysisResult::ActivityPoint> activity,
                                      double from, double to, std::int64_t columns);

}  // namespace orvane::MusicActivityDecimation
