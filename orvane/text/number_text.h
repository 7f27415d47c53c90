#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "orvane/platform/export.h"

/// Numbers as text, the same in every locale. What is not finite is "inf", "-inf" or "nan".
namespace orvane::NumberText {

/// The fewest characters that read back as the same number: "44100", "0.1", "1e+20".
ORVANE_API std::string shortest(double value);

/// The shortest digits that read back as the same number of the same width, with an exponent only
/// below 1e-4 and from 1e15 on: "100000", "0.0001", "1e-05".
ORVANE_API std::string plain(double value);
ORVANE_API std::string plain(float value);

/// The same digits without an exponent, whatever it takes.
ORVANE_API std::string withoutExponent(double value);

/// With that many decimals, as "%.<decimals>f" prints it in the C locale.
ORVANE_API std::string fixed(double value, int decimals);

/// With zeros in front, to at least that many digits; not below 0.
ORVANE_API std::string padded(std::int64_t value, std::size_t digits);

/// The number that the whole text is, in the grammar of `std::from_chars`; absent for anything
/// else.
template <typename Number>
std::optional<Number> parsed(std::string_view text) noexcept {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace orvane::NumberText
