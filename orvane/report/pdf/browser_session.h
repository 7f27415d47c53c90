#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/report/pdf/browser/patience.h"

namespace orvane {

class BrowserPage;
class HeadlessBrowser;

/// A browser that serves many renderings, so that only the first of them pays for its start. Any
/// number of threads may render with it at once, each on a page of its own. The browser starts
/// when it is first needed and starts anew when it has ended meanwhile. The destructor ends it and
/// removes its folder; no rendering may be under way then.
class ORVANE_API BrowserSession {
 public:
  /// `browser`: path or name of the program; empty for an installed one.
  explicit BrowserSession(std::filesystem::path browser = {});
  ~BrowserSession();
  BrowserSession(const BrowserSession&) = delete;
  BrowserSession& operator=(const BrowserSession&) = delete;

  /// Starts the browser with a page, so that a rendering that comes later finds them ready. Throws
  /// what `takePage` throws.
  void warmUp(const Patience& patience);

  /// For the renderer: a page of the running browser that nobody else uses. Throws `BrowserError`,
  /// `PlatformError` and `Cancelled`.
  std::unique_ptr<BrowserPage> takePage(const Patience& patience);
  /// Takes a page back, after a rendering that went well, for the next one.
  void keepPage(std::unique_ptr<BrowserPage> page);

 private:
  std::shared_ptr<HeadlessBrowser> acquire();
  std::unique_ptr<BrowserPage> takeIdlePage(const HeadlessBrowser* browser);

  std::filesystem::path wish_;
  std::mutex mutex_;
  std::shared_ptr<HeadlessBrowser> browser_;
  std::vector<std::unique_ptr<BrowserPage>> idlePages_;
};

}  // namespace orvane
