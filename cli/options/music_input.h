#pragma once

#include <string>

#include "orvane/music/music_analysis_result.h"

namespace orvane::cli {

/// The music analysis in a JSON file; "-" is standard input. Throws `PlatformError` when it cannot
/// be read.
MusicAnalysisResult readMusicAnalysis(const std::string& name);

}  // namespace orvane::cli
