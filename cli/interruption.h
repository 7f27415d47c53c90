#pragma once

#include "cli/exit_code.h"

/// Ctrl-C and the system's request to end. Long work asks `isRequested` and stops in good order; a
/// second signal ends the process at once. Nothing that the program writes meanwhile has a name, so
/// neither leaves anything behind.
namespace orvane::cli::Interruption {

/// Installs the handlers.
void install();

bool isRequested() noexcept;

/// The exit code that tells which signal it was.
ExitCode exitCode() noexcept;

}  // namespace orvane::cli::Interruption
