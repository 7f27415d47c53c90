#pragma once

#include <csignal>

namespace orvane {

/// While it lives, the signals that end a process wait for this thread: those of a user and of the
/// system, and the alarm that a program sets itself as its last word.
class HeldSignals {
 public:
  HeldSignals() noexcept {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGALRM}) sigaddset(&ending, number);
    pthread_sigmask(SIG_BLOCK, &ending, &before_);
  }
  ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace orvane
