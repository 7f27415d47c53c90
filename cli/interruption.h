#pragma once

#include "cli/exit_code.h"

/// Ctrl-C, the system's request to end, and a terminal that is gone. Long work asks `isRequested`
/// and stops in good order. A second later, or by a second signal, the process ends wherever it is,
/// but for the moment in which a file gets its name; what it was writing has none or is recognised
/// by the next run.
namespace orvane::cli::Interruption {

/// Installs the handlers.
void install();

bool isRequested() noexcept;

/// The exit code that tells which signal it was.
ExitCode exitCode() noexcept;

}  // namespace orvane::cli::Interruption
