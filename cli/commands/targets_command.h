#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane targets`: lists the delivery targets that the product knows.
void completeTargetsCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
