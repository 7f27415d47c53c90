#pragma once

#include <chrono>
#include <optional>

#include "orvane/platform/error.h"
#include "orvane/platform/progress.h"
#include "orvane/report/pdf/browser/browser_error.h"

namespace orvane {

/// How long a caller waits: until a time, without limit if there is none, and until its observer
/// asks to stop. Used on the caller's thread only.
struct Patience {
  std::optional<std::chrono::steady_clock::time_point> deadline{};
  ProgressObserver* observer = nullptr;

  /// Throws `BrowserError` (timedOut) or `Cancelled` when it is at its end.
  void check() const {
    if (observer != nullptr && observer->isCancelled()) throw Cancelled();
    if (deadline && std::chrono::steady_clock::now() >= *deadline)
      throw BrowserError(BrowserError::Case::timedOut, "The browser did not answer in time.");
  }
};

}  // namespace orvane
