#pragma once

#include "cli/command.h"

namespace orvane::cli {

// The subcommands of `orvane dialogue`.
void addDialogueDetectCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueShowCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueImportCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueExportCommand(CLI::App& dialogue, ChosenCommand& chosen);
void addDialogueClearCommand(CLI::App& dialogue, ChosenCommand& chosen);

}  // namespace orvane::cli
