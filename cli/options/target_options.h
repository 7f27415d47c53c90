#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "orvane/core/targets/loudness_target.h"

namespace orvane::cli {

/// Which delivery targets a file is judged on.
struct TargetOptions {
  std::vector<std::string> ids{};
  std::optional<core::LoudnessTargetMode> mode{};
  bool enforce = false;

  bool areRequested() const { return !ids.empty() || mode; }

  /// Without any wish the first targets for music, as reports show them.
  core::LoudnessTargetSelection selection() const;

  /// One of the targets is about the loudness of dialogue.
  bool needSpeech() const;

  /// Throws `UsageError` for choices that do not go together. `isSpeechKnown`: speech is detected
  /// or taken from regions.
  void requireSense(bool isSpeechKnown) const;
};

/// "music", "podcast" …; throws `UsageError` for anything else.
core::LoudnessTargetMode targetModeNamed(const std::string& name);

/// `--targets`, `--mode` and `--enforce`. `options` must outlive the command.
void addTargetOptions(CLI::App& command, TargetOptions& options);

}  // namespace orvane::cli
