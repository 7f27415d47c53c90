#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// "orvane splice": joins a take to a recording and writes both to another file.
void completeSpliceCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
