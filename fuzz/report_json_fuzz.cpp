// Reads arbitrary bytes as a report, and renders what is one.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "orvane/report/csv_report_builder.h"
#include "orvane/report/html/html_report_builder.h"
#include "orvane/text/utf8.h"

namespace {

using orvane::fuzz::require;

void checkReport(const orvane::OrvaneReport& report) {
  const std::string text = orvane::encodeJSON(report);
  require(orvane::isValidUTF8(text));
  require(orvane::encodeJSON(orvane::decodeJSON<orvane::OrvaneReport>(text)) == text);
  require(orvane::isValidUTF8(orvane::CSVReportBuilder::build(report)));
  const std::string page = orvane::HTMLReportBuilder::build(report, {"en", "UTC"});
  require(orvane::isValidUTF8(page));
  require(page.find("<script") == std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  try {
    checkReport(orvane::decodeJSON<orvane::OrvaneReport>(text));
  } catch (const orvane::DecodingError& error) {
    require(!error.errorDescription().empty());
  }
  return 0;
}
