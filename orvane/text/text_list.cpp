#include "orvane/text/text_list.h"

#include <algorithm>
#include <utility>

#include "orvane/text/extension_text.h"
#include "orvane/text/utf8.h"

namespace orvane {

TextListError::TextListError(std::size_t line, const std::string& problem)
    : Error("Line " + std::to_string(line) + ": " + problem), line_(line) {}
TextListError::~TextListError() = default;

namespace TextList {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// What makes a spreadsheet take a cell for a formula.
constexpr std::string_view kFormulaStarts = "=+-@\t\r";

}  // namespace

std::string_view withoutByteOrderMark(std::string_view text) noexcept {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return text;
}

std::string asUTF8(std::string_view text) {
  const bool isBig = text.starts_with("\xFE\xFF");
  if (!isBig && !text.starts_with("\xFF\xFE")) return std::string(text);
  const auto unit = [&](std::size_t i) -> char32_t {
    if (i + 1 >= text.size()) return 0;
    const char32_t first = static_cast<unsigned char>(text[i]);
    const char32_t second = static_cast<unsigned char>(text[i + 1]);
    return isBig ? first << 8U | second : second << 8U | first;
  };
  const auto isIn = [](char32_t value, char32_t first) {
    return value >= first && value < first + 0x400;
  };
  std::string result;
  for (std::size_t i = 2; i < text.size(); i += 2) {
    char32_t character = i + 1 < text.size() ? unit(i) : 0xFFFD;
    if (isIn(character, 0xD800) && isIn(unit(i + 2), 0xDC00)) {
      character = 0x10000 + ((character - 0xD800) << 10U) + (unit(i + 2) - 0xDC00);
      i += 2;
    } else if (isIn(character, 0xD800) || isIn(character, 0xDC00)) {
      character = 0xFFFD;
    }
    appendUTF8(result, character);
  }
  return result;
}

std::string_view trimmed(std::string_view text) noexcept {
  constexpr std::string_view kBlanks = " \t";
  const auto start = text.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

std::string quoted(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  if (text.size() <= kLongest) return "\"" + std::string(text) + "\"";
  return "\"" + std::string(text.substr(0, kLongest)) + "...\"";
}

std::string_view takeLine(std::string_view& text) noexcept {
  auto line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

bool startsLikeFormula(std::string_view cell) noexcept {
  return !cell.empty() && kFormulaStarts.find(cell.front()) != std::string_view::npos;
}

bool looksLikeFormula(std::string_view cell) noexcept {
  return startsLikeFormula(cell.substr(std::min(cell.find_first_not_of('\''), cell.size())));
}

std::string csvQuoted(std::string_view cell) {
  std::string result = "\"";
  for (const char c : cell) {
    if (c == '"') result += '"';
    result += c;
  }
  return result + '"';
}

std::string csvCell(std::string_view cell) {
  const bool needsQuotes = cell.find_first_of(",\"\r\n") != std::string_view::npos;
  return needsQuotes ? csvQuoted(cell) : std::string(cell);
}

std::string unguarded(std::string cell) {
  if (cell.starts_with('\'') && looksLikeFormula(cell)) cell.erase(0, 1);
  return cell;
}

std::optional<Record> CSVReader::next() {
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

bool CSVReader::isAtLineEnd() const {
  return text_[position_] == '\n' || text_.substr(position_).starts_with("\r\n");
}

/// Stops at the comma, line end or end of the text behind the cell.
Cell CSVReader::readCell(std::size_t recordLine) {
  if (!isAtEnd() && text_[position_] == '"') return readQuoted(recordLine);
  Cell cell;
  while (!isAtEnd() && text_[position_] != ',' && !isAtLineEnd()) {
    if (text_[position_] == '"')
      throw TextListError(line_, "a quotation mark stands inside a cell without quotes.");
    cell.text += text_[position_++];
  }
  return cell;
}

Cell CSVReader::readQuoted(std::size_t recordLine) {
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
        throw TextListError(line_, "something stands behind a closing quotation mark.");
      return cell;
    }
  }
  throw TextListError(recordLine, "a quotation mark is never closed.");
}

std::optional<std::size_t> columnNamed(const Record& header,
                                       const std::vector<std::string_view>& names) {
  for (std::size_t i = 0; i < header.cells.size(); ++i)
    for (const std::string_view name : names)
      if (isSameIgnoringCase(trimmed(header.cells[i].text), name)) return i;
  return std::nullopt;
}

}  // namespace TextList
}  // namespace orvane
