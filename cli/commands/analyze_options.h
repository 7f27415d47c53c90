#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/commands/dialogue_sidecars.h"
#include "cli/commands/report_parts.h"
#include "cli/options/file_list.h"
#include "cli/options/source_options.h"
#include "cli/options/target_options.h"
#include "cli/options/vad_tuning_options.h"
#include "cli/output/report_outputs.h"

namespace orvane::cli {

/// What `orvane analyze` is asked for.
struct AnalyzeOptions {
  FileList::Request files{};
  SourceOptions source{};
  std::vector<int> joinedStreams{};  ///< of `--streams`; empty for one stream
  bool allStreams = false;           ///< each is measured by itself
  bool json = false;
  bool curves = false;
  bool speech = false;
  bool dialogue = false;
  VADTuningOptions tuning{};
  DialogueSidecars sidecars{};
  ReportPartOptions parts{};
  TargetOptions targets{};
  ReportOutputOptions outputs{};
  bool noStereo = false;
  bool dualMono = false;
  bool album = false;
  std::string summaryFile{};  ///< empty for none
  bool resume = false;
  bool quiet = false;
  int jobs = 1;

  /// Reads the house's targets and has measured what the targets are about, for they are judged on
  /// that alone. To be called before the options are used. Throws what `TargetOptions::settle`
  /// does, and `UsageError` for options that do not go together.
  void settle();

  /// More is asked for than the file's own figures.
  bool needsReport() const { return parts.isAny() || targets.areRequested() || outputs.isAny(); }

  /// What is read beside the files that are measured.
  std::vector<std::filesystem::path> otherFilesRead(const std::vector<InputName>& inputs) const;
};

/// All options and arguments of the command. `options` must outlive it.
void addAnalyzeOptions(CLI::App& command, AnalyzeOptions& options);

}  // namespace orvane::cli
