#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// "orvane splice": joins a take to a recording and writes both to another file.
void addSpliceCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
