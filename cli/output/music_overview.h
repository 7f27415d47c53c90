#pragma once

#include <string>

#include "cli/terminal/console.h"
#include "orvane/music/music_analysis_result.h"

/// A music analysis as the program shows it.
namespace orvane::cli::MusicOverview {

/// For people: figures, each stem as a row of bars over time, sections. `name` is the file's.
std::string block(const std::string& name, const MusicAnalysisResult& analysis,
                  const Console& console);

/// For machines, in one line: the record and what follows from it.
std::string json(const std::string& name, const MusicAnalysisResult& analysis);

/// A stem's activity, 0 … 1, in that many columns: "▁" to "█"; by its ranges where it has no
/// activity.
std::string lane(const MusicAnalysisResult::StemLane& stem, double duration, std::size_t columns);

}  // namespace orvane::cli::MusicOverview
