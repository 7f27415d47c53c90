#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane music`: music analyses.
void addMusicCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
