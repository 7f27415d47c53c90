#pragma once

/// Writing to a pipe that nobody reads any more, or beyond the size that the system allows a file,
/// ends a process on the spot. Here both become errors of the write, so that what was begun is
/// cleared away first.
namespace orvane::cli::WriteSignals {

/// Installs the handlers. Programs started by this one have the system's own.
void install();

/// Ends the process as the broken pipe would have done, which a shell takes for a normal end of
/// "orvane … | head". Returns if whoever started the program shields it from that.
void endByBrokenPipe();

}  // namespace orvane::cli::WriteSignals
