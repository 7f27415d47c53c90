#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/commands/measured_file.h"
#include "cli/options/chapter_options.h"
#include "cli/options/selection_option.h"
#include "orvane/analysis/selection_measurement.h"
#include "orvane/report/report_inputs.h"

namespace orvane::cli {

/// What is measured and reported of a file beside its own figures.
struct ReportPartOptions {
  std::optional<SelectionOption> selection{};
  std::optional<float> maxMomentaryLUFS{};  ///< louder moments are violations
  std::optional<float> maxShortTermLUFS{};  ///< likewise
  std::string musicFile{};                  ///< a music analysis; empty for none
  ChapterOptions chapters{};
  std::vector<std::string> channelLabels{};  ///< empty: those of the file

  bool isAny() const {
    return selection || maxMomentaryLUFS || maxShortTermLUFS || !musicFile.empty() ||
           chapters.isAny() || !channelLabels.empty();
  }
  /// Throws `UsageError` for what does not go together. `isRaw`: the files are headerless.
  void requireSense(std::span<const InputName> inputs, bool isRaw) const;

  /// Parts that are measured from the audio itself, after the whole file.
  bool needsAudio() const { return selection || chapters.isAny() || !musicFile.empty(); }
};

/// `options` must outlive the command.
void addReportPartOptions(CLI::App& command, ReportPartOptions& options);

/// The parts, with what was read for them.
class ReportParts {
 public:
  /// Reads the lists that the options name. Throws `Error`.
  explicit ReportParts(const ReportPartOptions& options);

  /// The files that were read.
  static std::vector<std::filesystem::path> filesRead(const ReportPartOptions& options);

  /// Measures the parts of a measured file and makes its report. Throws `Error`.
  void makeReport(MeasuredFile& file, const core::LoudnessTargetSelection& targets,
                  const SelectionMeasurement::Execution& execution) const;

 private:
  void addTo(ReportInputs& inputs, MeasuredFile& file,
             const SelectionMeasurement::Execution& execution) const;
  void addSelection(ReportInputs& inputs, MeasuredFile& file,
                    const SelectionMeasurement::Execution& execution) const;
  void addViolations(ReportInputs& inputs) const;
  void addMusic(ReportInputs& inputs, MeasuredFile& file) const;
  void addChapters(ReportInputs& inputs, MeasuredFile& file,
                   const SelectionMeasurement::Execution& execution) const;

  ReportPartOptions options_;
  std::optional<Date> sourceDate_{};
  std::optional<MusicAnalysisResult> music_{};
  ChapterSource chapters_;
};

}  // namespace orvane::cli
