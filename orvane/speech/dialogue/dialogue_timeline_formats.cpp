#include "orvane/speech/dialogue/dialogue_timeline_formats.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "orvane/text/text_list.h"
#include "orvane/text/utf8.h"

namespace orvane {

namespace DialogueTimelineFormats {
namespace {

using TextList::Cell;
using TextList::CSVReader;
using TextList::looksLikeFormula;
using TextList::quoted;
using TextList::Record;
using TextList::trimmed;
using TextList::unguarded;
using TextList::withoutByteOrderMark;

/// Fixed notation, which every program reads, with the shortest digits that give the same number.
std::string seconds(double value) {
  std::array<char, 400> digits;  // no double takes more than 343
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
  return {digits.data(), end.ptr};
}

double time(std::string_view cell, const char* name, std::size_t line) {
  const auto number = trimmed(cell);
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (number.empty())
    throw DialogueTimelineError(line, std::string("the ") + name + " is missing.");
  if (result.ec != std::errc() || result.ptr != number.data() + number.size() ||
      !std::isfinite(value))
    throw DialogueTimelineError(
        line, std::string("the ") + name + " " + quoted(number) + " is no number of seconds.");
  if (value < 0)
    throw DialogueTimelineError(
        line, std::string("the ") + name + " " + quoted(number) + " lies before the file.");
  return value;
}

DialogueRegion region(std::string_view start, std::string_view end,
                      std::optional<std::string> label, std::size_t line) {
  const double startTime = time(start, "start", line);
  const double endTime = time(end, "end", line);
  if (endTime < startTime)
    throw DialogueTimelineError(line, "the end " + quoted(trimmed(end)) +
                                          " lies before the start " + quoted(trimmed(start)) + ".");
  if (label && !isValidUTF8(*label)) throw DialogueTimelineError(line, "the label is not UTF-8.");
  return {UUID::random(), startTime, endTime, std::move(label)};
}

/// Apostrophes that stand before a formula already count too, so that taking one away is the exact
/// way back.
std::string guarded(const std::string& cell) {
  return looksLikeFormula(cell) ? "'" + cell : cell;
}

/// In quotes where the format asks for it, and when empty: no label has no quotes.
std::string csvCell(const std::string& text) {
  if (!text.empty() && text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"') result += '"';
    result += c;
  }
  return result + "\"";
}

const char* originName(const DialogueRegion& region) {
  if (region.isManual()) return "drawn";
  return region.isPristineVAD() ? "detected" : "changed";
}

/// Which cell of a record holds what.
struct Columns {
  std::size_t start = 0;
  std::size_t end = 1;
  std::size_t label = 2;

  /// From a header; absent when the record is none.
  static std::optional<Columns> named(const Record& record) {
    const auto start = TextList::columnNamed(record, {"start"});
    const auto end = TextList::columnNamed(record, {"end"});
    if (!start && !end) return std::nullopt;
    if (!start || !end)
      throw DialogueTimelineError(record.line, std::string("the header names no column \"") +
                                                   (start ? "end" : "start") + "\".");
    const auto label = TextList::columnNamed(record, {"label"});
    return Columns{.start = *start, .end = *end, .label = label.value_or(record.cells.size())};
  }
};

DialogueRegion regionOf(const Record& record, const Columns& columns) {
  const auto cell = [&](std::size_t column) {
    return column < record.cells.size() ? record.cells[column] : Cell{};
  };
  const Cell label = cell(columns.label);
  std::optional<std::string> labelText;
  if (!label.text.empty() || label.isQuoted) labelText = unguarded(label.text);
  return region(cell(columns.start).text, cell(columns.end).text, std::move(labelText),
                record.line);
}

}  // namespace

std::optional<Format> formatFromName(std::string_view name) noexcept {
  if (name == "csv") return Format::csv;
  if (name == "audacity") return Format::audacityLabels;
  return std::nullopt;
}

Format formatOf(std::string_view text) noexcept {
  text = withoutByteOrderMark(text);
  const auto start = text.find_first_not_of("\r\n");
  const auto tab = text.find('\t');
  if (start == std::string_view::npos || tab == std::string_view::npos || tab < start)
    return Format::csv;
  const auto first = trimmed(text.substr(start, tab - start));
  double ignored = 0;
  const auto result = std::from_chars(first.data(), first.data() + first.size(), ignored);
  const bool isNumber = result.ec == std::errc() && result.ptr == first.data() + first.size();
  return isNumber ? Format::audacityLabels : Format::csv;
}

std::string text(const std::vector<DialogueRegion>& regions, Format format) {
  return format == Format::csv ? csv(regions) : audacityLabels(regions);
}

std::vector<DialogueRegion> regions(std::string_view text, Format format) {
  return format == Format::csv ? regionsFromCSV(text) : regionsFromAudacityLabels(text);
}

std::string csv(const std::vector<DialogueRegion>& regions) {
  std::string result = "start,end,label,origin\r\n";
  for (const auto& region : regions) {
    result += seconds(region.start) + "," + seconds(region.end) + ",";
    if (region.label) result += csvCell(guarded(*region.label));
    result += std::string(",") + originName(region) + "\r\n";
  }
  return result;
}

std::vector<DialogueRegion> regionsFromCSV(std::string_view text) {
  CSVReader reader(withoutByteOrderMark(text));
  std::vector<DialogueRegion> regions;
  Columns columns;
  bool isFirst = true;
  while (const auto record = reader.next()) {
    if (record->isEmpty()) continue;
    const auto named = isFirst ? Columns::named(*record) : std::nullopt;
    if (named) columns = *named;
    if (!named) regions.push_back(regionOf(*record, columns));
    isFirst = false;
  }
  return regions;
}

std::string audacityLabels(const std::vector<DialogueRegion>& regions) {
  std::string result;
  for (const auto& region : regions) {
    std::string label = region.label.value_or("");
    for (char& c : label)
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    result += seconds(region.start) + "\t" + seconds(region.end) + "\t" + label + "\n";
  }
  return result;
}

std::vector<DialogueRegion> regionsFromAudacityLabels(std::string_view text) {
  text = withoutByteOrderMark(text);
  std::vector<DialogueRegion> regions;
  for (std::size_t lineNumber = 1; !text.empty(); ++lineNumber) {
    const auto line = TextList::takeLine(text);
    if (line.empty() || line.starts_with("\\\t")) continue;
    const auto firstTab = line.find('\t');
    if (firstTab == std::string_view::npos)
      throw DialogueTimelineError(lineNumber, "there is no tab behind the start.");
    const auto behindStart = line.substr(firstTab + 1);
    const auto secondTab = behindStart.find('\t');
    std::optional<std::string> label;
    if (secondTab != std::string_view::npos && secondTab + 1 < behindStart.size())
      label = behindStart.substr(secondTab + 1);
    regions.push_back(region(line.substr(0, firstTab), behindStart.substr(0, secondTab),
                             std::move(label), lineNumber));
  }
  return regions;
}

}  // namespace DialogueTimelineFormats
}  // namespace orvane
