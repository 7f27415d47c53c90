#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "orvane/report/csv_report_builder.h"
#include "orvane/report/html/date_text.h"
#include "orvane/report/html/html_report_builder.h"
#include "tests/report/sample_reports.h"
#include "tests/support/golden.h"
#include "tests/support/test_places.h"

namespace orvane {
namespace {

const ReportLocale kLocale{.locale = "en_US", .timeZone = "UTC"};

/// Replaces whatever stands between two texts, both of which stay.
std::string without(std::string text, std::string_view before, std::string_view after) {
  for (auto start = text.find(before); start != std::string::npos;
       start = text.find(before, start + 1)) {
    const auto content = start + before.size();
    text.replace(content, text.find(after, content) - content, "(left out)");
  }
  return text;
}

/// The page without what does not depend on the report or changes with the tools: the style sheet,
/// the drawn icon, the words of the date, the tooltips with their sources.
std::string comparablePage(const OrvaneReport& report) {
  std::string page = HTMLReportBuilder::build(report, kLocale);
  page = without(page, "<style>\n", "</style>");
  page = without(page, "data:image/png;base64,", "\"");
  page = without(page, "<div class=\"date\">", "</div>");
  return without(page, " title=\"", "\"");
}

TEST(GoldenReports, AreRenderedAsAccepted) {
  for (const auto& [name, report] : test::sampleReports()) {
    test::expectAccepted(test::places::goldenReports, name + ".html", comparablePage(report));
    test::expectAccepted(test::places::goldenReports, name + ".csv",
                         CSVReportBuilder::build(report));
  }
}

TEST(GoldenReports, ReadTheSameAfterAWayThroughJSON) {
  for (const auto& [name, report] : test::sampleReports()) {
    const auto again = decodeJSON<OrvaneReport>(encodeJSON(report));
    EXPECT_EQ(CSVReportBuilder::build(again), CSVReportBuilder::build(report)) << name;
  }
}

}  // namespace
}  // namespace orvane
