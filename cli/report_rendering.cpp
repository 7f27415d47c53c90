#include "cli/report_rendering.h"

#include "orvane/report/csv_report_builder.h"
#include "orvane/report/html_report_builder.h"

namespace orvane::cli {
namespace {

std::string html(const OrvaneReport& report, const std::optional<Date>& sourceDate) {
  return HTMLReportBuilder::build(report,
                                  sourceDate ? ReportLocale{.timeZone = "UTC"} : ReportLocale{});
}

}  // namespace

std::string_view rawValue(ReportFormat format) noexcept {
  switch (format) {
    case ReportFormat::html:
      return "html";
    case ReportFormat::csv:
      return "csv";
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
    case ReportFormat::record:
      return ".report.json";
  }
  return {};
}

std::string rendered(const OrvaneReport& report, ReportFormat format,
                     const std::optional<Date>& sourceDate) {
  switch (format) {
    case ReportFormat::html:
      return html(report, sourceDate);
    case ReportFormat::csv:
      return CSVReportBuilder::build(report);
    case ReportFormat::record:
      return encodeJSON(report) + "\n";
  }
  return {};
}

}  // namespace orvane::cli
