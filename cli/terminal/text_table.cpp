#include "cli/terminal/text_table.h"

#include <algorithm>
#include <utility>

#include "cli/terminal/terminal_text.h"

namespace orvane::cli {

TextTable::TextTable(std::vector<Column> columns, std::size_t indent)
    : columns_(std::move(columns)), indent_(indent) {}

void TextTable::addRow(std::vector<Cell> cells) {
  cells.resize(columns_.size());
  rows_.push_back(std::move(cells));
}

std::string TextTable::text(const Console& console) const {
  std::vector<std::size_t> widths;
  std::vector<Cell> titles;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    std::size_t width = TerminalText::width(columns_[i].title);
    for (const auto& row : rows_) width = std::max(width, TerminalText::width(row[i].text));
    widths.push_back(width);
    titles.push_back({columns_[i].title, Style::dim});
  }
  const bool hasTitles = std::any_of(columns_.begin(), columns_.end(),
                                     [](const Column& column) { return !column.title.empty(); });
  std::string result = hasTitles ? line(titles, widths, console) : "";
  for (const auto& row : rows_) result += line(row, widths, console);
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
