#include "orvane/report/report_parts.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "orvane/analysis/chapter_measurement.h"
#include "orvane/analysis/loudness_violations.h"
#include "orvane/analysis/programme_summary.h"
#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/music/stem_gated_loudness.h"
#include "orvane/platform/precondition.h"
#include "orvane/report/analysis_report_inputs.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::AnalysisDetail;
using OfflineAnalysisPipeline::Result;
using Finding = GatheredReport::Finding;

/// A music analysis may be of a copy with a little more silence, hardly of one that differs by
/// more.
constexpr double kDurationTolerance = 1;

/// Adds the parts one by one.
class Gathering {
 public:
  Gathering(const Result& result, const AnalysisDetail& detail, const ReportParts& parts,
            const Execution& execution)
      : result_(result), detail_(detail), parts_(parts), execution_(execution) {}

  GatheredReport gather(const std::string& appVersion) {
    auto labels = parts_.channelLabels.empty()
                      ? channelNames(detail_.layout, static_cast<std::size_t>(result_.channelCount))
                      : std::optional(parts_.channelLabels);
    gathered_.inputs = toReportInputs(result_, appVersion, parts_.targets, labels);
    if (detail_.isDualMono) gathered_.inputs.fileInfo.channelLayout += kDualMonoLayout;
    if (parts_.selection) addSelection(*parts_.selection);
    addViolations();
    if (parts_.music) addMusic(*parts_.music);
    addChapters();
    return std::move(gathered_);
  }

 private:
  void addSelection(const ReportParts::Selection& selection) {
    const double duration = result_.durationSeconds;
    const double end = selection.endSeconds.value_or(duration);
    const auto frameAt = [&](double seconds) {
      return std::llround(std::min(seconds, duration) * result_.sampleRate);
    };
    auto& measured = gathered_.inputs.selectionAnalysis;
    measured = SelectionMeasurement::measure(*result_.buffer, frameAt(selection.startSeconds),
                                             frameAt(end), result_.speechHistory, execution_,
                                             detail_.isDualMono);
    if (!measured)
      gathered_.findings.push_back(Finding::selectionOutsideAudio);
    else if (end > duration)
      gathered_.findings.push_back(Finding::selectionCut);
  }

  void addViolations() {
    ReportInputs& inputs = gathered_.inputs;
    const auto& curve = inputs.fileLoudnessCurve;
    inputs.violationsEnabled = parts_.maxMomentaryLUFS || parts_.maxShortTermLUFS;
    inputs.momentaryThreshold = parts_.maxMomentaryLUFS;
    inputs.shortTermThreshold = parts_.maxShortTermLUFS;
    if (parts_.maxMomentaryLUFS)
      inputs.momentaryViolations = LoudnessViolations::momentary(curve, *parts_.maxMomentaryLUFS);
    if (parts_.maxShortTermLUFS)
      inputs.shortTermViolations = LoudnessViolations::shortTerm(curve, *parts_.maxShortTermLUFS);
  }

  void addMusic(const MusicAnalysisResult& music) {
    if (std::abs(music.duration - result_.durationSeconds) > kDurationTolerance)
      gathered_.findings.push_back(Finding::musicOfOtherLength);
    auto& clipped = gathered_.inputs.musicAnalysis;
    clipped = music.clipped(result_.durationSeconds);
    gathered_.inputs.stemGatedLoudness =
        StemGatedLoudness::compute(detail_.blockPowers, core::LoudnessGrid::kStepSeconds, *clipped);
    gathered_.sectionLoudness = MusicSectionLoudness::compute(
        detail_.blockPowers, core::LoudnessGrid::kStepSeconds, clipped->sections);
  }

  void addChapters() {
    ReportInputs& inputs = gathered_.inputs;
    const bool areOfMusic = parts_.chaptersFromMusic && inputs.musicAnalysis;
    const auto spans = areOfMusic ? sections() : markedChapters();
    if (spans.empty()) return;
    inputs.chapterOrigin = areOfMusic ? "music" : parts_.chapterOrigin;
    inputs.chapters = ChapterMeasurement::measure(*result_.buffer, spans, result_.speechHistory,
                                                  execution_, detail_.isDualMono);
    inputs.chapterMedianLUFS = ChapterMeasurement::medianLUFS(inputs.chapters);
    inputs.chapterDeviationThresholdLU = parts_.chapterToleranceLU;
  }

  using Spans = std::vector<SelectionMeasurement::ChapterSpan>;

  Spans sections() {
    Spans spans = ChapterMeasurement::spansOfSections(gathered_.inputs.musicAnalysis->sections,
                                                      result_.durationSeconds);
    if (spans.empty()) gathered_.findings.push_back(Finding::musicWithoutSections);
    return spans;
  }

  Spans markedChapters() {
    const auto& marks = parts_.chapterMarks;
    Spans spans = ChapterMeasurement::spansOf(marks, result_.durationSeconds);
    if (spans.empty() && !marks.empty())
      gathered_.findings.push_back(Finding::chapterMarksOutsideAudio);
    gathered_.chaptersLeftOut = ChapterMeasurement::withoutAudio(marks, result_.durationSeconds);
    return spans;
  }

  const Result& result_;
  const AnalysisDetail& detail_;
  const ReportParts& parts_;
  const Execution& execution_;
  GatheredReport gathered_{};
};

}  // namespace

GatheredReport gatherReport(const Result& result, const AnalysisDetail& detail,
                            const ReportParts& parts, const std::string& appVersion,
                            const Execution& execution) {
  precondition(result.buffer != nullptr || !parts.needAudio(),
               "parts that are measured need the analysed audio");
  return Gathering(result, detail, parts, execution).gather(appVersion);
}

}  // namespace orvane
