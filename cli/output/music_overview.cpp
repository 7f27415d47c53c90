#include "cli/output/music_overview.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "cli/output/json_output.h"
#include "cli/output/number_text.h"
#include "cli/output/waveform.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/music/music_activity_decimation.h"
#include "orvane/music/music_coding.h"

namespace orvane::cli::MusicOverview {
namespace {

using TimeSpan = MusicAnalysisResult::TimeSpan;

constexpr std::size_t kIndent = 2;

std::string figures(const MusicAnalysisResult& analysis, const Console& console) {
  TextTable table({{}, {}}, kIndent);
  const auto add = [&](const char* name, const std::string& value) {
    table.addRow({{name, Style::dim}, {TerminalText::escaped(value)}});
  };
  const auto counted = [](const auto& list, const char* noun) {
    return NumberText::counted(static_cast<std::int64_t>(list.size()), noun);
  };
  add("Duration", NumberText::duration(analysis.duration));
  if (const auto key = analysis.dominantKey()) add("Key", key->label());
  if (analysis.beatsPerMinute)
    add("Tempo", NumberText::fixed(static_cast<double>(*analysis.beatsPerMinute), 1) + " BPM");
  add("Grid", counted(analysis.beats, "beat") + ", " + counted(analysis.bars, "bar"));
  add("Source", analysis.source + ", " + ISO8601Date::text(analysis.analysedAt));
  return table.text(console);
}

std::string stems(const MusicAnalysisResult& analysis, const Console& console) {
  constexpr std::size_t kNames = 20, kFewest = 16, kMost = 72;  // columns
  const std::size_t free = std::max(console.traits().columns, kNames + kFewest) - kNames;
  TextTable table({{"Stem"}, {"Present", TextTable::Alignment::right}, {""}}, kIndent);
  for (const auto& stem : analysis.stems)
    table.addRow({{std::string(displayName(stem.stem))},
                  {NumberText::fixed(analysis.coverage(stem.stem), 1) + " %"},
                  {lane(stem, analysis.duration, std::min(free, kMost))}});
  return analysis.stems.empty() ? "" : "\n" + table.text(console);
}

std::string sections(const MusicAnalysisResult& analysis, const Console& console) {
  using Alignment = TextTable::Alignment;
  TextTable table({{"Section", Alignment::right},
                   {"Start", Alignment::right},
                   {"End", Alignment::right},
                   {"Length", Alignment::right},
                   {"Bar", Alignment::right}},
                  kIndent);
  std::size_t number = 0;
  for (const TimeSpan& section : analysis.sections) {
    const auto position = analysis.position(section.start);
    table.addRow({{std::to_string(++number)},
                  {NumberText::duration(section.start)},
                  {NumberText::duration(section.end)},
                  {NumberText::duration(section.duration())},
                  {position ? std::to_string(position->bar) : ""}});
  }
  return analysis.sections.empty() ? "" : "\n" + table.text(console);
}

}  // namespace

std::string lane(const MusicAnalysisResult::StemLane& stem, double duration, std::size_t columns) {
  std::string row;
  if (!stem.activity.empty()) {
    for (const float level : MusicActivityDecimation::columns(stem.activity, 0, duration,
                                                              static_cast<std::int64_t>(columns)))
      row += levelBar(static_cast<double>(level));
    return row;
  }
  for (std::size_t column = 0; column < columns; ++column) {
    const double middle =
        duration * (static_cast<double>(column) + 0.5) / static_cast<double>(columns);
    const bool isPresent = std::any_of(stem.ranges.begin(), stem.ranges.end(),
                                       [&](const auto& range) { return range.contains(middle); });
    row += levelBar(isPresent ? 1 : 0);
  }
  return row;
}

std::string block(const std::string& name, const MusicAnalysisResult& analysis,
                  const Console& console) {
  return console.styled(Style::bold, TerminalText::escaped(name)) + "\n" +
         figures(analysis, console) + stems(analysis, console) + sections(analysis, console);
}

std::string json(const std::string& name, const MusicAnalysisResult& analysis) {
  JsonOutput::Document document;
  document.addName(name);
  document.add("looksLikeMusic", analysis.looksLikeMusic());
  if (const auto key = analysis.dominantKey()) document.add("dominantKey", key->label());
  document.addObjects("stemCoverage", analysis.stems, [&](const auto& stem) {
    document.add("stem", stem.stem);
    document.add("percentage", analysis.coverage(stem.stem));
  });
  document.addJSON("analysis", orvane::json::encode(analysis, JsonOutput::kRecordStyle));
  return document.takeLine();
}

}  // namespace orvane::cli::MusicOverview
