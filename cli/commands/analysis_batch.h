#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands/measured_file.h"
#include "cli/output/batch_closing.h"
#include "cli/output/summary_file.h"
#include "cli/output/summary_row.h"
#include "cli/output/target_findings.h"
#include "orvane/analysis/album_measurement.h"

namespace orvane::cli {

/// What a run over many files gathers beside the results of each: the summary, the album and the
/// closing lines. Results and failures are added in the files' order, one at a time.
class AnalysisBatch {
 public:
  struct Plan {
    std::string summaryFile{};  ///< empty for none
    SummaryFile::Existing existing = SummaryFile::Existing::refuse;
    std::vector<std::string> targetIDs{};
    bool album = false;
  };

  /// Takes the files that an earlier run has finished from `files`, and the summary itself where it
  /// was found in a folder. Throws `Error`.
  AnalysisBatch(Plan plan, std::vector<InputName>& files);

  /// What is kept of one file, made while others may still be measured.
  struct Entry {
    InputName name{};
    float integratedLUFS = 0;
    std::vector<std::string> cells{};            ///< of the summary
    std::shared_ptr<const MeasuredFile> file{};  ///< for the album alone
  };

  /// What `--enforce` demands of the files that were taken, by the verdicts in their rows.
  ExitCode enforceKept(const std::optional<TargetFindings::Demand>& demand, Console& console) const;

  /// Before the first file is measured. Throws `Error`.
  void begin();

  /// Which version of a file is about to be measured.
  SummaryRow::Version versionOf(const InputName& file) const;
  /// May be called from any thread.
  Entry entry(const SummaryRow::Version& version, std::shared_ptr<const MeasuredFile> file) const;

  void add(Entry entry);
  void addFailure(const InputName& file, const std::string& message);
  void addNoAudio() { closing_.addNoAudio(); }
  void finish();

  /// Null unless asked for.
  const AlbumMeasurement* album() const noexcept { return plan_.album ? &album_ : nullptr; }
  const BatchClosing& closing() const noexcept { return closing_; }

 private:
  Plan plan_;
  std::optional<SummaryFile> summary_{};
  std::vector<std::pair<InputName, SummaryFile::Finished>> kept_{};
  AlbumMeasurement album_{};
  BatchClosing closing_{};
};

}  // namespace orvane::cli
