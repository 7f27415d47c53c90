// The grid of key figures.
#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/report_text.h"

namespace orvane::HTMLReportBuilder {
namespace {

using Mode = core::LoudnessTargetMode;

/// Red above `bad`, amber above `warning`, else `otherwise`; no colour for a missing value.
std::string_view colorAbove(std::optional<float> value, float bad, float warning,
                            std::string_view otherwise) {
  if (!value) return {};
  if (*value > bad) return Color::kBad;
  return *value > warning ? Color::kWarning : otherwise;
}

std::string_view loudnessColor(std::optional<float> level) {
  return colorAbove(level, -6, -14, Color::kGood);
}

std::string_view dynamicRangeColor(std::int64_t score) {
  if (score >= 10) return Color::kGood;
  return score >= 6 ? Color::kWarning : Color::kBad;
}

std::string loudnessCard(std::string_view label, std::optional<float> level,
                         std::string_view unit) {
  return metricCard(label, valueText(level, 1, unit), loudnessColor(level));
}

std::string peakCard(const KeyMetrics& metrics) {
  const auto peak = metrics.truePeak ? metrics.truePeak : metrics.samplePeak;
  const std::string_view unit = metrics.truePeak ? " dBTP" : " dBFS*";
  return metricCard("True Peak", valueText(peak, 1, unit), colorAbove(peak, -0.5F, -3, {}));
}

std::string dynamicRangeCard(std::optional<std::int64_t> score) {
  if (!score) return metricCard("DR", kMissing, {});
  return metricCard("DR", std::to_string(*score), dynamicRangeColor(*score));
}

}  // namespace

KeyMetrics keyMetrics(const OrvaneReport& report) {
  using ReportText::finite;
  const auto mode =
      core::loudnessTargetModeFromRawValue(report.loudnessTargets.activeMode).value_or(Mode::music);
  if (const auto& selection = report.selection)
    return {.mode = mode,
            .integrated = finite(selection->integratedLUFS),
            .truePeak = finite(selection->truePeakDB),
            .samplePeak = finite(selection->samplePeakDB),
            .lra = finite(selection->loudnessRange),
            .dr = selection->dynamicRange,
            .maxM = finite(selection->maxMomentaryLUFS),
            .maxS = finite(selection->maxShortTermLUFS),
            .speechGated = finite(selection->speechGatedLUFS),
            .noiseFloor = finite(selection->speechGatedNoiseFloorDBRMS)};
  const ReportFullFileLoudness& file = report.fullFile;
  return {.mode = mode,
          .integrated = finite(file.integratedLUFS),
          .truePeak = finite(file.truePeakDB),
          .samplePeak = finite(file.samplePeakDB),
          .lra = finite(file.loudnessRange),
          .dr = file.dynamicRange,
          .maxM = finite(file.maxMomentaryLUFS),
          .maxS = finite(file.maxShortTermLUFS),
          .speechGated = finite(file.speechGatedLUFS)};
}

std::string metricCard(std::string_view label, std::string_view value, std::string_view color) {
  std::string html = "<div class=\"metric-card\"><div class=\"metric-label\">";
  html.append(label).append("</div><div class=\"metric-value\"");
  if (!color.empty()) html.append(" style=\"color:").append(color).append("\"");
  return html.append(">").append(value).append("</div></div>\n");
}

std::string metricsBlock(const KeyMetrics& metrics) {
  const Mode mode = metrics.mode;
  std::string html = "<div class=\"metrics\">\n";
  html += loudnessCard("Integrated", metrics.integrated, " LUFS");
  html += peakCard(metrics);
  html += metricCard("LRA", valueText(metrics.lra, 1, " LU"), {});
  if (mode != Mode::music) html += loudnessCard("Speech-Gated", metrics.speechGated, " LKFS");
  if (mode == Mode::music || mode == Mode::broadcast) html += dynamicRangeCard(metrics.dr);
  html += loudnessCard("Max Momentary", metrics.maxM, " LUFS");
  html += loudnessCard("Max Short-term", metrics.maxS, " LUFS");
  if (mode == Mode::podcast)
    html += metricCard("Noise Floor", valueText(metrics.noiseFloor, 1, " dB"),
                       colorAbove(metrics.noiseFloor, -60, -63, Color::kGood));
  html += "</div>\n";
  if (!metrics.truePeak && metrics.samplePeak)
    html += element("p", "note",
                    "* Sample peak shown; true peak measurement unavailable for this file.");
  return html;
}

}  // namespace orvane::HTMLReportBuilder
