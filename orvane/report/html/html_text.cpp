#include "orvane/report/html/html_text.h"

#include <algorithm>
#include <cmath>

#include "orvane/report/report_text.h"
#include "orvane/text/number_text.h"

namespace orvane::HTMLReportBuilder {
namespace {

/// Whole seconds that fit an integer, whatever the record says.
std::int64_t wholeSeconds(double seconds) {
  constexpr double kMost = 1e15;  // below 2^53: exact
  return seconds > 0 ? static_cast<std::int64_t>(std::min(seconds, kMost)) : 0;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : ReportText::visible(text)) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string valueText(std::optional<float> value, int decimals, std::string_view unit) {
  const auto number = ReportText::finite(value);
  if (!number) return std::string(kMissing);
  return ReportText::fixed(*number, decimals) + std::string(unit);
}

std::string formatDuration(double seconds) {
  const std::int64_t whole = wholeSeconds(seconds);
  const std::string rest = std::to_string(whole % 60) + "s";
  return whole < 60 ? rest : std::to_string(whole / 60) + "m " + rest;
}

std::string formatFileSize(std::int64_t bytes) {
  constexpr double kKibibyte = 1024;
  const auto kibibytes = static_cast<double>(bytes) / kKibibyte;
  const double mebibytes = kibibytes / kKibibyte;
  return mebibytes >= 1 ? ReportText::fixed(mebibytes, 1) + " MB"
                        : ReportText::fixed(kibibytes, 0) + " KB";
}

std::string formatSampleRate(double hertz) {
  return hertz >= 1000 ? ReportText::fixed(hertz / 1000, 1) + " kHz"
                       : ReportText::fixed(std::trunc(hertz), 0) + " Hz";
}

std::string formatTimecode(double seconds) {
  const std::int64_t whole = wholeSeconds(seconds);
  const std::int64_t hours = whole / 3600;
  const std::int64_t minutes = whole / 60 % 60;
  const std::string end = ":" + NumberText::padded(whole % 60, 2);
  return hours > 0 ? std::to_string(hours) + ":" + NumberText::padded(minutes, 2) + end
                   : std::to_string(minutes) + end;
}

std::string element(std::string_view name, std::string_view cssClass, std::string_view content) {
  std::string html = "<";
  html.append(name).append(" class=\"").append(cssClass).append("\">");
  html.append(content).append("</").append(name).append(">\n");
  return html;
}

std::string cell(std::string_view cssClass, std::string_view content) {
  std::string html = "<td class=\"";
  return html.append(cssClass).append("\">").append(content).append("</td>");
}

std::string headRow(std::initializer_list<std::string_view> titles) {
  std::string html = "<tr>";
  for (const std::string_view title : titles) html.append("<th>").append(title).append("</th>");
  return html + "</tr>\n";
}

}  // namespace orvane::HTMLReportBuilder
