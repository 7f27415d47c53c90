// One row per channel.
#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/report_text.h"

namespace orvane::HTMLReportBuilder {
namespace {

std::string_view peakClass(float peakDB) {
  if (peakDB > -1) return "value-bad";
  return peakDB > -6 ? "value-warn" : "value-good";
}

std::string row(const ReportChannel& channel) {
  std::string label = "<span class=\"ch-label\">" + escaped(channel.label) + "</span>";
  if (channel.hasClipping) label += " <span class=\"clip-badge\">CLIP</span>";
  std::string html = "<tr><td>" + label + "</td>";
  html += cell(peakClass(channel.peakDB), valueText(channel.peakDB, 1, " dBFS"));
  html += "<td>" + valueText(channel.rmsDB, 1, " dBFS") + "</td>";
  html += "<td>" + valueText(channel.crestFactorDB, 1, " dB") + "</td>";
  html += "<td>" + valueText(channel.dcOffset, 5, "") + "</td>";
  return html + "</tr>\n";
}

}  // namespace

std::string channelsSection(std::span<const ReportChannel> channels) {
  if (channels.empty()) return {};
  std::string html = element("div", "section-title", "Per-Channel");
  html += "<div class=\"table-container\">\n<table>\n";
  html += headRow({"CH", "Peak", "RMS", "Crest Factor", "DC Offset"});
  for (const ReportChannel& channel : channels) html += row(channel);
  return html + "</table>\n</div>\n";
}

}  // namespace orvane::HTMLReportBuilder
