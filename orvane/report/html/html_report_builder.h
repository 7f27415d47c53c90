#pragma once

#include <string>

#include "orvane/platform/export.h"
#include "orvane/report/orvane_report.h"
#include "orvane/report/report_locale.h"

/// Renders a report as one page of HTML, 794 px wide, that needs nothing else: style sheet, charts
/// and icon stand in it, and it asks for nothing from outside.
namespace orvane::HTMLReportBuilder {

ORVANE_API std::string build(const OrvaneReport& report);
/// The same with the date of another place.
ORVANE_API std::string build(const OrvaneReport& report, const ReportLocale& locale);

}  // namespace orvane::HTMLReportBuilder
