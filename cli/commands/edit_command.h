#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// "orvane edit": edits the audio of a file and writes it to another one.
void completeEditCommand(CLI::App& edit, ChosenCommand& chosen);

}  // namespace orvane::cli
