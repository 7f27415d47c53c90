#pragma once

#include <filesystem>
#include <memory>
#include <mutex>

#include "orvane/platform/export.h"

namespace orvane {

class HeadlessBrowser;

/// A browser that serves many renderings, so that only the first of them pays for its start. Any
/// number of threads may render with it at once; each rendering has a page of its own. It starts
/// when it is first needed and starts anew when it has ended meanwhile. The destructor ends it and
/// removes its folder; no rendering may be under way then.
class ORVANE_API BrowserSession {
 public:
  /// `browser`: path or name of the program; empty for an installed one.
  explicit BrowserSession(std::filesystem::path browser = {});
  ~BrowserSession();
  BrowserSession(const BrowserSession&) = delete;
  BrowserSession& operator=(const BrowserSession&) = delete;

  /// For the renderer: the running browser. Throws `BrowserError` (notFound) and `PlatformError`.
  std::shared_ptr<HeadlessBrowser> acquire();

 private:
  std::filesystem::path wish_;
  std::mutex mutex_;
  std::shared_ptr<HeadlessBrowser> browser_;
};

}  // namespace orvane
