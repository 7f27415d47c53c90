#include "orvane/audio/chapter_list.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "orvane/audio/cue_sheet.h"
#include "orvane/text/json/json_reader.h"
#include "orvane/text/text_list.h"
#include "orvane/text/time_text.h"
#include "orvane/text/timed_list.h"
#include "orvane/text/utf8.h"

namespace orvane {

ChapterListError::~ChapterListError() = default;

namespace ChapterList {
namespace {

using TextList::trimmed;

double timeOf(std::string_view cell, const char* what, std::size_t line) {
  const auto text = trimmed(cell);
  if (const auto seconds = secondsFromTimeText(text)) return *seconds;
  if (text.empty()) throw TextListError(line, std::string("the ") + what + " is missing.");
  throw TextListError(
      line, std::string("the ") + what + " " + TextList::quoted(text) + " is no time in the file.");
}

/// A start with what may follow it. An end at the start is none: labels of some programs are
/// points.
ChapterMark markOf(TimedList::Entry entry) {
  const std::string end = entry.end.value_or("");
  ChapterMark mark{.startSeconds = timeOf(entry.start, "start", entry.line),
                   .name = std::move(entry.name).value_or("")};
  if (!isValidUTF8(mark.name)) throw TextListError(entry.line, "the name is not UTF-8.");
  if (trimmed(end).empty()) return mark;
  const double endSeconds = timeOf(end, "end", entry.line);
  if (endSeconds < mark.startSeconds)
    throw TextListError(entry.line, "the end lies before the start.");
  if (endSeconds > mark.startSeconds) mark.endSeconds = endSeconds;
  return mark;
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
  std::vector<ChapterMark> marks;
  const auto take = [&marks](TimedList::Entry entry) { marks.push_back(markOf(std::move(entry))); };
  switch (format) {
    case Format::json:
      return readJSON(text);
    case Format::csv:
      TimedList::readCSV(text,
                         {.start = {"start", "start (s)", "time"},
                          .end = {"end", "end (s)"},
                          .name = {"name", "label", "title"}},
                         take);
      return marks;
    case Format::audacityLabels:
      TimedList::readAudacityLabels(text, take);
      return marks;
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

Format formatOf(std::string_view bytes) {
  const std::string list = TextList::asUTF8(bytes);
  std::string_view text = TextList::withoutByteOrderMark(list);
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

std::vector<ChapterMark> read(std::string_view bytes, Format format) {
  std::vector<ChapterMark> marks;
  try {
    marks = readAs(TextList::asUTF8(bytes), format);
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
