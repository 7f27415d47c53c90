#include "cli/interruption.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

namespace orvane::cli::Interruption {
namespace {

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may not wait for a lock");

/// In which work ends in good order, or not at all.
constexpr unsigned kGraceSeconds = 1;

extern "C" void noteSignal(int number) {
  receivedSignal.store(number);
  ::alarm(kGraceSeconds);
}

extern "C" void endAtOnce(int /*number*/) {
  ::_exit(static_cast<int>(exitCode()));
}

}  // namespace

void install() {
  std::signal(SIGALRM, endAtOnce);
  for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
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
  constexpr int kByASignal = 128;
  return static_cast<ExitCode>(kByASignal + receivedSignal.load());
}

}  // namespace orvane::cli::Interruption
