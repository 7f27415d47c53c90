#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "orvane/report/report_text.h"

/// Charts of a value over time, drawn in units of CSS pixels.
namespace orvane::HTMLReportBuilder {

inline constexpr double kChartWidth = 714;

/// Opens the drawing, which takes the width of its container. `label` is read aloud.
std::string openChart(double height, std::string_view label);
inline constexpr std::string_view kCloseChart = "</svg>\n";

/// A horizontal line across the chart; `style` holds its attributes.
std::string horizontalLine(double y, std::string_view style);
/// A small text at the left edge, standing on `y`; readable on top of curves.
std::string chartLabel(std::string_view y, std::string_view color, std::string_view text);

/// A line through points given as "M x,y L x,y …"; `style` holds its attributes.
std::string chartPath(std::string_view points, std::string_view style);

/// A legend's dot and its text.
std::string legendEntry(std::string_view color, std::string_view text);

/// Every how many points of a curve are drawn, so that a path has about 1,500 of them.
constexpr std::size_t pathStride(std::size_t pointCount) noexcept {
  constexpr std::size_t kWanted = 1500;
  return pointCount < kWanted ? 1 : pointCount / kWanted;
}

/// The path of a curve. `height` gives the y of a point; NaN leaves the point out.
template <typename Point, typename Height>
std::string pathPoints(std::span<const Point> curve, double duration, Height height) {
  const std::size_t stride = pathStride(curve.size());
  std::string points;
  for (std::size_t i = 0; i < curve.size(); i += stride) {
    const double x = curve[i].time / std::max(duration, 0.001) * kChartWidth;
    const double y = height(curve[i]);
    if (!std::isfinite(x) || !std::isfinite(y)) continue;
    points += points.empty() ? "M" : " L";
    points += ReportText::fixed(x, 1);
    points += ',';
    points += ReportText::fixed(y, 1);
  }
  return points;
}

}  // namespace orvane::HTMLReportBuilder
