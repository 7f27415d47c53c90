#pragma once

#include <optional>
#include <string>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/analysis/selection_measurement.h"
#include "orvane/container/chapter_mark.h"
#include "orvane/core/targets/loudness_target.h"
#include "orvane/music/music_analysis_result.h"
#include "orvane/music/music_section_loudness.h"
#include "orvane/platform/export.h"
#include "orvane/report/report_inputs.h"

namespace orvane {

/// What a report tells of a file beside the file's own figures.
struct ReportParts {
  struct Selection {
    double startSeconds = 0;
    std::optional<double> endSeconds{};  ///< absent: to the end of the file

    bool operator==(const Selection&) const = default;
  };

  std::vector<std::string> channelLabels{};  ///< one per channel; empty for their own names
  std::optional<Selection> selection{};      ///< a stretch to be measured and judged by
  std::optional<float> maxMomentaryLUFS{};   ///< louder moments are violations
  std::optional<float> maxShortTermLUFS{};   ///< likewise
  /// Of the same audio. Gives the loudness by stems and sections.
  std::optional<MusicAnalysisResult> music{};
  bool chaptersFromMusic = false;           ///< the sections of `music` are the chapters
  std::vector<ChapterMark> chapterMarks{};  ///< the chapters otherwise
  std::string chapterOrigin{};              ///< where the marks come from, as reports tell it
  float chapterToleranceLU = 2;             ///< chapters further from their median are flagged
  core::LoudnessTargetSelection targets{};

  bool operator==(const ReportParts&) const = default;

  /// Some part is measured from the audio itself, so that the analysis must keep its buffer.
  bool needAudio() const { return selection || chaptersFromMusic || !chapterMarks.empty(); }
};

/// The inputs of a report with all its parts, and what was noticed on the way.
struct GatheredReport {
  enum class Finding {
    selectionOutsideAudio,    ///< the selection begins behind the end; it is left out
    selectionCut,             ///< it ends behind the end of the audio, where it is cut
    musicOfOtherLength,       ///< the music analysis is of audio that differs by more than a second
    musicWithoutSections,     ///< its sections were to be the chapters
    chapterMarksOutsideAudio  ///< none of the marks lies in the file
  };

  ReportInputs inputs{};
  std::optional<MusicSectionLoudness> sectionLoudness{};
  std::vector<Finding> findings{};
  std::vector<ChapterMark> chaptersLeftOut{};  ///< those of the marks that have no audio
};

/// Measures the parts of an analysed file and brings together all that its report is built from:
/// `OrvaneReport::build(gathered.inputs, settings)`. `detail` is what the analysis gave beside
/// `result`, which must have its buffer when the parts need it. A file measured as dual mono has
/// its parts measured so, and its channel layout says it. The stages are "Measuring" and
/// "Chapters". Throws `Cancelled`.
ORVANE_API GatheredReport gatherReport(const OfflineAnalysisPipeline::Result& result,
                                       const OfflineAnalysisPipeline::AnalysisDetail& detail,
                                       const ReportParts& parts, const std::string& appVersion,
                                       const Execution& execution = {});

}  // namespace orvane
