#include "orvane/report/pdf/browser_session.h"

#include <utility>

#include "orvane/report/pdf/browser/browser_search.h"
#include "orvane/report/pdf/browser/headless_browser.h"
#include "orvane/report/pdf/browser/patience.h"
#include "orvane/report/pdf/browser_page.h"

namespace orvane {
namespace {

/// A page is a process, which takes longer to start than a report to print.
constexpr std::size_t kMaximumIdlePages = 4;

}  // namespace

BrowserSession::BrowserSession(std::filesystem::path browser) : wish_(std::move(browser)) {}

BrowserSession::~BrowserSession() = default;

std::shared_ptr<HeadlessBrowser> BrowserSession::acquire() {
  const std::lock_guard lock(mutex_);
  if (!browser_ || !browser_->pipe().isOpen()) {
    idlePages_.clear();
    browser_ = std::make_shared<HeadlessBrowser>(
        BrowserSearch::choose(wish_, BrowserSearch::programFolders()));
  }
  return browser_;
}

std::unique_ptr<BrowserPage> BrowserSession::takeIdlePage(const HeadlessBrowser* browser) {
  const std::lock_guard lock(mutex_);
  while (!idlePages_.empty()) {
    auto page = std::move(idlePages_.back());
    idlePages_.pop_back();
    if (page->browser() == browser && page->isAlive()) return page;
  }
  return nullptr;
}

void BrowserSession::warmUp(const Patience& patience) {
  keepPage(takePage(patience));
}

std::unique_ptr<BrowserPage> BrowserSession::takePage(const Patience& patience) {
  patience.check();  // no browser is started for nothing
  auto browser = acquire();
  // Whether it answers at all. If not, nobody is to be given this browser again.
  try {
    browser->pipe().call({.method = "Browser.getVersion"}, patience);
  } catch (const BrowserError& failure) {
    browser->pipe().giveUp(failure.kind(), failure.errorDescription());
    throw;
  }
  if (auto page = takeIdlePage(browser.get())) return page;
  return std::make_unique<BrowserPage>(std::move(browser), patience);
}

void BrowserSession::keepPage(std::unique_ptr<BrowserPage> page) {
  const std::lock_guard lock(mutex_);
  if (page->browser() == browser_.get() && idlePages_.size() < kMaximumIdlePages)
    idlePages_.push_back(std::move(page));
}

}  // namespace orvane
