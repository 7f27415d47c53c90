#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane diff`: the null test of two files.
void completeDiffCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
