#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/iso8601_date.h"
#include "orvane/report/orvane_report.h"

namespace orvane::cli {

/// The files that a report can become.
enum class ReportFormat { html, csv, record };
inline constexpr std::array kReportFormats = {ReportFormat::html, ReportFormat::csv,
                                              ReportFormat::record};

/// "html", "csv", "report": the name of its option and in `--formats`.
std::string_view rawValue(ReportFormat format) noexcept;
std::optional<ReportFormat> reportFormatFromRawValue(std::string_view text) noexcept;

/// What is put behind the name of a measured file: ".html", ".csv", ".report.json".
std::string_view fileSuffix(ReportFormat format) noexcept;

/// The bytes of a report. With a `sourceDate` nothing in them depends on the place and hour of
/// their making.
std::string rendered(const OrvaneReport& report, ReportFormat format,
                     const std::optional<Date>& sourceDate);

}  // namespace orvane::cli
