#include "orvane/speech/dialogue_timeline_formats.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "orvane/platform/utf8.h"

namespace orvane {

DialogueTimelineError::DialogueTimelineError(std::size_t line, const std::string& problem)
    : Error("Line " + std::to_string(line) + ": " + problem), line_(line) {}
DialogueTimelineError::~DialogueTimelineError() = default;

namespace DialogueTimelineFormats {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// What makes a spreadsheet take a cell for a formula.
constexpr std::string_view kFormulaStarts = "=+-@\t\r";

struct Cell {
  std::string text{};
  bool isQuoted = false;
};

struct Record {
  std::size_t line = 0;
  std::vector<Cell> cells{};

  bool isEmpty() const { return cells.size() == 1 && cells[0].text.empty() && !cells[0].isQuoted; }
};

/// Fixed notation, which every program reads, with the shortest digits that give the same number.
std::string seconds(double value) {
  std::array<char, 400> digits;  // no double takes more than 343
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
  return {digits.data(), end.ptr};
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const auto start = text.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

/// Enough of what a file holds to recognise it by.
std::string quoted(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  if (text.size() <= kLongest) return "\"" + std::string(text) + "\"";
  return "\"" + std::string(text.substr(0, kLongest)) + "...\"";
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

bool looksLikeFormula(std::string_view cell) {
  const auto first = cell.find_first_not_of('\'');
  return first != std::string_view::npos &&
         kFormulaStarts.find(cell[first]) != std::string_view::npos;
}

/// Apostrophes that stand before a formula already count too, so that taking one away is the exact
/// way back.
std::string guarded(const std::string& cell) {
  return looksLikeFormula(cell) ? "'" + cell : cell;
}

std::string unguarded(std::string cell) {
  if (cell.starts_with('\'') && looksLikeFormula(cell)) cell.erase(0, 1);
  return cell;
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

/// Takes a text apart as RFC 4180 says, with either line end.
class CSVReader {
 public:
  explicit CSVReader(std::string_view text) : text_(text) {}

  /// Absent at the end.
  std::optional<Record> next() {
    if (isAtEnd()) return std::nullopt;
    Record record{.line = line_};
    while (true) {
      record.cells.push_back(readCell(record.line));
      if (isAtEnd()) return record;
      const char behind = text_[position_];
      if (behind == '\r') ++position_;
      ++position_;
      if (behind == ',') continue;
      ++line_;
      return record;
    }
  }

 private:
  bool isAtEnd() const { return position_ == text_.size(); }

  bool isAtLineEnd() const {
    return text_[position_] == '\n' || text_.substr(position_).starts_with("\r\n");
  }

  /// Stops at the comma, line end or end of the text behind the cell.
  Cell readCell(std::size_t recordLine) {
    if (!isAtEnd() && text_[position_] == '"') return readQuoted(recordLine);
    Cell cell;
    while (!isAtEnd() && text_[position_] != ',' && !isAtLineEnd()) {
      if (text_[position_] == '"')
        throw DialogueTimelineError(line_, "a quotation mark stands inside a cell without quotes.");
      cell.text += text_[position_++];
    }
    return cell;
  }

  Cell readQuoted(std::size_t recordLine) {
    Cell cell{.isQuoted = true};
    for (++position_; !isAtEnd(); ++position_) {
      const char c = text_[position_];
      if (c == '\n') ++line_;
      if (c != '"') {
        cell.text += c;
      } else if (text_.substr(position_ + 1).starts_with('"')) {
        cell.text += c;
        ++position_;
      } else {
        ++position_;
        if (!isAtEnd() && text_[position_] != ',' && !isAtLineEnd())
          throw DialogueTimelineError(line_, "something stands behind a closing quotation mark.");
        return cell;
      }
    }
    throw DialogueTimelineError(recordLine, "a quotation mark is never closed.");
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;
};

/// Which cell of a record holds what.
struct Columns {
  std::size_t start = 0;
  std::size_t end = 1;
  std::size_t label = 2;

  /// From a header; absent when the record is none.
  static std::optional<Columns> named(const Record& record) {
    const auto find = [&](std::string_view name) {
      const auto found = std::find_if(record.cells.begin(), record.cells.end(), [&](const Cell& c) {
        const auto text = trimmed(c.text);
        return std::equal(text.begin(), text.end(), name.begin(), name.end(), [](char a, char b) {
          return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b;
        });
      });
      return static_cast<std::size_t>(found - record.cells.begin());
    };
    const Columns columns{.start = find("start"), .end = find("end"), .label = find("label")};
    const std::size_t none = record.cells.size();
    if (columns.start == none && columns.end == none) return std::nullopt;
    if (columns.start == none || columns.end == none)
      throw DialogueTimelineError(record.line,
                                  "the header names no column \"" +
                                      std::string(columns.start == none ? "start" : "end") + "\".");
    return columns;
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

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return text;
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
    auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
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
