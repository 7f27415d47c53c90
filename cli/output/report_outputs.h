#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/options/file_list.h"
#include "cli/output/report_rendering.h"

namespace orvane::cli {

/// Where reports go, as the user says it.
struct ReportOutputOptions {
  std::map<ReportFormat, std::string> files{};  ///< of a single input; "-" is standard output
  std::string folder{};                         ///< of `--out`; empty for none
  std::vector<ReportFormat> formats{};          ///< of `--formats`
  bool force = false;                           ///< replace what exists

  bool isAny() const { return !files.empty() || !folder.empty() || !formats.empty(); }
};

/// `--html`, `--pdf` and `--csv`. `options` must outlive the command.
void addReportFileOptions(CLI::App& command, ReportOutputOptions& options);

/// `--force`.
void addReportForceOption(CLI::App& command, ReportOutputOptions& options);

/// All of these with `--report`, `--out` and `--formats`, for commands that measure any number of
/// inputs.
void addReportOutputOptions(CLI::App& command, ReportOutputOptions& options);

/// The files that reports of some inputs are written to.
class ReportOutputs {
 public:
  /// Plans them, and makes sure before any work is done that each can be written: no output is
  /// another one, is one of the inputs or `otherFilesRead` by whatever name, lies in a folder that
  /// is missing or protected, or exists unless forced; and there is a browser for PDF. Makes the
  /// folder of `--out`. Throws `UsageError` for choices that do not go together, and `Error`.
  ReportOutputs(const ReportOutputOptions& options, std::span<const InputName> inputs,
                std::span<const std::filesystem::path> otherFilesRead);

  bool isAny() const noexcept { return isAny_; }
  /// A report takes standard output, so nothing else may be printed there.
  bool takeStandardOutput() const noexcept { return takesStandardOutput_; }

  /// What will be written.
  std::vector<std::filesystem::path> files() const;

  /// Writes the report of one input into its files, each whole or not at all, and returns what is
  /// for standard output. `warnings` gets a sentence for everything that a reader of them may miss.
  /// May be called from any thread. Throws `Error`.
  std::string write(std::size_t inputIndex, const OrvaneReport& report,
                    std::vector<std::string>& warnings);

 private:
  struct Output {
    ReportFormat format{};
    std::optional<std::filesystem::path> path{};  ///< absent for standard output
  };

  bool check(std::span<const InputName> inputs,
             std::span<const std::filesystem::path> otherFilesRead) const;

  bool isAny_ = false;
  bool takesStandardOutput_ = false;
  bool force_ = false;
  ReportRenderer renderer_;
  std::vector<std::vector<Output>> outputs_{};  ///< of each input
};

/// File names for the reports of inputs, without a suffix: their own names, with as many of their
/// folders in front as it takes to tell equal ones apart. Throws `UsageError` when nothing can.
std::vector<std::string> reportNames(std::span<const InputName> inputs);

}  // namespace orvane::cli
