#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"

/// Numbers and foreign text as reports show them; the same in every locale.
namespace orvane::ReportText {

/// As "%.<decimals>f" prints it in the C locale, −0 as 0; "-" when it is not finite.
ORVANE_TESTING_API std::string fixed(double value, int decimals);
ORVANE_TESTING_API std::string fixed(float value, int decimals);

/// The same with "+" before values that are not negative.
ORVANE_TESTING_API std::string signedFixed(float value, int decimals);

/// The value when it is present and finite.
ORVANE_TESTING_API std::optional<float> finite(std::optional<float> value) noexcept;

/// The text with everything visible that could deceive a reader or a terminal: "\u{202E}" for a
/// mark that turns the direction of writing, "\u{1B}" for a control character, U+FFFD for bytes
/// that are no UTF-8. Tabs and line ends stay, and so do soft hyphens, the marks of right-to-left
/// scripts that overrule nothing, and flags.
ORVANE_TESTING_API std::string visible(std::string_view text);

}  // namespace orvane::ReportText
