#pragma once

namespace orvane::test {

/// Waits until a process handles a signal, which tells that its start is over: on a busy machine
/// that may take seconds. Gives up after half a minute.
void waitUntilHandled(int signal, int process);

}  // namespace orvane::test
