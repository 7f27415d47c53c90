#include "orvane/report/pdf/pdf_report_renderer.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "orvane/report/html/html_report_builder.h"
#include "orvane/report/pdf/browser/browser_search.h"
#include "orvane/report/pdf/browser/patience.h"
#include "orvane/report/pdf/browser_page.h"
#include "orvane/report/pdf/missing_glyphs.h"
#include "orvane/report/pdf/pdf_document.h"
#include "orvane/report/pdf/pdf_geometry.h"

namespace orvane::PDFReportRenderer {
namespace {

using Case = BrowserError::Case;

/// Pixels that the page may grow when rounding has pushed its last line onto a second one.
constexpr int kMaximumGrowth = 3;
/// Far beyond what a browser lays out.
constexpr double kMaximumHeight = 1e8;

class Rendering {
 public:
  Rendering(std::string_view html, const Execution& execution)
      : html_(html), execution_(execution) {
    if (execution.deadline)
      patience_.deadline = std::chrono::steady_clock::now() + *execution.deadline;
    patience_.observer = execution.observer;
  }

  std::vector<std::byte> run(BrowserSession& session) {
    auto page = session.takePage(patience_);
    tell(0.1);
    page->load(html_, patience_);
    tell(0.3);
    const auto layout = measure(*page);
    tell(0.5);
    auto pdf = print(*page, layout);
    session.keepPage(std::move(page));
    tell(1);
    return pdf;
  }

 private:
  std::optional<BrowserPage::Layout> measure(BrowserPage& page) {
    auto layout = page.measure(patience_);
    if (!layout) {
      warn("The page's height could not be measured; the PDF shows its first " +
           std::to_string(PDFGeometry::kMinimumHeight) + " pixels.");
      return layout;
    }
    if (!layout->hasFonts)
      warn(
          "The browser found no fonts, so text is missing from the PDF: install the package "
          "fonts-dejavu-core.");
    if (!layout->missingGlyphs.empty()) warn(missingGlyphsWarning(layout->missingGlyphs));
    if (layout->width > PDFGeometry::kWidth) {
      // The browser would shrink everything instead.
      page.clipWidth(patience_);
      warn("The page is wider than " + std::to_string(PDFGeometry::kWidth) +
           " pixels; the PDF does not show what lies beyond.");
      layout = page.measure(patience_);
    }
    return layout;
  }

  std::vector<std::byte> print(BrowserPage& page,
                               const std::optional<BrowserPage::Layout>& layout) {
    const double measured = layout ? std::ceil(layout->height) : 0;
    if (measured > kMaximumHeight)
      throw BrowserError(Case::pageTooLarge, "The page is too high for a PDF.");
    const int height = std::max(static_cast<int>(measured), PDFGeometry::kMinimumHeight);
    int pageCount = 0;
    for (int growth = 0; growth <= kMaximumGrowth; ++growth) {
      PDFDocument document(page.print(height + growth, !layout, patience_));
      pageCount = document.pageCount();
      if (pageCount < 1) break;
      if (pageCount > 1) continue;
      if (execution_.sourceDateEpoch) document.setDates(*execution_.sourceDateEpoch);
      if (height + growth > PDFGeometry::kUsualMaximumHeight)
        warn("The PDF's page is " + std::to_string(height + growth) +
             " points high; some programs show no more than " +
             std::to_string(PDFGeometry::kUsualMaximumHeight) + ".");
      return std::move(document).withPageOf(PDFGeometry::kWidth, height + growth);
    }
    throw BrowserError(Case::invalidPDF,
                       "The browser made " + std::to_string(pageCount) + " pages instead of one.");
  }

  void warn(std::string text) const {
    if (execution_.warnings != nullptr) execution_.warnings->push_back(std::move(text));
  }

  void tell(double fraction) const {
    patience_.check();
    if (execution_.observer != nullptr) execution_.observer->onProgress("Rendering", fraction);
  }

  std::string_view html_;
  const Execution& execution_;
  Patience patience_{};
};

}  // namespace

std::vector<std::byte> renderPDF(const OrvaneReport& report) {
  return renderPDF(report, {});
}

std::vector<std::byte> renderPDF(const OrvaneReport& report, const Execution& execution) {
  return render(HTMLReportBuilder::build(report), execution);
}

std::vector<std::byte> render(std::string_view html) {
  return render(html, {});
}

std::vector<std::byte> render(std::string_view html, const Execution& execution) {
  Rendering rendering(html, execution);
  if (execution.session != nullptr) return rendering.run(*execution.session);
  BrowserSession own(execution.browser);
  return rendering.run(own);
}

}  // namespace orvane::PDFReportRenderer

namespace orvane {

void bootstrapAppKitForHeadlessRendering() {
  BrowserSearch::choose({}, BrowserSearch::programFolders());
}

}  // namespace orvane
