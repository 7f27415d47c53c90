#include "orvane/text/timed_list.h"

#include <utility>

#include "orvane/text/text_list.h"

namespace orvane::TimedList {
namespace {

/// Which cell of a record holds what.
struct Columns {
  std::size_t start = 0;
  std::size_t end = 1;
  std::size_t name = 2;
};

/// From a header; absent when the record is none.
std::optional<Columns> columnsNamed(const TextList::Record& record, const ColumnNames& names) {
  const auto start = TextList::columnNamed(record, names.start);
  const auto end = TextList::columnNamed(record, names.end);
  if (!start && !end) return std::nullopt;
  if (!start) throw TextListError(record.line, "the header names no column \"start\".");
  if (!end && names.needsEnd)
    throw TextListError(record.line, "the header names no column \"end\".");
  const std::size_t none = record.cells.size();
  const auto name = TextList::columnNamed(record, names.name);
  return Columns{.start = *start, .end = end.value_or(none), .name = name.value_or(none)};
}

Entry entryOf(TextList::Record& record, const Columns& columns) {
  Entry entry{.line = record.line};
  const auto cell = [&](std::size_t column) {
    return column < record.cells.size() ? &record.cells[column] : nullptr;
  };
  if (auto* start = cell(columns.start)) entry.start = start->text;
  if (auto* end = cell(columns.end)) entry.end = end->text;
  auto* name = cell(columns.name);
  if (name != nullptr && (name->isQuoted || !name->text.empty()))
    entry.name = TextList::unguarded(std::move(name->text));
  return entry;
}

}  // namespace

void readCSV(std::string_view text, const ColumnNames& names, const Take& take) {
  TextList::CSVReader reader(TextList::withoutByteOrderMark(text));
  Columns columns;
  for (bool isFirst = true; auto record = reader.next();) {
    if (record->isEmpty()) continue;
    const auto named = isFirst ? columnsNamed(*record, names) : std::nullopt;
    isFirst = false;
    if (named) {
      columns = *named;
    } else {
      take(entryOf(*record, columns));
    }
  }
}

void readAudacityLabels(std::string_view text, const Take& take) {
  text = TextList::withoutByteOrderMark(text);
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::string_view line = TextList::takeLine(text);
    if (line.empty() || line.starts_with("\\\t")) continue;
    Entry entry{.line = number, .start = std::string(line.substr(0, line.find('\t')))};
    if (entry.start.size() < line.size()) {
      const std::string_view rest = line.substr(entry.start.size() + 1);
      entry.end = rest.substr(0, rest.find('\t'));
      if (entry.end->size() + 1 < rest.size()) entry.name = rest.substr(entry.end->size() + 1);
    }
    take(std::move(entry));
  }
}

}  // namespace orvane::TimedList
