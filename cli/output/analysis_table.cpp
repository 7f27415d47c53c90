#include "cli/output/analysis_table.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "cli/output/number_text.h"
#include "cli/output/report_table.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/analysis/programme_summary.h"

namespace orvane::cli::AnalysisTable {
namespace {

using OfflineAnalysisPipeline::Result;
using Alignment = TextTable::Alignment;

constexpr int kLoudnessDecimals = 1;  // EBU Tech 3341, 2.8: shown with a resolution of 0.1
constexpr int kLevelDecimals = 2;
constexpr std::size_t kListedClippingRuns = 10;

std::string loudness(float value) {
  return NumberText::fixed(value, kLoudnessDecimals);
}
std::string level(float value) {
  return NumberText::fixed(value, kLevelDecimals);
}

std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
  std::string result;
  for (const auto& text : texts) {
    if (text.empty()) continue;
    if (!result.empty()) result += separator;
    result += text;
  }
  return result;
}

std::string channelText(const MeasuredFile& file) {
  const auto names = file.channelNames();
  if (isMono(file.detail.layout, names.size())) return "mono";
  constexpr std::size_t kNamed = 16;
  std::string text = NumberText::counted(static_cast<std::int64_t>(names.size()), "channel");
  if (names.size() <= kNamed) text += " (" + joined(names, " ") + ")";
  return text;
}

/// Indented lines that fit the terminal.
std::string paragraph(const std::string& text, const Console& console, Style style = Style::plain) {
  constexpr std::size_t kIndent = 2;
  const std::size_t columns = console.tableColumns() - kIndent;
  std::istringstream lines(
      TerminalText::width(text) > columns ? TerminalText::wrapped(text, columns) : text);
  std::string result;
  for (std::string line; std::getline(lines, line);)
    result += std::string(kIndent, ' ') + console.styled(style, line) + "\n";
  return result;
}

std::string formatLine(const MeasuredFile& file, const Console& console) {
  const Result& result = file.result;
  std::vector<std::string> parts = {result.fileFormat};
  // "FLAC" says both what the container and what the codec is.
  if (file.encodingText() != result.fileFormat) parts.push_back(file.encodingText());
  if (result.rawFormat && result.rawFormat->isPlanar) parts.emplace_back("planar");
  parts.push_back(NumberText::sampleRate(result.sampleRate));
  parts.push_back(channelText(file));
  parts.push_back(NumberText::duration(result.durationSeconds));
  parts.push_back(NumberText::byteCount(result.fileSize));
  return paragraph(TerminalText::escaped(joined(parts, " · ")), console);
}

// Above full scale the waveform clips in every converter.
Style peakStyle(float truePeakDB) {
  return truePeakDB > 0 ? Style::red : Style::plain;
}

std::string figures(const MeasuredFile& file, const Console& console) {
  const Result& result = file.result;
  TextTable table({{},
                   {"", Alignment::right},
                   {"", Alignment::left, 1},
                   {"", Alignment::left, 6},
                   {"", Alignment::right},
                   {"", Alignment::left, 1}},
                  2);
  const auto addRow = [&table](std::string name, std::string value, std::string unit,
                               std::string otherName, TextTable::Cell other,
                               std::string otherUnit) {
    other.style = other.style == Style::plain ? Style::bold : other.style;
    table.addRow({{std::move(name)},
                  {std::move(value), Style::bold},
                  {std::move(unit)},
                  {std::move(otherName)},
                  std::move(other),
                  {std::move(otherUnit)}});
  };
  addRow("Integrated", loudness(result.integratedLUFS), "LUFS", "True peak",
         {level(result.truePeakDB), peakStyle(result.truePeakDB)}, "dBTP");
  addRow("Loudness range", loudness(result.loudnessRange), "LU", "Sample peak",
         {level(result.samplePeakDB)}, "dBFS");
  addRow("Max momentary", loudness(result.maxMomentaryLUFS), "LUFS", "Dynamic range",
         {std::to_string(result.dynamicRange)}, "DR");
  const auto correlation = audibleCorrelation(result);
  addRow("Max short-term", loudness(result.maxShortTermLUFS), "LUFS",
         correlation ? "Correlation" : "",
         {correlation ? NumberText::signedFixed(correlation->mean, 2) : ""},
         correlation ? "lowest " + NumberText::signedFixed(correlation->lowest, 2) : "");
  if (result.speechHistory)
    addRow("Speech loudness", loudness(result.speechGatedLUFS), "LUFS", "Speech share",
           {NumberText::fixed(result.speechPercentage, kLoudnessDecimals)}, "%");
  return table.text(console);
}

/// Which streams were measured, where there are several.
std::string streamNote(const MeasuredFile& file, const Console& console) {
  if (file.streamCount < 2) return "";
  std::string which;
  for (const int stream : file.streams)
    which += (which.empty() ? "" : ", ") + std::to_string(stream);
  const std::string text =
      file.streams.size() > 1
          ? "Audio streams " + which + " of " + std::to_string(file.streamCount) + ", joined."
          : "Audio stream " + which + " of " + std::to_string(file.streamCount) +
                ", counted from 0; --streams 0,1 joins them, --streams all measures each.";
  return paragraph(text, console, Style::dim);
}

std::string monoNote(const MeasuredFile& file, const Console& console) {
  if (file.result.channelCount != 1) return "";
  const char* const text =
      !isMono(file.detail.layout, 1) ? "An LFE channel alone, which loudness leaves out."
      : file.detail.isDualMono       ? "Mono, measured as two equal loudspeakers."
                               : "Mono, measured as one channel; --dual-mono takes it for two.";
  return paragraph(text, console, Style::dim);
}

// Runs of one channel; absent when not all runs of the file are known one by one.
std::optional<std::int64_t> runsOf(const MeasuredFile& file, std::size_t channel) {
  const auto& detail = file.detail;
  if (detail.clippingRunCount > static_cast<std::int64_t>(detail.clippingRuns.size()))
    return std::nullopt;
  return std::count_if(detail.clippingRuns.begin(), detail.clippingRuns.end(),
                       [channel](const auto& run) { return run.channel == channel; });
}

TextTable::Cell clippingCell(const MeasuredFile& file, std::size_t channel) {
  if (!file.result.channelHasClipping[channel]) return {"no"};
  const auto runs = runsOf(file, channel);
  if (!runs) return {"yes", Style::red};
  if (*runs == 0) return {"single samples", Style::yellow};
  return {NumberText::counted(*runs, "run"), Style::red};
}

std::string channels(const MeasuredFile& file, const Console& console) {
  const Result& result = file.result;
  const auto names = file.channelNames();
  TextTable table({{"Channel"},
                   {"Peak dBFS", Alignment::right, 3},
                   {"RMS dBFS", Alignment::right, 3},
                   {"Crest dB", Alignment::right, 3},
                   {"DC %", Alignment::right, 3},
                   {"Clipped", Alignment::left, 3}},
                  2);
  for (std::size_t i = 0; i < names.size() && i < result.channelPeakDB.size(); ++i) {
    const double dcPercent = 100 * static_cast<double>(result.channelDCOffset[i]);
    table.addRow({{TerminalText::escaped(names[i])},
                  {level(result.channelPeakDB[i])},
                  {level(result.channelRMSDB[i])},
                  {level(result.channelCrestFactorDB[i])},
                  {NumberText::signedFixed(dcPercent, 3)},
                  clippingCell(file, i)});
  }
  return table.text(console);
}

std::string clipping(const MeasuredFile& file, const Console& console) {
  const auto& detail = file.detail;
  if (detail.clippingRunCount == 0) return "";
  const auto names = file.channelNames();
  TextTable table(
      {{"Clipping at"}, {"Channel", Alignment::left, 3}, {"Frames", Alignment::right, 3}}, 2);
  const std::size_t listed = std::min(detail.clippingRuns.size(), kListedClippingRuns);
  for (std::size_t i = 0; i < listed; ++i) {
    const auto& run = detail.clippingRuns[i];
    const double start = static_cast<double>(run.startFrame) / file.result.sampleRate;
    table.addRow({{NumberText::duration(start)},
                  {run.channel < names.size() ? TerminalText::escaped(names[run.channel]) : ""},
                  {std::to_string(run.frameCount)}});
  }
  std::string text = "\n" + table.text(console);
  const std::int64_t more = detail.clippingRunCount - static_cast<std::int64_t>(listed);
  if (more > 0) {
    const std::string note = "and " + NumberText::counted(more, "more run") +
                             "; --json lists up to " +
                             std::to_string(OfflineAnalysisPipeline::kMaximumClippingRuns);
    text += paragraph(note, console, Style::dim);
  }
  return text;
}

std::string warnings(const MeasuredFile& file, const Console& console) {
  std::string text;
  for (const auto& warning : file.warnings())
    text += paragraph("Warning: " + TerminalText::escaped(warning), console, Style::yellow);
  return text.empty() ? text : "\n" + text;
}

std::string qualityNotes(const MeasuredFile& file, const Console& console) {
  std::string text;
  for (const auto& note : file.qualityNotes())
    text += paragraph("Note: " + TerminalText::escaped(note), console, Style::dim);
  return text.empty() ? text : "\n" + text;
}

}  // namespace

std::string block(const MeasuredFile& file, const Console& console) {
  const std::string name = TerminalText::escaped(file.name.shown());
  return console.styled(Style::bold, name) + "\n" + formatLine(file, console) + "\n" +
         figures(file, console) + streamNote(file, console) + monoNote(file, console) + "\n" +
         channels(file, console) + clipping(file, console) + ReportTable::parts(file, console) +
         qualityNotes(file, console) + warnings(file, console);
}

}  // namespace orvane::cli::AnalysisTable
