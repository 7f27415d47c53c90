#pragma once

#include <optional>
#include <span>
#include <vector>

#include "orvane/analysis/selection_measurement.h"
#include "orvane/container/chapter_mark.h"
#include "orvane/core/chapter.h"
#include "orvane/music/music_analysis_result.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

/// Chapters of a file: where they lie and how loud each is.
namespace orvane::ChapterMeasurement {

/// The chapters that marks make in a file of `duration` seconds, numbered from 1 in the order of
/// their starts. A mark without an end lasts until the next one starts, the last to the end of the
/// file. Ends are cut to the file; what has no length then, or starts beyond the file, is left out.
/// A chapter without a name is called "Chapter 1", "Chapter 2" … by its number.
ORVANE_API std::vector<SelectionMeasurement::ChapterSpan> spansOf(std::vector<ChapterMark> marks,
                                                                  double duration);

/// The marks that are left out there, in the order of their starts.
ORVANE_API std::vector<ChapterMark> withoutAudio(std::vector<ChapterMark> marks, double duration);

/// Chapters that cover the file from 0 to `duration`, cut where the sections of a music analysis
/// start and none shorter than ten seconds: "Section 1", "Section 2" …
ORVANE_API std::vector<SelectionMeasurement::ChapterSpan> spansOfSections(
    std::span<const MusicAnalysisResult::TimeSpan> sections, double duration);

/// Measures each; the observer is told of "Chapters". Throws `Cancelled`.
ORVANE_API std::vector<core::Chapter> measure(
    const PCMBuffer& buffer, std::span<const SelectionMeasurement::ChapterSpan> spans,
    const std::optional<std::vector<bool>>& fileSpeechHistory, const Execution& execution = {},
    bool dualMono = false);

/// The median of the chapters' integrated loudness, of an even number of values the mean of the two
/// middle ones; absent when no chapter has a finite one.
ORVANE_API std::optional<float> medianLUFS(std::span<const core::Chapter> chapters);

}  // namespace orvane::ChapterMeasurement
