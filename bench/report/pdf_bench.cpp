// How much longer a PDF takes than the browser's own printing of it, in a session that is warm.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "orvane/report/html/html_report_builder.h"
#include "orvane/report/pdf/browser/browser_search.h"
#include "orvane/report/pdf/browser/headless_browser.h"
#include "orvane/report/pdf/browser_page.h"
#include "orvane/report/pdf/pdf_report_renderer.h"
#include "tests/report/sample_reports.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 15;

template <typename Work>
double millisecondsOf(const Work& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void compare(const char* name, const orvane::OrvaneReport& report) {
  const orvane::Patience patience;
  const auto program = orvane::BrowserSearch::choose({}, orvane::BrowserSearch::programFolders());
  orvane::BrowserPage page(std::make_shared<orvane::HeadlessBrowser>(program), patience);
  page.load(orvane::HTMLReportBuilder::build(report), patience);
  const auto layout = page.measure(patience);
  if (!layout) return;
  const int height = std::max(1123, static_cast<int>(layout->height));

  orvane::BrowserSession session;
  const orvane::PDFReportRenderer::Execution execution{.session = &session};
  const double cold =
      millisecondsOf([&] { orvane::PDFReportRenderer::renderPDF(report, execution); });
  std::vector<double> printing;
  std::vector<double> rendering;
  for (int i = 0; i < kRounds; ++i) {
    printing.push_back(millisecondsOf([&] { page.print(height, false, patience); }));
    rendering.push_back(
        millisecondsOf([&] { orvane::PDFReportRenderer::renderPDF(report, execution); }));
  }
  const double print = median(printing);
  const double all = median(rendering);
  std::printf("%-12s %7.1f %7.1f %7.1f %7.1f\n", name, cold, print, all, all - print);
}

}  // namespace

int main() {
  std::puts("milliseconds:  first   print    warm    more");
  for (const auto& [name, report] : orvane::test::sampleReports()) compare(name.c_str(), report);
}
