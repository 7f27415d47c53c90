#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane report`: renders the record of a report again.
void completeReportCommand(CLI::App& command, ChosenCommand& chosen);

}  // namespace orvane::cli
