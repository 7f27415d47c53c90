#include "cli/output/report_table.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "cli/output/number_text.h"
#include "cli/output/target_findings.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"

namespace orvane::cli::ReportTable {
namespace {

using Alignment = TextTable::Alignment;
using Cell = TextTable::Cell;

constexpr std::size_t kIndent = 2;

std::string level(std::optional<float> value, int decimals = 1) {
  return value ? NumberText::fixed(static_cast<double>(*value), decimals) : "-";
}

std::string chapterLoudness(std::optional<float> value) {
  return value && !std::isfinite(*value) ? "silence" : level(value);
}

std::string deviation(std::optional<float> value) {
  return value ? NumberText::signedFixed(static_cast<double>(*value), 1) : "-";
}

std::string span(double start, double end) {
  return NumberText::duration(start) + " – " + NumberText::duration(end);
}

/// The same to the second.
std::string roughSpan(double start, double end) {
  const auto seconds = [](double time) {
    const std::string text = NumberText::duration(time);
    return text.substr(0, text.rfind('.'));
  };
  return seconds(start) + " – " + seconds(end);
}

std::string title(const Console& console, const std::string& text) {
  return "\n" + std::string(kIndent, ' ') + console.styled(Style::bold, text) + "\n";
}

std::string selection(const ReportSelectionLoudness& part, const Console& console) {
  TextTable table({{},
                   {"", Alignment::right},
                   {"", Alignment::left, 1},
                   {"", Alignment::left, 6},
                   {"", Alignment::right},
                   {"", Alignment::left, 1}},
                  kIndent);
  const auto row = [&table](const char* name, std::string value, const char* unit,
                            const char* otherName, std::string other, const char* otherUnit) {
    table.addRow({{name},
                  {std::move(value), Style::bold},
                  {unit},
                  {otherName},
                  {std::move(other), Style::bold},
                  {otherUnit}});
  };
  row("Integrated", level(part.integratedLUFS), "LUFS", "True peak", level(part.truePeakDB, 2),
      "dBTP");
  row("Loudness range", level(part.loudnessRange), "LU", "Sample peak", level(part.samplePeakDB, 2),
      "dBFS");
  row("Max momentary", level(part.maxMomentaryLUFS), "LUFS", "Dynamic range",
      std::to_string(part.dynamicRange), "DR");
  if (std::isfinite(part.speechGatedNoiseFloorDBRMS))
    row("Max short-term", level(part.maxShortTermLUFS), "LUFS", "Noise floor",
        level(part.speechGatedNoiseFloorDBRMS), "dB RMS");
  else
    row("Max short-term", level(part.maxShortTermLUFS), "LUFS", "", "", "");
  if (part.speechPercentage > 0)
    row("Speech loudness", level(part.speechGatedLUFS), "LUFS", "Speech share",
        level(part.speechPercentage), "%");
  return title(console, "Selection " + span(part.startTime, part.endTime)) + table.text(console);
}

std::string violations(const ReportViolations& part, const Console& console) {
  constexpr std::size_t kListed = 5;
  std::string text;
  const auto add = [&](const char* name, std::optional<float> threshold,
                       const std::vector<ReportTimeRange>& ranges) {
    if (!threshold) return;
    double seconds = 0;
    for (const auto& range : ranges) seconds += range.end - range.start;
    const std::string head = std::string(name) + " above " + level(threshold) + " LUFS: ";
    if (ranges.empty()) {
      text += std::string(kIndent, ' ') + head + "nowhere\n";
      return;
    }
    const auto count = static_cast<std::int64_t>(ranges.size());
    text += std::string(kIndent, ' ') +
            console.styled(Style::yellow, head + NumberText::counted(count, "region") + ", " +
                                              NumberText::fixed(seconds, 1) + " s in total") +
            "\n";
    for (std::size_t i = 0; i < std::min(ranges.size(), kListed); ++i)
      text += std::string(2 * kIndent, ' ') + span(ranges[i].start, ranges[i].end) + "\n";
    if (ranges.size() > kListed)
      text += std::string(2 * kIndent, ' ') +
              console.styled(Style::dim, "and " + std::to_string(ranges.size() - kListed) +
                                             " more; --json lists all") +
              "\n";
  };
  add("Momentary", part.momentaryThreshold, part.momentaryRanges);
  add("Short-term", part.shortTermThreshold, part.shortTermRanges);
  return "\n" + text;
}

std::string chapters(const ReportChapterTable& part, const Console& console) {
  TextTable table({{"#", Alignment::right},
                   {"Chapter"},
                   {"Time", Alignment::right},
                   {"I LUFS", Alignment::right},
                   {"vs median", Alignment::right},
                   {"LRA LU", Alignment::right},
                   {"dBTP", Alignment::right},
                   {"RMS dB", Alignment::right}},
                  kIndent);
  // Beside hours nobody looks for milliseconds, and 80 columns have no room for both.
  constexpr double kHour = 3600;
  const bool isLong = std::ranges::any_of(
      part.entries, [](const ReportChapterEntry& entry) { return entry.endSec >= kHour; });
  for (const ReportChapterEntry& entry : part.entries) {
    const auto difference = entry.deviationFromMedianLU;
    const bool isFlagged = difference && std::abs(*difference) > part.deviationThresholdLU;
    const Style style = isFlagged ? Style::red : Style::plain;
    table.addRow({{std::to_string(entry.index)},
                  {TerminalText::escaped(entry.name)},
                  {(isLong ? roughSpan : span)(entry.startSec, entry.endSec)},
                  {chapterLoudness(entry.integratedLUFS), style},
                  {deviation(difference) + (isFlagged ? "!" : " "), style},
                  {level(entry.loudnessRange)},
                  {level(entry.truePeakDBTP)},
                  {level(entry.rmsDBFS)}});
  }
  const std::string note = "Median " + level(part.medianLUFS) +
                           " LUFS; flagged (!) when further than ±" +
                           level(part.deviationThresholdLU) + " LU from it.";
  return "\n" + table.text(console) + std::string(kIndent, ' ') + console.styled(Style::dim, note) +
         "\n";
}

std::string stems(const StemGatedLoudness& part, const Console& console) {
  TextTable table({{"Stem"},
                   {"Present LUFS", Alignment::right, 3},
                   {"Absent LUFS", Alignment::right, 3},
                   {"Balance LU", Alignment::right, 3}},
                  kIndent);
  const auto row = [&table](const char* name, const StemGatedLoudness::Pair& pair) {
    table.addRow(
        {{name}, {level(pair.presentLUFS)}, {level(pair.absentLUFS)}, {deviation(pair.balanceLU)}});
  };
  row("Vocal", part.vocal);
  row("Drums", part.drums);
  return "\n" + table.text(console);
}

std::string sections(const MusicSectionLoudness& part, const Console& console) {
  TextTable table({{"Section", Alignment::right},
                   {"Time", Alignment::right, 3},
                   {"I LUFS", Alignment::right, 3},
                   {"vs median", Alignment::right}},
                  kIndent);
  for (const auto& entry : part.entries)
    table.addRow({{std::to_string(entry.index + 1)},
                  {span(entry.span.start, entry.span.end)},
                  {level(entry.integratedLUFS)},
                  {deviation(entry.deviationLU)}});
  return "\n" + table.text(console);
}

}  // namespace

std::string parts(const MeasuredFile& file, const Console& console) {
  if (!file.report) return "";
  const OrvaneReport& report = *file.report;
  std::string text;
  if (report.selection) text += selection(*report.selection, console);
  if (file.isJudged) text += TargetFindings::table(report, console);
  if (report.violations) text += violations(*report.violations, console);
  if (report.chapters) text += chapters(*report.chapters, console);
  if (report.stemGatedLoudness) text += stems(*report.stemGatedLoudness, console);
  if (file.sectionLoudness) text += sections(*file.sectionLoudness, console);
  return text;
}

}  // namespace orvane::cli::ReportTable
