#include "cli/output/analysis_rows.h"

#include <algorithm>
#include <utility>

#include "cli/output/number_text.h"
#include "cli/output/target_findings.h"
#include "cli/terminal/terminal_text.h"

namespace orvane::cli {
namespace {

using Cell = TextTable::Cell;
using OfflineAnalysisPipeline::Result;

constexpr std::size_t kGap = 2;             // before a name, and before titles that are cut
constexpr std::size_t kVerdict = 9 + kGap;  // "normalize"
constexpr std::size_t kShortestName = 16;

/// How telling a column is; the verdict on a target and the loudness always stay.
enum Rank { least, little, some, more, much, always };

std::string rightAligned(const std::string& text, std::size_t columns) {
  const std::size_t width = TerminalText::width(text);
  return std::string(columns - std::min(width, columns), ' ') + text;
}

Cell verdictCell(const std::optional<TargetVerdict>& verdict) {
  if (!verdict) return {"-"};
  const std::string word = TargetFindings::word(*verdict);
  if (word == "pass") return {word, Style::green};
  return {word, word == "fail" ? Style::red : Style::yellow};
}

Cell distanceCell(const std::optional<TargetVerdict>& verdict) {
  const auto distance = verdict ? TargetFindings::deltaLU(*verdict) : std::nullopt;
  return {distance ? NumberText::signedFixed(*distance, 1) : "-"};
}

}  // namespace

AnalysisRows::AnalysisRows(const Console& console, const Columns& columns)
    : console_(console), nameColumns_(console.tableColumns()) {
  addFigures();
  if (columns.speech) {
    columns_.push_back({"Speech", 8, Rank::much, [](const MeasuredFile& file) -> Cell {
                          const bool isKnown = file.result.speechHistory.has_value();
                          return {isKnown ? NumberText::fixed(file.result.speechGatedLUFS, 1)
                                          : "-"};
                        }});
    columns_.push_back({"Sp %", 7, Rank::more, [](const MeasuredFile& file) -> Cell {
                          const bool isKnown = file.result.speechHistory.has_value();
                          return {isKnown ? NumberText::fixed(file.result.speechPercentage, 1)
                                          : "-"};
                        }});
  }
  for (const auto& id : columns.targetIDs) addTarget(id);
  fit();
}

void AnalysisRows::addFigures() {
  const auto add = [this](std::string title, std::size_t width, Rank rank, float Result::*figure,
                          int decimals) {
    columns_.push_back({std::move(title), width, rank, [=](const MeasuredFile& file) -> Cell {
                          return {NumberText::fixed(file.result.*figure, decimals)};
                        }});
  };
  // EBU Tech 3341, 2.8: loudness is shown with a resolution of 0.1.
  add("I LUFS", 8, Rank::always, &Result::integratedLUFS, 1);
  add("LRA LU", 8, Rank::much, &Result::loudnessRange, 1);
  add("M max", 7, Rank::least, &Result::maxMomentaryLUFS, 1);
  add("S max", 7, Rank::little, &Result::maxShortTermLUFS, 1);
  columns_.push_back({"dBTP", 8, Rank::always, [](const MeasuredFile& file) -> Cell {
                        const float peak = file.result.truePeakDB;
                        // Above full scale the waveform clips in every converter.
                        return {NumberText::fixed(peak, 2), peak > 0 ? Style::red : Style::plain};
                      }});
  add("dBFS", 8, Rank::least, &Result::samplePeakDB, 2);
  columns_.push_back({"DR", 4, Rank::some, [](const MeasuredFile& file) -> Cell {
                        return {std::to_string(file.result.dynamicRange)};
                      }});
  columns_.push_back({"Duration", 13, Rank::some, [](const MeasuredFile& file) -> Cell {
                        return {NumberText::duration(file.result.durationSeconds)};
                      }});
}

void AnalysisRows::addTarget(const std::string& id) {
  constexpr std::size_t kLongest = 16;
  columns_.push_back({id, std::clamp(id.size() + kGap, kVerdict, kLongest), Rank::always,
                      [id](const MeasuredFile& file) {
                        return verdictCell(TargetFindings::of(file.report, id));
                      }});
  columns_.push_back({"by LU", 7, Rank::much, [id](const MeasuredFile& file) {
                        return distanceCell(TargetFindings::of(file.report, id));
                      }});
}

void AnalysisRows::fit() {
  const auto width = [this] {
    std::size_t sum = kGap;
    for (const Column& column : columns_) sum += column.width;
    return sum;
  };
  while (width() + kShortestName > nameColumns_) {
    const auto first = std::ranges::min_element(columns_, {}, &Column::rank);
    if (first->rank == Rank::always) break;
    columns_.erase(first);
  }
  while (width() + kShortestName > nameColumns_) {
    const auto widest = std::ranges::max_element(columns_, {}, &Column::width);
    if (widest->width <= kVerdict) break;
    --widest->width;
  }
  nameColumns_ -= std::min(width(), nameColumns_ - kShortestName);
}

std::string AnalysisRows::titles() const {
  std::string line;
  for (const Column& column : columns_)
    line += rightAligned(TerminalText::shortened(column.title, column.width - kGap), column.width);
  return console_.styled(Style::dim, line + "  File") + "\n";
}

std::string AnalysisRows::row(const MeasuredFile& file) const {
  std::string line;
  for (const Column& column : columns_) {
    const Cell cell = column.cell(file);
    line += console_.styled(cell.style, rightAligned(cell.text, column.width));
  }
  const auto name = TerminalText::escaped(file.name.shown());
  return line + "  " + TerminalText::shortened(name, nameColumns_) + "\n";
}

}  // namespace orvane::cli
