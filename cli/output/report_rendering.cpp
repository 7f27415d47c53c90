#include "cli/output/report_rendering.h"

#include <chrono>
#include <system_error>

#include "cli/interruption.h"
#include "orvane/platform/progress.h"
#include "orvane/report/csv_report_builder.h"
#include "orvane/report/html/html_report_builder.h"
#include "orvane/report/pdf/pdf_report_renderer.h"

namespace orvane::cli {
namespace {

/// Ctrl-C ends the browser as well.
class Interrupter : public ProgressObserver {
  void onProgress(std::string_view, double) override {}
  bool isCancelled() override { return Interruption::isRequested(); }
};

}  // namespace

std::string_view rawValue(ReportFormat format) noexcept {
  switch (format) {
    case ReportFormat::html:
      return "html";
    case ReportFormat::csv:
      return "csv";
    case ReportFormat::pdf:
      return "pdf";
    case ReportFormat::record:
      return "report";
  }
  return {};
}

std::optional<ReportFormat> reportFormatFromRawValue(std::string_view text) noexcept {
  for (const ReportFormat format : kReportFormats)
    if (rawValue(format) == text) return format;
  return std::nullopt;
}

std::string_view fileSuffix(ReportFormat format) noexcept {
  switch (format) {
    case ReportFormat::html:
      return ".html";
    case ReportFormat::csv:
      return ".csv";
    case ReportFormat::pdf:
      return ".pdf";
    case ReportFormat::record:
      return ".report.json";
  }
  return {};
}

void ReportRenderer::prepareForPDF() {
  const auto start = [this] {
    Interrupter interrupter;
    browser_.warmUp(
        {.deadline = std::chrono::steady_clock::now() + patience_, .observer = &interrupter});
  };
  try {
    preparation_ = std::async(std::launch::async, start).share();
  } catch (const std::system_error&) {
    // No thread to be had: the first PDF starts the browser.
  }
}

std::string ReportRenderer::render(const OrvaneReport& report, ReportFormat format,
                                   std::vector<std::string>& warnings) {
  switch (format) {
    case ReportFormat::html:
      return html(report);
    case ReportFormat::csv:
      return CSVReportBuilder::build(report);
    case ReportFormat::pdf:
      return pdf(report, warnings);
    case ReportFormat::record:
      return encodeJSON(report) + "\n";
  }
  return {};
}

std::string ReportRenderer::html(const OrvaneReport& report) const {
  return HTMLReportBuilder::build(report,
                                  sourceDate_ ? ReportLocale{.timeZone = "UTC"} : ReportLocale{});
}

std::string ReportRenderer::pdf(const OrvaneReport& report, std::vector<std::string>& warnings) {
  // What the preparation takes is part of it: a browser that hangs there will hang again.
  const auto end = std::chrono::steady_clock::now() + patience_;
  if (auto preparation = preparation_; preparation.valid()) preparation.wait_until(end);
  Interrupter interrupter;
  PDFReportRenderer::Execution execution{
      .deadline = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now()),
      .session = &browser_,
      .warnings = &warnings,
      .observer = &interrupter};
  if (sourceDate_) execution.sourceDateEpoch = sourceDate_->time_since_epoch().count();
  const auto bytes = PDFReportRenderer::render(html(report), execution);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace orvane::cli
