#pragma once

#include <optional>

#include "cli/command.h"
#include "orvane/rawpcm/raw_pcm_format.h"

namespace orvane::cli {

// The subcommands of `orvane dialogue`.
void addDialogueDetectCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueShowCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueImportCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueExportCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueClearCommand(CLI::App& dialogue, ChosenCommand& chosen);

/// Which audio the regions belong to.
struct DialogueAudioOptions {
  std::optional<RawPCMFormat> rawFormat{};
  std::optional<int> streamIndex{};
};

/// `--raw` and `--stream`. `options` must outlive the command.
void addDialogueAudioOptions(CLI::App& command, DialogueAudioOptions& options);

}  // namespace orvane::cli
