#include "orvane/report/html/svg_chart.h"

#include "orvane/report/html/html_text.h"

namespace orvane::HTMLReportBuilder {

using ReportText::fixed;

std::string openChart(double height, std::string_view label) {
  std::string html = "<svg viewBox=\"0 0 " + fixed(kChartWidth, 1) + " " + fixed(height, 1);
  return html.append("\" width=\"100%\" role=\"img\" aria-label=\"").append(label).append("\">\n");
}

std::string horizontalLine(double y, std::string_view style) {
  std::string html = "<line x1=\"0\" y1=\"" + fixed(y, 1) + "\" x2=\"" + fixed(kChartWidth, 1) +
                     "\" y2=\"" + fixed(y, 1) + "\" ";
  return html.append(style).append("/>\n");
}

std::string chartLabel(std::string_view y, std::string_view color, std::string_view text) {
  std::string html = "<text x=\"4\" y=\"";
  html.append(y)
      .append("\" font-size=\"9\" fill=\"")
      .append(color)
      .append("\" stroke=\"")
      .append(Color::kPage)
      .append("\" stroke-width=\"2\" stroke-linejoin=\"round\" paint-order=\"stroke")
      .append("\" font-family=\"'SF Mono', 'Menlo', monospace\">");
  return html.append(text).append("</text>\n");
}

std::string chartPath(std::string_view points, std::string_view style) {
  std::string html = "<path d=\"";
  html.append(points).append("\" fill=\"none\" stroke-linejoin=\"round\" ");
  return html.append(style).append("/>\n");
}

std::string legendEntry(std::string_view color, std::string_view text) {
  std::string html = "<span class=\"legend-dot\" style=\"background:";
  return html.append(color).append("\">&nbsp;</span>").append(text).append("\n");
}

}  // namespace orvane::HTMLReportBuilder
