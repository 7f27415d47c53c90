#include "orvane/report/browser_session.h"

#include <utility>

#include "orvane/platform/browser/browser_search.h"
#include "orvane/platform/browser/headless_browser.h"

namespace orvane {

BrowserSession::BrowserSession(std::filesystem::path browser) : wish_(std::move(browser)) {}

BrowserSession::~BrowserSession() = default;

std::shared_ptr<HeadlessBrowser> BrowserSession::acquire() {
  const std::lock_guard lock(mutex_);
  if (!browser_ || !browser_->pipe().isOpen())
    browser_ = std::make_shared<HeadlessBrowser>(
        BrowserSearch::choose(wish_, BrowserSearch::programFolders()));
  return browser_;
}

}  // namespace orvane
