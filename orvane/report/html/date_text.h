#pragma once

#include <string>

#include "orvane/platform/export.h"
#include "orvane/report/report_locale.h"
#include "orvane/text/iso8601_date.h"

namespace orvane::HTMLReportBuilder {

/// The date in the locale's long style, the time in its short one: "January 5, 2026 at 3:04 PM".
/// A locale or time zone that is unknown falls back as ICU does.
ORVANE_TESTING_API std::string longDateText(Date date, const ReportLocale& locale);

}  // namespace orvane::HTMLReportBuilder
