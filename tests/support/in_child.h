#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace orvane::test {

/// How a child process ended.
struct ChildEnd {
  int exitCode = -1;  ///< -1 when a signal ended it
  int signal = 0;
};

inline ChildEnd waitFor(pid_t child) {
  int status = 0;
  if (waitpid(child, &status, 0) != child) throw std::runtime_error("lost a child process");
  if (WIFEXITED(status)) return {.exitCode = WEXITSTATUS(status)};
  return {.signal = WTERMSIG(status)};
}

/// Starts `work` in a copy of this process, whose exit code becomes what it returns; 99 for an
/// exception.
template <typename Work>
pid_t startInChild(Work work) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child > 0) return child;
  try {
    _exit(work());
  } catch (...) {
    _exit(99);
  }
}

template <typename Work>
ChildEnd runInChild(Work work) {
  return waitFor(startInChild(work));
}

/// The most memory that this process ever held, in KiB. A child begins with what its parent holds:
/// what it took itself is the difference.
inline long peakMemoryKiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

/// Takes every special right from this process; for children only.
inline void becomeNobody() {
  constexpr unsigned kNobody = 65534;
  if (geteuid() != 0) return;
  if (setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(98);
}

}  // namespace orvane::test
