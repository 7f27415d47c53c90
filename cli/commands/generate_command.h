#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane generate`: test signals.
void addGenerateCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
