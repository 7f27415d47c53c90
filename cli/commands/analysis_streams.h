#pragma once

#include <memory>
#include <vector>

#include "cli/commands/analyze_options.h"
#include "cli/commands/measured_file.h"
#include "orvane/audio/audio_source.h"

namespace orvane::cli {

/// Which audio streams of files with several are measured.
namespace AnalysisStreams {

/// One name per stream for each file with several; the others stay as they are, and so do files
/// that cannot be opened.
std::vector<InputName> eachByItself(const std::vector<InputName>& files);

/// The stream or streams that the options ask for. Throws what opening throws, and `PlatformError`
/// for channel labels that are no loudspeakers where streams are joined.
std::unique_ptr<AudioSource> open(const InputName& file, const AnalyzeOptions& options,
                                  const Execution& execution);

/// Fills in which streams of how many those are.
void describe(MeasuredFile& measured, const AnalyzeOptions& options, ProgressObserver& observer);

}  // namespace AnalysisStreams
}  // namespace orvane::cli
