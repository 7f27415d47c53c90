#pragma once

#include "cli/command.h"

namespace orvane::cli {

// The subcommands of `orvane raw`.
void addRawGuessCommand(CLI::App& raw, ChosenCommand& chosen);
void addRawConvertCommand(CLI::App& raw, ChosenCommand& chosen);
void addRawPresetsCommand(CLI::App& raw, ChosenCommand& chosen);

}  // namespace orvane::cli
