#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane diff`: the null test of two files.
void addDiffCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
