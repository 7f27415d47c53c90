#pragma once

#include "cli/command.h"

namespace orvane::cli {

/// `orvane report`: renders the record of a report again.
void addReportCommand(CLI::App& program, ChosenCommand& chosen);

}  // namespace orvane::cli
