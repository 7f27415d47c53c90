#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "cli/commands/measured_file.h"
#include "orvane/analysis/selection_measurement.h"
#include "orvane/report/report_parts.h"

namespace orvane::cli {

/// What is measured and reported of a file beside its own figures.
struct ReportPartOptions {
  ReportParts parts{};             ///< without what is read from files
  std::string musicFile{};         ///< a music analysis; empty for none
  std::string chapterFile{};       ///< a list of chapters; empty for none
  bool chaptersAreInFile = false;  ///< those that the file itself holds

  /// Parts that are measured from the audio itself, after the whole file.
  bool needAudio() const {
    return parts.selection || parts.chaptersFromMusic || !chapterFile.empty() || chaptersAreInFile;
  }
  bool isAny() const {
    return needAudio() || !musicFile.empty() || parts.maxMomentaryLUFS || parts.maxShortTermLUFS ||
           !parts.channelLabels.empty();
  }
  /// Throws `UsageError` for what does not go together. `isRaw`: the files are headerless.
  void requireSense(std::span<const InputName> inputs, bool isRaw) const;

  /// The files that are read for the parts.
  std::vector<std::filesystem::path> filesRead() const;

  /// The parts with what those files hold. Throws `Error`.
  ReportParts read() const;
};

/// `options` must outlive the command.
void addReportPartOptions(CLI::App& command, ReportPartOptions& options);

/// Measures the parts of a measured file and makes its report, with `parts` as read by the options.
/// Throws `Error`.
void makeReport(MeasuredFile& file, const ReportPartOptions& options, ReportParts parts,
                const Execution& execution);

}  // namespace orvane::cli
