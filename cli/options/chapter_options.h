#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/measured_file.h"
#include "orvane/analysis/selection_measurement.h"
#include "orvane/container/chapter_mark.h"

namespace orvane::cli {

/// Which chapters a file is measured by.
struct ChapterOptions {
  std::string listFile{};  ///< of `--chapters`; empty for none
  bool areInFile = false;  ///< those that the file itself holds
  float toleranceLU = 2;   ///< from the chapters' median

  bool isAny() const { return !listFile.empty() || areInFile; }
};

/// `--chapters`, `--chapters-from-file` and `--chapter-tolerance`. `options` must outlive the
/// command.
void addChapterOptions(CLI::App& command, ChapterOptions& options, const std::string& group);

/// Where the chapters of measured files come from.
class ChapterSource {
 public:
  /// Reads the list, if there is one. Throws `Error`.
  explicit ChapterSource(const ChapterOptions& options);

  struct Chapters {
    std::vector<SelectionMeasurement::ChapterSpan> spans{};
    std::string origin{};  ///< as reports have it
  };

  /// The chapters of a measured file: of the list, of the file itself, else the sections of
  /// `music`, which may be null. Notes when those asked for do not exist. Throws `Error`.
  Chapters chaptersOf(MeasuredFile& file, const MusicAnalysisResult* music) const;

 private:
  ChapterOptions options_;
  std::vector<ChapterMark> marks_{};
  std::string origin_{};
};

}  // namespace orvane::cli
