#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cli/commands/measured_file.h"
#include "cli/terminal/console.h"
#include "cli/terminal/text_table.h"

namespace orvane::cli {

/// Measured files with one line each, in columns that are known before the first of them is
/// measured. On a terminal that is too narrow for all columns the less telling ones are left out,
/// and names are shortened.
class AnalysisRows {
 public:
  struct Columns {
    bool speech = false;
    std::vector<std::string> targetIDs{};  ///< a verdict and a distance of each
  };

  AnalysisRows(const Console& console, const Columns& columns);

  /// The heads of the columns.
  std::string titles() const;

  /// The figures of one file, its name at the end.
  std::string row(const MeasuredFile& file) const;

 private:
  struct Column {
    std::string title{};
    std::size_t width = 0;  ///< with the gap before it
    int rank = 0;           ///< the lowest one goes first
    std::function<TextTable::Cell(const MeasuredFile&)> cell{};
  };

  void addFigures();
  void addTarget(const std::string& id);
  void fit();

  const Console& console_;
  std::vector<Column> columns_{};
  std::size_t nameColumns_;  ///< that a name may take
};

}  // namespace orvane::cli
