#include "orvane/text/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace orvane::NumberText {
namespace {

template <typename Number, typename... Form>
std::string digits(Number value, Form... form) {
  if (std::isnan(value)) return "nan";
  std::array<char, 512>
      buffer;  // no double takes more than 343 characters, or 309 before its point
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, form...).ptr;
  return {buffer.data(), end};
}

}  // namespace

std::string shortest(double value) {
  return digits(value);
}

std::string plain(double value) {
  const double size = std::abs(value);
  const bool isPlain = size == 0 || (size >= 1e-4 && size < 1e15);
  return digits(value, isPlain ? std::chars_format::fixed : std::chars_format::scientific);
}

std::string plain(float value) {
  // As the number that its own digits stand for, which are fewer.
  const std::string text = digits(value);
  double wide = 0;
  if (std::isfinite(value)) std::from_chars(text.data(), text.data() + text.size(), wide);
  return std::isfinite(value) ? plain(wide) : text;
}

std::string withoutExponent(double value) {
  return digits(value, std::chars_format::fixed);
}

std::string fixed(double value, int decimals) {
  return digits(value, std::chars_format::fixed, decimals);
}

std::string padded(std::int64_t value, std::size_t digits) {
  const std::string text = std::to_string(value);
  return std::string(digits - std::min(text.size(), digits), '0') + text;
}

}  // namespace orvane::NumberText
