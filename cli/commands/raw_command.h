#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane raw`: headerless PCM.
void addRawCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
