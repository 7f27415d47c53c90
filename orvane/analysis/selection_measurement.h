#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/analysis/selection_analysis.h"
#include "orvane/core/chapter.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

/// Measures stretches of a loaded file with the meters that measure whole files.
namespace orvane::SelectionMeasurement {

/// Measures the frames [startFrame, endFrame), clamped to the buffer. `fileSpeechHistory`: one flag
/// per 100 ms of the whole file. With `dualMono` a single channel stands for two equal
/// loudspeakers. Absent when no frame is left. The stage is "Measuring".
///
/// The noise floor is the energy mean of the 100 ms blocks without speech, mean over the channels;
/// minus infinity without a speech history or when those blocks make up less than half a second.
/// Curves have one point per 100 ms; all times count from the start of the file.
ORVANE_API std::optional<SelectionAnalysisResult> measure(
    const PCMBuffer& buffer, std::int64_t startFrame, std::int64_t endFrame,
    const std::optional<std::vector<bool>>& fileSpeechHistory, const Execution& execution = {},
    bool dualMono = false);

/// A chapter's place in a file.
struct ChapterSpan {
  std::int64_t index = 0;
  std::string name{};
  double startSec = 0;
  double endSec = 0;

  bool operator==(const ChapterSpan&) const = default;
};

/// Measures a chapter the same way. Levels of silence are minus infinity; absent are the loudness
/// of speech and the noise floor where there is none, the share of speech where it was not looked
/// for, and all figures of a chapter that lies outside the file.
ORVANE_API core::Chapter measureChapter(const PCMBuffer& buffer, const ChapterSpan& span,
                                        const std::optional<std::vector<bool>>& fileSpeechHistory,
                                        const Execution& execution = {}, bool dualMono = false);

}  // namespace orvane::SelectionMeasurement
