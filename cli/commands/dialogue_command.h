#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane dialogue detect|show|import|export|clear`: the dialogue regions kept beside files.
void completeDialogueCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
