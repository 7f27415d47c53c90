#include "cli/output/report_rendering.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <string>
#include <vector>

#include "orvane/report/pdf/browser/browser_error.h"
#include "tests/support/fake_browser.h"

namespace orvane::cli {
namespace {

// The start of the browser and the rendering once had a time of their own each.
TEST(ReportRenderer, GivesAHangingBrowserItsTimeOnce) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::seconds kPatience{6};
  const orvane::test::FakeBrowser browser("hang");
  const orvane::test::OwnTemporaryFolder temporary;
  const std::string before = getenv("PATH");
  setenv("PATH", browser.searchPath().c_str(), 1);
  {
    ReportRenderer renderer(std::nullopt, kPatience);
    std::vector<std::string> warnings;
    const auto start = Clock::now();
    renderer.prepareForPDF();
    try {
      renderer.render(OrvaneReport{}, ReportFormat::pdf, warnings);
      ADD_FAILURE() << "a browser that hangs renders nothing";
    } catch (const BrowserError& error) {
      EXPECT_EQ(error.kind(), BrowserError::Case::timedOut);
    }
    EXPECT_GE(Clock::now() - start, kPatience);
    EXPECT_LT(Clock::now() - start, kPatience * 5 / 3);
  }
  setenv("PATH", before.c_str(), 1);
  EXPECT_TRUE(temporary.isEmpty());
}

}  // namespace
}  // namespace orvane::cli
