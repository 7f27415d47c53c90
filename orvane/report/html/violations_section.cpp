// How often and how long the loudness is above the thresholds.
#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/report_text.h"

namespace orvane::HTMLReportBuilder {
namespace {

std::string row(std::string_view kind, std::optional<float> threshold, std::int64_t count,
                std::span<const ReportTimeRange> ranges) {
  if (!threshold || ranges.empty()) return {};
  double total = 0;
  for (const ReportTimeRange& range : ranges) total += range.end - range.start;
  std::string text(kind);
  text += " &gt; " + ReportText::fixed(*threshold, 1) + " LUFS &mdash; <b>" +
          std::to_string(count) + "</b> region" + (count == 1 ? "" : "s") + " · " +
          ReportText::fixed(total, 1) + " s total";
  return element("div", "viol-row", text);
}

}  // namespace

std::string violationsSection(const ReportViolations& violations) {
  const std::string rows = row("Momentary", violations.momentaryThreshold,
                               violations.momentaryCount, violations.momentaryRanges) +
                           row("Short-term", violations.shortTermThreshold,
                               violations.shortTermCount, violations.shortTermRanges);
  if (rows.empty()) return {};
  return element("div", "section-title", "Violations") + "<div class=\"viol-container\">\n" + rows +
         "</div>\n";
}

}  // namespace orvane::HTMLReportBuilder
