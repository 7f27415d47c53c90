#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/progress.h"
#include "orvane/report/orvane_report.h"
#include "orvane/report/pdf/browser/browser_error.h"
#include "orvane/report/pdf/browser_session.h"

namespace orvane {

/// Prints a report as a PDF of one tall page: 794 points wide, as high as the report and at least
/// 1123 points, one point for each CSS pixel of its HTML. A browser of the Chromium family does the
/// layout, without a window, without the page's scripts and without a network. Any number of
/// threads may render at once.
///
/// Everything throws `BrowserError`, `PlatformError` for a browser that cannot be started or a
/// temporary folder that cannot be written, and `Cancelled`. Also then no process and no file
/// stays behind.
namespace PDFReportRenderer {

/// How to render; nothing of it changes what a reader of the PDF sees.
struct Execution {
  /// For the whole call; without one it waits as long as the browser works.
  std::optional<std::chrono::milliseconds> deadline{};
  /// The browser to use; without one the call starts its own and ends it.
  BrowserSession* session = nullptr;
  /// Of the call's own browser: path or name of the program; empty for an installed one.
  std::filesystem::path browser{};
  /// What the document gives as the time of its making, in seconds since 1970, UTC, so that equal
  /// pages make equal bytes; without one it is the present time.
  std::optional<std::int64_t> sourceDateEpoch{};
  /// Gets a sentence for everything that a reader of the PDF may miss.
  std::vector<std::string>* warnings = nullptr;
  ProgressObserver* observer = nullptr;
};

/// The page that `HTMLReportBuilder` makes of the report.
ORVANE_API std::vector<std::byte> renderPDF(const OrvaneReport& report);
ORVANE_API std::vector<std::byte> renderPDF(const OrvaneReport& report, const Execution& execution);

/// A ready page of HTML. It should need no more than 794 pixels in width: what lies beyond is cut
/// off, with a warning. Nothing is loaded from outside; relative addresses lead nowhere.
ORVANE_API std::vector<std::byte> render(std::string_view html);
ORVANE_API std::vector<std::byte> render(std::string_view html, const Execution& execution);

}  // namespace PDFReportRenderer

/// For programs without a window, once before the first rendering: makes sure that a browser is
/// there to render with. Throws `BrowserError` (notFound), whose text says what to install.
ORVANE_API void bootstrapAppKitForHeadlessRendering();

}  // namespace orvane
