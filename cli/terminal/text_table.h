#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/terminal/console.h"

namespace orvane::cli {

/// A table of aligned columns for people. Cells are valid UTF-8 without control characters. On a
/// terminal that is too narrow the widest left-aligned columns give way: their cells are broken
/// into lines where the column says so, else shortened.
class TextTable {
 public:
  enum class Alignment { left, right };

  struct Column {
    std::string title{};
    Alignment alignment = Alignment::left;
    std::size_t gapBefore = 2;  ///< spaces between this column and the one before
    bool wraps = false;         ///< its words matter, all of them
  };

  struct Cell {
    std::string text{};
    Style style = Style::plain;
  };

  /// `indent` spaces stand before the first column.
  explicit TextTable(std::vector<Column> columns, std::size_t indent = 0);

  /// One cell per column; missing ones stay empty.
  void addRow(std::vector<Cell> cells);

  /// All lines without spaces at their ends; titles first, where there are any.
  std::string text(const Console& console) const;

 private:
  std::vector<std::size_t> widths(std::size_t limit) const;
  std::string lines(const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
                    const Console& console) const;
  std::string line(const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
                   const Console& console) const;

  std::vector<Column> columns_;
  std::size_t indent_;
  std::vector<std::vector<Cell>> rows_{};
};

}  // namespace orvane::cli
