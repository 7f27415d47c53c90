#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/output/target_findings.h"
#include "orvane/core/targets/loudness_target.h"

namespace orvane::cli {

/// Which delivery targets a file is judged on.
struct TargetOptions {
  std::vector<std::string> ids{};
  std::string file{};  ///< of the house's own targets; empty for none
  std::optional<core::LoudnessTargetMode> mode{};
  bool enforce = false;

  /// The files that are read for the targets.
  std::vector<std::filesystem::path> filesRead() const;

  bool areRequested() const { return !ids.empty() || mode || !file.empty(); }

  /// Reads the house's targets, which are judged by unless `ids` chooses. Throws `Error`, and
  /// `UsageError` for choices that do not go together.
  void settle();

  /// Once settled. Without any wish the first targets for music, as reports show them.
  core::LoudnessTargetSelection selection() const;

  /// One of the targets cannot be judged unless speech is looked for.
  bool needSpeech() const;
  /// One of the targets limits the noise floor, which is measured of a selection.
  bool needNoiseFloor() const;

  /// What `--enforce` demands: each chosen target, any one of a mode; absent without it.
  std::optional<TargetFindings::Demand> enforced() const;

 private:
  std::vector<core::LoudnessTarget> house_{};
};

/// "music", "podcast" …; throws `UsageError` for anything else.
core::LoudnessTargetMode targetModeNamed(const std::string& name);

/// The targets of a file. Throws `PlatformError`, which names the key that is wrong.
std::vector<core::LoudnessTarget> readTargetFile(const std::string& name);

/// `--target-file`. `file` must outlive the command.
void addTargetFileOption(CLI::App& command, std::string& file, const char* description);

/// `--targets`, `--target-file`, `--mode` and `--enforce`. `options` must outlive the command.
void addTargetOptions(CLI::App& command, TargetOptions& options);

}  // namespace orvane::cli
