#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane analyze FILE…`: every figure of files.
void addAnalyzeCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
