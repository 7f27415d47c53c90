// One row per chapter.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/report_text.h"

namespace orvane::HTMLReportBuilder {
namespace {

using ReportText::finite;
using ReportText::fixed;
using ReportText::signedFixed;

// Submission limits of ACX for audiobooks.
constexpr float kLoudestRMS = -18;
constexpr float kQuietestRMS = -23;
constexpr float kHighestTruePeak = -3;
constexpr float kHighestNoiseFloor = -60;

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kOrigins = {
    {{"detected", "auto-detected"},
     {"manual", "manually edited"},
     {"imported", "imported (JSON)"},
     {"recalled", "recalled (prior session)"},
     {"music", "seeded from the song's sections (Apple Music Understanding)"}}};

std::string originLabel(const std::string& origin) {
  for (const auto& [name, label] : kOrigins)
    if (name == origin) return std::string(label);
  return origin;
}

std::string metaLine(const ReportChapterTable& table) {
  const std::size_t count = table.entries.size();
  return std::to_string(count) + " chapter" + (count == 1 ? "" : "s") + " · " +
         escaped(originLabel(table.origin)) + " · median " +
         valueText(table.medianLUFS, 1, " LUFS") + " · flag threshold ±" +
         valueText(table.deviationThresholdLU, 1, "") +
         " LU · ACX limits flagged red (RMS outside [-23, -18] dB, TP &gt; -3 dBTP, noise floor "
         "&gt; -60 dB). The integrated LUFS column and its deviation from the book median are a "
         "separate narrator-consistency check.";
}

std::string number(std::optional<float> value, bool isFlagged = false) {
  return cell(isFlagged ? "chap-num chap-warn" : "chap-num", valueText(value, 1, ""));
}

bool isRMSOutside(std::optional<float> rms) {
  const auto value = finite(rms);
  return value && (*value > kLoudestRMS || *value < kQuietestRMS);
}

bool isAbove(std::optional<float> value, float limit) {
  const auto known = finite(value);
  return known && *known > limit;
}

std::string integratedText(std::optional<float> level) {
  if (level && !std::isfinite(*level)) return "silence";
  return valueText(level, 1, "");
}

std::string rowClass(const ReportChapterEntry& entry, float threshold) {
  if (!finite(entry.integratedLUFS)) return "chap-row chap-muted";
  const auto deviation = finite(entry.deviationFromMedianLU);
  return deviation && std::fabs(*deviation) > threshold ? "chap-row chap-flagged" : "chap-row";
}

std::string deviationText(const ReportChapterEntry& entry) {
  const auto deviation = finite(entry.deviationFromMedianLU);
  if (!deviation || !finite(entry.integratedLUFS)) return std::string(kMissing);
  return signedFixed(*deviation, 1);
}

std::string speechText(std::optional<float> fraction) {
  if (!fraction) return std::string(kMissing);
  return valueText(*fraction * 100, 0, "%");
}

std::string indexText(std::int64_t index) {
  const bool isOneDigit = index >= 0 && index < 10;
  return (isOneDigit ? "0" : "") + std::to_string(index);
}

std::string row(const ReportChapterEntry& entry, float threshold) {
  std::string html = "<tr class=\"" + rowClass(entry, threshold) + "\">";
  html += cell("chap-idx", indexText(entry.index));
  html += cell("chap-name", escaped(entry.name));
  html += cell("chap-time",
               formatTimecode(entry.startSec) + " &ndash; " + formatTimecode(entry.endSec));
  html += cell("chap-dur", formatTimecode(std::max(entry.endSec - entry.startSec, 0.0)));
  html += number(entry.rmsDBFS, isRMSOutside(entry.rmsDBFS));
  html += cell("chap-lufs", integratedText(entry.integratedLUFS));
  html += cell("chap-dev", deviationText(entry));
  html += number(entry.truePeakDBTP, isAbove(entry.truePeakDBTP, kHighestTruePeak));
  html += number(entry.samplePeakDBFS);
  html += number(entry.loudnessRange);
  html += number(entry.maxMomentaryLUFS);
  html += number(entry.maxShortTermLUFS);
  html += number(entry.speechGatedLUFS);
  html += number(entry.noiseFloorDBRMS, isAbove(entry.noiseFloorDBRMS, kHighestNoiseFloor));
  html += cell("chap-num", speechText(entry.speechPercentage));
  return html + "</tr>\n";
}

}  // namespace

std::string chaptersSection(const ReportChapterTable& table) {
  std::string html = element("div", "section-title", "Chapters");
  html += element("div", "chap-meta", metaLine(table));
  html += "<div class=\"table-container\">\n<table class=\"chap-table\">\n";
  html += headRow({"#", "Name", "Time range", "Duration", "RMS (dB)", "I (LUFS)", "vs med (LU)",
                   "TP (dBTP)", "SP (dBFS)", "LRA (LU)", "Max M", "Max S", "Dialog I", "NF (dB)",
                   "Speech"});
  for (const ReportChapterEntry& entry : table.entries)
    html += row(entry, table.deviationThresholdLU);
  return html + "</table>\n</div>\n";
}

}  // namespace orvane::HTMLReportBuilder
