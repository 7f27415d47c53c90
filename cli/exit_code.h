#pragma once

namespace orvane::cli {

/// How the program ends; part of its interface.
enum class ExitCode : int {
  done = 0,           ///< everything asked for was done
  fileFailed = 1,     ///< a file or the output failed; the other files were still treated
  usage = 2,          ///< wrong arguments; nothing was done
  targetMissed = 3,   ///< measured, but a requested target is missed
  hungUp = 129,       ///< the terminal is gone
  interrupted = 130,  ///< by Ctrl-C
  terminated = 143,   ///< by a polite request of the system
};

/// What several parts of one run come to: a failed file outweighs a missed target.
constexpr ExitCode worse(ExitCode a, ExitCode b) {
  if (a == ExitCode::fileFailed || b == ExitCode::fileFailed) return ExitCode::fileFailed;
  return static_cast<int>(a) > static_cast<int>(b) ? a : b;
}

}  // namespace orvane::cli
