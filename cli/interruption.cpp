#include "cli/interruption.h"

#include <atomic>
#include <csignal>

namespace orvane::cli::Interruption {
namespace {

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may not wait for a lock");

extern "C" void noteSignal(int number) {
  receivedSignal.store(number);
}

}  // namespace

void install() {
  for (const int number : {SIGINT, SIGTERM}) {
    struct sigaction action {};
    ::sigaction(number, nullptr, &action);
    // Whoever started the program in the background may have chosen to shield it.
    if (action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = noteSignal;
    // Not SA_RESTART: a read that waits for standard input has to return.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(number, &action, nullptr);
  }
}

bool isRequested() noexcept {
  return receivedSignal.load() != 0;
}

ExitCode exitCode() noexcept {
  return receivedSignal.load() == SIGTERM ? ExitCode::terminated : ExitCode::interrupted;
}

}  // namespace orvane::cli::Interruption
