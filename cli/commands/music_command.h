#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane music`: music analyses.
void completeMusicCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
