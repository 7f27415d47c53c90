#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane generate`: test signals.
void completeGenerateCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
