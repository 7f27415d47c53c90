#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// "orvane edit": edits the audio of a file and writes it to another one.
void addEditCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
