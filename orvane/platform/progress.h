#pragma once

#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// Watches a long operation and may stop it. Calls come from any thread of the operation, one at a
/// time per operation.
class ORVANE_API ProgressObserver {
 public:
  virtual ~ProgressObserver();
  /// `stage` is what is being done ("Reading", "Measuring" …), `fraction` 0 … 1 of that stage.
  virtual void onProgress(std::string_view stage, double fraction) = 0;
  /// True asks the operation to stop; it then throws `Cancelled`.
  virtual bool isCancelled() { return false; }
};

}  // namespace orvane
