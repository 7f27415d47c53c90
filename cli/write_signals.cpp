#include "cli/write_signals.h"

#include <csignal>
#include <initializer_list>

namespace orvane::cli::WriteSignals {
namespace {

// Not SIG_IGN, which programs started by this one would inherit.
extern "C" void doNothing(int) {}

bool isIgnored(int number) {
  struct sigaction action {};
  ::sigaction(number, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

}  // namespace

void install() {
  for (const int number : {SIGPIPE, SIGXFSZ}) {
    if (isIgnored(number)) continue;
    struct sigaction action {};
    action.sa_handler = doNothing;
    action.sa_flags = SA_RESTART;
    ::sigaction(number, &action, nullptr);
  }
}

void endByBrokenPipe() {
  if (isIgnored(SIGPIPE)) return;
  ::signal(SIGPIPE, SIG_DFL);
  ::raise(SIGPIPE);
}

}  // namespace orvane::cli::WriteSignals
