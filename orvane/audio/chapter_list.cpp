#include "orvane/audio/chapter_list.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "orvane/audio/cue_sheet.h"
#include "orvane/text/json/json_reader.h"
#include "orvane/text/text_list.h"
#include "orvane/text/time_text.h"
#include "orvane/text/utf8.h"

namespace orvane {

ChapterListError::~ChapterListError() = default;

namespace ChapterList {
namespace {

using TextList::Record;
using TextList::trimmed;

/// The same text when it is UTF-8.
std::string nameOf(std::string_view text, std::size_t line) {
  if (!isValidUTF8(text)) throw TextListError(line, "the name is not UTF-8.");
  return std::string(text);
}

double timeOf(std::string_view cell, const char* what, std::size_t line) {
  const auto text = trimmed(cell);
  if (const auto seconds = secondsFromTimeText(text)) return *seconds;
  if (text.empty()) throw TextListError(line, std::string("the ") + what + " is missing.");
  throw TextListError(
      line, std::string("the ") + what + " " + TextList::quoted(text) + " is no time in the file.");
}

/// A start with what may follow it. An end at the start is none: labels of some programs are
/// points.
ChapterMark markOf(std::string_view start, std::string_view end, std::string_view name,
                   std::size_t line) {
  ChapterMark mark{.startSeconds = timeOf(start, "start", line), .name = nameOf(name, line)};
  if (trimmed(end).empty()) return mark;
  const double endSeconds = timeOf(end, "end", line);
  if (endSeconds < mark.startSeconds) throw TextListError(line, "the end lies before the start.");
  if (endSeconds > mark.startSeconds) mark.endSeconds = endSeconds;
  return mark;
}

/// Which cell of a record holds what.
struct Columns {
  std::size_t start = 0;
  std::size_t end = 1;
  std::size_t name = 2;
};

/// From a header; absent when the record is none.
std::optional<Columns> columnsNamed(const Record& record) {
  const auto start = TextList::columnNamed(record, {"start", "start (s)", "time"});
  const auto end = TextList::columnNamed(record, {"end", "end (s)"});
  const auto name = TextList::columnNamed(record, {"name", "label", "title"});
  if (!start && !end && !name) return std::nullopt;
  if (!start) throw TextListError(record.line, "the header names no column \"start\".");
  const std::size_t none = record.cells.size();
  return Columns{*start, end.value_or(none), name.value_or(none)};
}

std::vector<ChapterMark> readCSV(std::string_view text) {
  TextList::CSVReader reader(TextList::withoutByteOrderMark(text));
  std::vector<ChapterMark> marks;
  Columns columns;
  for (bool isFirst = true; const auto record = reader.next();) {
    if (record->isEmpty()) continue;
    const auto named = isFirst ? columnsNamed(*record) : std::nullopt;
    isFirst = false;
    if (named) {
      columns = *named;
      continue;
    }
    const auto cell = [&](std::size_t column) {
      return column < record->cells.size() ? record->cells[column].text : std::string();
    };
    marks.push_back(markOf(cell(columns.start), cell(columns.end),
                           TextList::unguarded(cell(columns.name)), record->line));
  }
  return marks;
}

std::vector<ChapterMark> readAudacityLabels(std::string_view text) {
  text = TextList::withoutByteOrderMark(text);
  std::vector<ChapterMark> marks;
  for (std::size_t number = 1; !text.empty(); ++number) {
    std::string_view line = TextList::takeLine(text);
    if (line.empty() || line.starts_with("\\\t")) continue;  // frequencies of the line before
    const auto takeCell = [&line] {
      const auto cell = line.substr(0, line.find('\t'));
      line.remove_prefix(std::min(cell.size() + 1, line.size()));
      return cell;
    };
    const auto start = takeCell();
    const auto end = takeCell();
    marks.push_back(markOf(start, end, line, number));
  }
  return marks;
}

double readTime(json::Reader& reader) {
  const double seconds = reader.readDouble();
  if (!(seconds >= 0)) reader.failCorrupted("lies before the file.");
  return seconds;
}

/// The keys of a chapter: three for its start, three for its end, two for its name.
constexpr std::array<std::string_view, 8> kChapterKeys = {
    "startSec", "startTime", "start", "endSec", "endTime", "end", "name", "title"};

ChapterMark readChapter(json::Reader& reader) {
  ChapterMark mark;
  std::array<bool, kChapterKeys.size()> isFound{};
  reader.beginObject();
  while (const auto found = reader.nextKey()) {
    const auto index = static_cast<std::size_t>(
        std::find(kChapterKeys.begin(), kChapterKeys.end(), *found) - kChapterKeys.begin());
    if (index == kChapterKeys.size()) {
      reader.skipValue();
      continue;
    }
    const json::Reader::Step step(reader, kChapterKeys[index]);
    reader.requireFirst(isFound[index]);
    if (index < 3) {
      mark.startSeconds = readTime(reader);
    } else if (reader.skipNull()) {
      continue;
    } else if (index < 6) {
      mark.endSeconds = readTime(reader);
    } else {
      mark.name = reader.readString();
    }
  }
  if (!isFound[0] && !isFound[1] && !isFound[2]) reader.failMissing("startSec");
  if (mark.endSeconds && *mark.endSeconds < mark.startSeconds)
    reader.failCorrupted("ends before it starts.");
  return mark;
}

void readChapters(json::Reader& reader, std::vector<ChapterMark>& marks) {
  reader.beginArray();
  while (reader.nextElement()) {
    const json::Reader::Step step(reader, marks.size());
    marks.push_back(readChapter(reader));
    if (marks.size() > kMaximumChapters) return;  // told by `read`
  }
}

/// An object of which one key holds chapters: "entries" of a table, "chapters" of a report.
void readHolder(json::Reader& reader, std::vector<ChapterMark>& marks, bool isTable) {
  bool hasEntries = false;
  bool hasChapters = false;
  reader.beginObject();
  while (const auto found = reader.nextKey()) {
    const std::string key(*found);
    const json::Reader::Step step(reader, key);
    const bool isEntries = key == "entries";
    const bool isChapters = !isTable && key == "chapters";
    if (isEntries || isChapters) reader.requireFirst(isEntries ? hasEntries : hasChapters);
    if (!isEntries && !isChapters) {
      reader.skipValue();
    } else if (reader.isAtArray()) {
      readChapters(reader, marks);
    } else if (isChapters) {
      if (!reader.skipNull()) readHolder(reader, marks, true);
    } else {
      reader.skipValue();
    }
    if (marks.size() > kMaximumChapters) return;
  }
}

std::vector<ChapterMark> readJSON(std::string_view text) {
  json::Reader reader(text);
  std::vector<ChapterMark> marks;
  if (reader.isAtArray()) {
    readChapters(reader, marks);
  } else {
    readHolder(reader, marks, false);
  }
  if (marks.size() <= kMaximumChapters) reader.finish();
  return marks;
}

std::vector<ChapterMark> readAs(std::string_view text, Format format) {
  switch (format) {
    case Format::json:
      return readJSON(text);
    case Format::csv:
      return readCSV(text);
    case Format::audacityLabels:
      return readAudacityLabels(text);
    case Format::cueSheet:
      return readCueSheet(text);
  }
  return {};
}

/// Whether a line begins with a time and a tab.
bool isLabelLine(std::string_view line) {
  const auto tab = line.find('\t');
  return tab != std::string_view::npos && secondsFromTimeText(trimmed(line.substr(0, tab)));
}

}  // namespace

Format formatOf(std::string_view text) noexcept {
  text = TextList::withoutByteOrderMark(text);
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  if (text.starts_with('{') || text.starts_with('[')) return Format::json;
  auto rest = text;
  const auto first = TextList::takeLine(rest);
  if (isLabelLine(first)) return Format::audacityLabels;
  return isCueSheetLine(first) ? Format::cueSheet : Format::csv;
}

std::string_view origin(Format format) noexcept {
  switch (format) {
    case Format::json:
      return "imported";
    case Format::csv:
      return "imported (CSV)";
    case Format::audacityLabels:
      return "imported (Audacity labels)";
    case Format::cueSheet:
      return "imported (cue sheet)";
  }
  return {};
}

std::vector<ChapterMark> read(std::string_view text, Format format) {
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
    throw ChapterListError("The list is UTF-16; only UTF-8 can be read.");
  std::vector<ChapterMark> marks;
  try {
    marks = readAs(text, format);
  } catch (const TextListError& error) {
    throw ChapterListError(error.errorDescription());
  } catch (const DecodingError& error) {
    throw ChapterListError(error.errorDescription());
  }
  if (marks.empty()) throw ChapterListError("The list holds no chapters.");
  if (marks.size() > kMaximumChapters)
    throw ChapterListError("The list holds more than " + std::to_string(kMaximumChapters) +
                           " chapters.");
  return marks;
}

}  // namespace ChapterList
}  // namespace orvane
