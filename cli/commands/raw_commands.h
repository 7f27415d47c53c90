#pragma once

#include "cli/command.h"

namespace orvane::cli {

// The subcommands of `orvane raw`.
void addRawConvertCommand(CLI::App& raw, ChosenCommand& chosen);

}  // namespace orvane::cli
