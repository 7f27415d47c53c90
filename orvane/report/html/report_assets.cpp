#include "orvane/report/html/report_assets.h"

#include "report_asset_bytes.h"  // made by the build

namespace orvane::HTMLReportBuilder {

std::string_view pageFrame() noexcept {
  return report_asset_bytes::report_html;
}
std::string_view styleSheet() noexcept {
  return report_asset_bytes::report_css;
}
std::string_view iconPNG() noexcept {
  return report_asset_bytes::orvane_icon_png;
}
std::string_view productURL() noexcept {
  return ORVANE_PRODUCT_URL;
}

}  // namespace orvane::HTMLReportBuilder
