#pragma once

#include <span>
#include <vector>

#include "orvane/music/music_analysis_result.h"
#include "orvane/platform/export.h"

namespace orvane::MusicSectionChapters {

/// Chapters that cover a file from 0 to `duration` without gaps, cut where sections start. No
/// chapter is shorter than `minimumLength` seconds, unless the file is. Empty when no section lies
/// within the file.
ORVANE_API std::vector<MusicAnalysisResult::TimeSpan> tile(
    std::span<const MusicAnalysisResult::TimeSpan> spans, double duration, double minimumLength);

}  // namespace orvane::MusicSectionChapters
