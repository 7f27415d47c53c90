#pragma once

#include <string>

#include "orvane/platform/export.h"
#include "orvane/report/orvane_report.h"

/// Renders a report as comma-separated text for spreadsheets, lines ended by CR LF. Numbers have a
/// decimal point in every locale; absent ones are empty. A text that a spreadsheet would take for a
/// formula is preceded by an apostrophe. Both tables say it when a file's one channel was measured
/// as two.
namespace orvane::CSVReportBuilder {

/// The chapters when the report has any, else the figures of the file.
ORVANE_API std::string build(const OrvaneReport& report);

/// A head row, then one row of sixteen columns per chapter.
ORVANE_API std::string chaptersCSV(const ReportChapterTable& table);

/// A head row, then one row per figure: its name and its value.
ORVANE_API std::string fileMetricsCSV(const OrvaneReport& report);

}  // namespace orvane::CSVReportBuilder
