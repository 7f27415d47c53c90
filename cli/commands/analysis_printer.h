#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/measured_file.h"
#include "cli/exit_code.h"
#include "cli/output/analysis_rows.h"
#include "cli/output/batch_closing.h"
#include "cli/output/target_findings.h"
#include "cli/terminal/console.h"
#include "orvane/analysis/album_measurement.h"

namespace orvane::cli {

/// How the results of a run are printed.
enum class ResultLayout { blocks, rows, json, report };

/// What is told of one file, made while other files may still be measured.
struct PrintedResult {
  std::string text{};                   ///< for standard output
  std::string summary{};                ///< the file's row of the summary
  std::vector<std::string> warnings{};  ///< for standard error
  TargetFindings::Enforcement targets{.isMet = true};
};

/// Prints the results of a run one after another.
class AnalysisPrinter {
 public:
  struct Plan {
    ResultLayout layout = ResultLayout::blocks;
    bool curves = false;  ///< in JSON
    /// What is told of the targets, and ends in an exit code when it is not met; absent for
    /// nothing.
    std::optional<TargetFindings::Demand> enforced{};
    AnalysisRows::Columns columns{};
  };

  AnalysisPrinter(Console& console, const Plan& plan)
      : console_(console), plan_(plan), rows_(console, plan.columns) {}

  /// May be called from any thread. `report` is what takes standard output in the layout `report`.
  PrintedResult prepare(const MeasuredFile& file, std::string report) const;

  void print(const PrintedResult& file);

  /// Prints what stands below all results: the summary, the album if there is one, and the closing
  /// lines.
  void finish(const AlbumMeasurement* album, const BatchClosing& closing);

  /// Whether a target was missed.
  ExitCode code() const noexcept { return code_; }

 private:
  void printAlbum(const AlbumMeasurement& album);

  Console& console_;
  Plan plan_;
  AnalysisRows rows_;
  std::string summary_{};
  std::size_t files_ = 0;
  ExitCode code_ = ExitCode::done;
};

}  // namespace orvane::cli
