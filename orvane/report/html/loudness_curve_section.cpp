// Loudness over time.
#include <array>
#include <limits>

#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/html/svg_chart.h"

namespace orvane::HTMLReportBuilder {
namespace {

using ReportText::fixed;

constexpr double kHeight = 160;
constexpr double kTop = -5;      // LUFS at the upper edge
constexpr double kBottom = -50;  // LUFS at the lower edge
/// Points at or below are no measurement.
constexpr float kNothing = -200;

constexpr std::array kGridLevels = {-10, -14, -16, -23, -30, -40};
/// The broadcast reference of EBU R 128, marked among the grid lines.
constexpr int kReference = -23;

double height(double level) {
  if (level >= kTop) return 0;
  return ((std::max(level, kBottom) - kBottom) / (kBottom - kTop) + 1) * kHeight;
}

double heightOf(const LoudnessSample& sample) {
  if (sample.lufs <= kNothing) return std::numeric_limits<double>::quiet_NaN();
  return std::isnan(sample.lufs) ? static_cast<double>(sample.lufs)
                                 : height(static_cast<double>(sample.lufs));
}

std::string gridLine(int level) {
  return horizontalLine(height(level),
                        level == kReference
                            ? "stroke=\"#4d8fff\" stroke-width=\"0.75\" stroke-dasharray=\"5 4\""
                            : "stroke=\"#2a2d33\" stroke-width=\"0.5\"");
}

std::string gridLabel(int level) {
  return chartLabel(fixed(height(level) - 3, 1),
                    level == kReference ? Color::kAccent : Color::kChartLabel,
                    std::to_string(level) + " LUFS");
}

std::string curve(std::span<const LoudnessSample> samples, double duration, std::string_view color,
                  std::string_view width) {
  std::string style = "stroke=\"";
  style.append(color).append("\" stroke-width=\"").append(width).append("\"");
  return chartPath(pathPoints(samples, duration, heightOf), style);
}

std::string rangeText(const ReportSelectionLoudness* selection) {
  if (selection == nullptr) return "Full file";
  return "Selection " + fixed(selection->startTime, 1) + " s to " + fixed(selection->endTime, 1) +
         " s";
}

}  // namespace

std::string loudnessCurveSection(std::span<const LoudnessSample> momentary,
                                 std::span<const LoudnessSample> shortTerm,
                                 std::span<const LoudnessSample> integrated, double duration,
                                 const ReportSelectionLoudness* selection) {
  if (momentary.empty()) return {};
  std::string html = "<div class=\"chart-container\">\n<div class=\"chart-header\">\n";
  html += element("div", "section-title", "Loudness Curve");
  html += "<div class=\"chart-legend\">\n" + legendEntry(Color::kMomentary, "Momentary") +
          legendEntry(Color::kAccent, "Short-term") + legendEntry(Color::kGood, "Integrated") +
          "</div>\n";
  html += element("div", "chart-range", rangeText(selection)) + "</div>\n";
  html += openChart(kHeight, "Loudness over time");
  html += "<rect width=\"" + fixed(kChartWidth, 1) + "\" height=\"" + fixed(kHeight, 1) +
          "\" fill=\"#0d1117\"/>\n";
  for (const int level : kGridLevels) html += gridLine(level);
  html += curve(momentary, duration, Color::kMomentary, "0.9");
  html += curve(shortTerm, duration, Color::kAccent, "1.4");
  html += curve(integrated, duration, Color::kGood, "1.6");
  for (const int level : kGridLevels) html += gridLabel(level);
  html += kCloseChart;
  return html + "</div>\n";
}

}  // namespace orvane::HTMLReportBuilder
