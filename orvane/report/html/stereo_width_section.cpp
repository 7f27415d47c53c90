// Stereo correlation over time.
#include <array>

#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/html/svg_chart.h"

namespace orvane::HTMLReportBuilder {
namespace {

using ReportText::fixed;

constexpr double kHeight = 90;

/// A band of the chart. The outer bounds lie just beyond ±1, so that the bands meet the edges.
struct Band {
  double low;
  double high;
  std::string_view fill;
};
constexpr std::array<Band, 5> kBands = {{{-1.001, -0.5, "#2e0a0a"},
                                         {-0.5, 0.0, "#2e1800"},
                                         {0.0, 0.5, "#0a2010"},
                                         {0.5, 0.95, "#1e1a00"},
                                         {0.95, 1.001, "#202020"}}};

double height(double correlation) {
  return ((correlation + 1) * -0.5 + 1) * kHeight;
}

std::string bandRectangle(const Band& band) {
  const double top = height(band.high);
  std::string html = "<rect x=\"0\" y=\"" + fixed(top, 1) + "\" width=\"" + fixed(kChartWidth, 1) +
                     "\" height=\"" + fixed(height(band.low) - top, 1) + "\" fill=\"";
  return html.append(band.fill).append("\"/>\n");
}

std::string_view zoneWord(float correlation) {
  if (correlation >= 0.95F) return "Mono";
  if (correlation >= 0.5F) return "Narrow";
  if (correlation >= 0.0F) return "Stereo";
  return correlation >= -0.5F ? "Wide" : "Out of phase";
}

std::string percent(float share) {
  return valueText(share, 0, "%");
}

std::string averageText(float average) {
  return "avg correlation " + valueText(average, 2, "") + " · " + std::string(zoneWord(average));
}

std::string zone(std::string_view cssClass, std::string_view name, float share) {
  return element("span", "zone " + std::string(cssClass), std::string(name) + " " + percent(share));
}

}  // namespace

std::string stereoWidthSection(const ReportStereoWidth& width, double duration) {
  std::string html = "<div class=\"chart-container\">\n<div class=\"chart-header\">\n";
  html += element("div", "section-title", "Stereo Width");
  html += "<div class=\"chart-legend\">" + averageText(width.averageCorrelation) +
          " <span style=\"color:#f85149\">" + percent(width.outOfPhasePercent) +
          " OOP</span></div>\n";
  html += "</div>\n" + openChart(kHeight, "Stereo correlation over time");
  for (const Band& band : kBands) html += bandRectangle(band);
  html += horizontalLine(height(0), "stroke=\"#2a2d33\" stroke-width=\"0.5\"");
  const std::span<const StereoWidthSample> curve(width.curve);
  html += chartPath(pathPoints(curve, duration,
                               [](const StereoWidthSample& sample) {
                                 return height(static_cast<double>(sample.correlation));
                               }),
                    "stroke=\"#3fb950\" stroke-width=\"1\"");
  html += chartLabel("42", Color::kChartLabel, "0.0");
  html += kCloseChart;
  html += "<div class=\"zone-legend\">\n" + zone("mono", "Mono", width.monoPercent) +
          zone("narrow", "Narrow", width.narrowPercent) +
          zone("stereo", "Stereo", width.stereoPercent) + zone("wide", "Wide", width.widePercent) +
          zone("oop", "OOP", width.outOfPhasePercent) + "</div>\n";
  return html + "</div>\n";
}

}  // namespace orvane::HTMLReportBuilder
