#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane identify FILE…`: container and codec of files, by their bytes.
void completeIdentifyCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
