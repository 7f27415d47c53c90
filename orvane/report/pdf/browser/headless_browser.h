#pragma once

#include <filesystem>
#include <string>

#include "orvane/platform/export.h"
#include "orvane/report/pdf/browser/browser_process.h"
#include "orvane/report/pdf/browser/devtools_pipe.h"

namespace orvane {

/// A running browser and the connection to it. Any number of threads may use it at once.
class ORVANE_TESTING_API HeadlessBrowser {
 public:
  /// Starts the program; whether it works shows at the first call. Throws `PlatformError`.
  explicit HeadlessBrowser(const std::filesystem::path& program)
      : process_(program),
        pipe_({process_.commands(), process_.replies(), process_.messages(), process_.ending()}) {}

  DevToolsPipe& pipe() noexcept { return pipe_; }
  const BrowserProcess& process() const noexcept { return process_; }

 private:
  BrowserProcess process_;
  DevToolsPipe pipe_;
};

}  // namespace orvane
