#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane raw`: headerless PCM.
void completeRawCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
