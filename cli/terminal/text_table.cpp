#include "cli/terminal/text_table.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "cli/terminal/terminal_text.h"

namespace orvane::cli {

TextTable::TextTable(std::vector<Column> columns, std::size_t indent)
    : columns_(std::move(columns)), indent_(indent) {}

void TextTable::addRow(std::vector<Cell> cells) {
  cells.resize(columns_.size());
  rows_.push_back(std::move(cells));
}

std::vector<std::size_t> TextTable::widths(std::size_t limit) const {
  std::vector<std::size_t> widths;
  std::size_t sum = indent_;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    std::size_t width = TerminalText::width(columns_[i].title);
    for (const auto& row : rows_) width = std::max(width, TerminalText::width(row[i].text));
    widths.push_back(width);
    sum += width + (i > 0 ? columns_[i].gapBefore : 0);
  }
  for (; sum > limit; --sum) {
    constexpr std::size_t kNarrowest = 8;  // below, nothing can be recognised
    std::size_t widest = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i)
      if (columns_[i].alignment == Alignment::left && widths[i] > widths[widest]) widest = i;
    if (columns_[widest].alignment != Alignment::left || widths[widest] <= kNarrowest) break;
    --widths[widest];
  }
  return widths;
}

std::string TextTable::text(const Console& console) const {
  const auto widths = this->widths(console.tableColumns());
  std::vector<Cell> titles;
  for (const Column& column : columns_) titles.push_back({column.title, Style::dim});
  const bool hasTitles = std::any_of(columns_.begin(), columns_.end(),
                                     [](const Column& column) { return !column.title.empty(); });
  std::string result = hasTitles ? lines(titles, widths, console) : "";
  for (const auto& row : rows_) result += lines(row, widths, console);
  return result;
}

std::string TextTable::lines(const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
                             const Console& console) const {
  std::vector<std::vector<Cell>> lines(1, std::vector<Cell>(cells.size()));
  for (std::size_t i = 0; i < cells.size(); ++i) {
    std::string text = cells[i].text;
    if (TerminalText::width(text) > widths[i] && columns_[i].wraps)
      text = TerminalText::wrapped(text, widths[i]);
    std::istringstream pieces(text);
    std::size_t number = 0;
    for (std::string piece; std::getline(pieces, piece); ++number) {
      if (number == lines.size()) lines.emplace_back(cells.size());
      lines[number][i] = {TerminalText::shortened(piece, widths[i]), cells[i].style};
    }
  }
  std::string result;
  for (const auto& each : lines) result += line(each, widths, console);
  return result;
}

std::string TextTable::line(const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
                            const Console& console) const {
  std::string result(indent_, ' ');
  std::size_t pendingSpaces = 0;  // written only when something follows
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::size_t padding = widths[i] - TerminalText::width(cells[i].text);
    const bool isRight = columns_[i].alignment == Alignment::right;
    pendingSpaces += (i > 0 ? columns_[i].gapBefore : 0) + (isRight ? padding : 0);
    if (!cells[i].text.empty()) {
      result.append(pendingSpaces, ' ');
      result += console.styled(cells[i].style, cells[i].text);
      pendingSpaces = 0;
    }
    if (!isRight) pendingSpaces += padding;
  }
  return result + "\n";
}

}  // namespace orvane::cli
