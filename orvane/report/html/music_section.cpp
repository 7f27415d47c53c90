// What a musical analysis found, and the loudness that follows from it.
#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/report_text.h"

namespace orvane::HTMLReportBuilder {
namespace {

std::string bold(std::string_view text) {
  return "<b>" + std::string(text) + "</b>";
}

std::string metaLine(const MusicAnalysisResult& analysis) {
  const auto key = analysis.dominantKey();
  const auto counted = [](std::string_view name, std::size_t count) {
    return " · " + std::string(name) + ": " + std::to_string(count);
  };
  return "Key: " + bold(key ? escaped(key->label()) : "not detected") +
         " · Tempo: " + bold(valueText(analysis.beatsPerMinute, 1, " BPM")) +
         counted("Bars", analysis.bars.size()) + counted("Beats", analysis.beats.size()) +
         counted("Sections", analysis.sections.size()) +
         counted("Segments", analysis.segments.size()) +
         counted("Phrases", analysis.phrases.size());
}

std::string stemRow(const MusicAnalysisResult& analysis, MusicAnalysisResult::Stem stem) {
  const auto* const lane = analysis.lane(stem);
  const std::size_t spanCount = lane == nullptr ? 0 : lane->ranges.size();
  return "<tr>" + cell("ch-label", displayName(stem)) + "<td>" +
         ReportText::fixed(analysis.coverage(stem), 0) + "%</td><td>" + std::to_string(spanCount) +
         "</td></tr>\n";
}

std::string stemTable(const MusicAnalysisResult& analysis) {
  std::string html = "<div class=\"table-container\">\n<table>\n";
  html += headRow({"Stem", "Presence", "Spans"});
  for (const auto stem : MusicAnalysisResult::kAllStems) html += stemRow(analysis, stem);
  return html + "</table>\n</div>\n";
}

std::string loudness(std::optional<float> level) {
  return valueText(level, 1, " LUFS");
}

std::string balance(std::optional<float> difference) {
  const auto value = ReportText::finite(difference);
  return value ? ReportText::signedFixed(*value, 1) + " LU" : std::string(kMissing);
}

std::string gatedLine(const StemGatedLoudness& gated) {
  return "Stem-gated loudness (Orvane BS.1770-4): vocal present <b>" +
         loudness(gated.vocal.presentLUFS) + "</b> · bed (no vocal) <b>" +
         loudness(gated.vocal.absentLUFS) + "</b> · vocal balance <b>" +
         balance(gated.vocal.balanceLU) + "</b> · drums present " +
         loudness(gated.drums.presentLUFS) + " · no drums " + loudness(gated.drums.absentLUFS) +
         " · drums balance " + balance(gated.drums.balanceLU);
}

}  // namespace

std::string musicSection(const MusicAnalysisResult* analysis, const StemGatedLoudness* gated) {
  if (analysis == nullptr && gated == nullptr) return {};
  std::string html = element("div", "section-title", "Music (Apple Music Understanding)");
  if (analysis != nullptr) {
    html += element("div", "chap-meta", metaLine(*analysis));
    if (!analysis->looksLikeMusic())
      html += element("div", "music-warning",
                      "No key was detected, so the file reads as non-music to the model. Tempo, "
                      "bars, and structure are not reliable on speech or non-musical material.");
    html += stemTable(*analysis);
  }
  if (gated != nullptr) html += element("div", "chap-meta", gatedLine(*gated));
  const std::string& source = analysis != nullptr ? analysis->source : gated->source;
  html += element("p", "note",
                  "Source: " + escaped(source) +
                      ". Stems, tempo, key, and structure are Apple's on-device analysis; the "
                      "loudness figures in this report are Orvane's own BS.1770-4 measurement.");
  return html;
}

}  // namespace orvane::HTMLReportBuilder
