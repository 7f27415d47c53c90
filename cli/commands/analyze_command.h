#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane analyze FILE…`: every figure of files.
void completeAnalyzeCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
