#include "orvane/text/time_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace orvane {
namespace {

bool isDigit(char character) noexcept {
  return character >= '0' && character <= '9';
}

/// Digits with an optional fraction behind them.
std::optional<double> plainNumber(std::string_view text) noexcept {
  if (text.empty() || !isDigit(text.front()) || !isDigit(text.back())) return std::nullopt;
  double value = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

}  // namespace

std::optional<double> secondsFromTimeText(std::string_view text) noexcept {
  if (std::count(text.begin(), text.end(), ':') > 2) return std::nullopt;
  double seconds = 0;
  for (bool isFirst = true;; isFirst = false) {
    const std::size_t colon = text.find(':');
    const std::string_view part = text.substr(0, colon);
    const auto value = plainNumber(part);
    const std::size_t wholeDigits = std::min(part.find('.'), part.size());
    if (!value || (!isFirst && (*value >= 60 || wholeDigits != 2))) return std::nullopt;
    seconds = seconds * 60 + *value;
    if (!std::isfinite(seconds)) return std::nullopt;
    if (colon == std::string_view::npos) return seconds;
    if (wholeDigits != part.size()) return std::nullopt;  // only seconds have fractions
    text.remove_prefix(colon + 1);
  }
}

}  // namespace orvane
