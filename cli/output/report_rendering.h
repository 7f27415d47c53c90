#pragma once

#include <array>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/report/orvane_report.h"
#include "orvane/report/pdf/browser_session.h"
#include "orvane/text/iso8601_date.h"

namespace orvane::cli {

/// The files that a report can become.
enum class ReportFormat { html, csv, pdf, record };
inline constexpr std::array kReportFormats = {ReportFormat::html, ReportFormat::csv,
                                              ReportFormat::pdf, ReportFormat::record};

/// "html", "csv", "pdf", "report": the name of its option and in `--formats`.
std::string_view rawValue(ReportFormat format) noexcept;
std::optional<ReportFormat> reportFormatFromRawValue(std::string_view text) noexcept;

/// What is put behind the name of a measured file: ".html", ".csv", ".pdf", ".report.json".
std::string_view fileSuffix(ReportFormat format) noexcept;

/// Makes the bytes of reports. Any number of threads may use one at once.
class ReportRenderer {
 public:
  /// A browser that takes longer for one page will not come to an end.
  static constexpr std::chrono::minutes kPatience{2};

  /// With a `sourceDate` nothing in the reports depends on the place and hour of their making.
  explicit ReportRenderer(const std::optional<Date>& sourceDate,
                          std::chrono::milliseconds patience = kPatience)
      : sourceDate_(sourceDate), patience_(patience) {}

  /// Starts the browser in the background, so that a PDF need not wait for it. What goes wrong is
  /// told by the rendering.
  void prepareForPDF();

  /// `warnings` gets a sentence for everything that a reader of the result may miss. Throws
  /// `Error`, for PDF alone.
  std::string render(const OrvaneReport& report, ReportFormat format,
                     std::vector<std::string>& warnings);

 private:
  std::string html(const OrvaneReport& report) const;
  std::string pdf(const OrvaneReport& report, std::vector<std::string>& warnings);

  std::optional<Date> sourceDate_;
  std::chrono::milliseconds patience_;
  BrowserSession browser_{};  ///< started by the preparation or the first PDF
  std::shared_future<void> preparation_{};
};

}  // namespace orvane::cli
