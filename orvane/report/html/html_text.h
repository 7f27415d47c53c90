#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"

/// The small texts of the page. Whatever comes from a file or a user goes through `escaped`.
namespace orvane::HTMLReportBuilder {

/// What stands in the place of a missing figure.
inline constexpr std::string_view kMissing = "-";

/// The page's palette, as far as it is set outside the style sheet.
namespace Color {
inline constexpr std::string_view kPage = "#0d1117";
inline constexpr std::string_view kGood = "#3fb950";
inline constexpr std::string_view kWarning = "#d29922";
inline constexpr std::string_view kBad = "#f85149";
inline constexpr std::string_view kAccent = "#4d8fff";
inline constexpr std::string_view kGrid = "#2a2d33";
inline constexpr std::string_view kChartLabel = "#40464f";
inline constexpr std::string_view kMomentary = "#d4a820";
}  // namespace Color

/// Fit for text and for attributes in double quotes: &, <, >, " and ' as entities, and what could
/// deceive a reader made visible.
ORVANE_TESTING_API std::string escaped(std::string_view text);

/// The number with its unit: "-14.0 LUFS"; "-" when it is absent or not finite.
ORVANE_TESTING_API std::string valueText(std::optional<float> value, int decimals,
                                         std::string_view unit);

/// "42s", "3m 7s"; whole seconds, cut. Nothing below 0.
ORVANE_TESTING_API std::string formatDuration(double seconds);
/// "2.0 MB" (mebibytes), "400 KB" (kibibytes).
ORVANE_TESTING_API std::string formatFileSize(std::int64_t bytes);
/// "44.1 kHz", "800 Hz".
ORVANE_TESTING_API std::string formatSampleRate(double hertz);
/// "3:07", "1:02:03"; whole seconds, cut. Nothing below 0.
ORVANE_TESTING_API std::string formatTimecode(double seconds);

/// `<name class="c">content</name>`, with a line end. The content is inserted as it is.
std::string element(std::string_view name, std::string_view cssClass, std::string_view content);

/// A cell of a table row: `<td class="c">content</td>`.
std::string cell(std::string_view cssClass, std::string_view content);
/// The head row of a table.
std::string headRow(std::initializer_list<std::string_view> titles);

}  // namespace orvane::HTMLReportBuilder
