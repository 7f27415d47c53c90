#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane dialogue detect|show|import|export|clear`: the dialogue regions kept beside files.
void addDialogueCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
