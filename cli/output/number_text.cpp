#include "cli/output/number_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace orvane::cli::NumberText {
namespace {

// Enough for every double in fixed notation: 309 digits before the point.
using Digits = std::array<char, 400>;

template <typename... Form>
std::string digits(double value, Form... form) {
  Digits buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, form...).ptr;
  return {buffer.data(), end};
}

std::string padded(std::int64_t value, std::size_t width) {
  std::string text = std::to_string(value);
  return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

}  // namespace

std::string fixed(double value, int decimals) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  std::string text = digits(value, std::chars_format::fixed, decimals);
  const bool isZero = text.find_first_of("123456789") == std::string::npos;
  if (isZero && text[0] == '-') text.erase(0, 1);
  return text;
}

std::string signedFixed(double value, int decimals) {
  const std::string text = fixed(value, decimals);
  const bool isPositive = text[0] != '-' && text.find_first_of("123456789i") != std::string::npos;
  return isPositive ? "+" + text : text;
}

std::string shortest(double value) {
  return digits(value);
}

double withFloatDigits(float value) {
  if (!std::isfinite(value)) return static_cast<double>(value);
  Digits buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  double result = 0;
  std::from_chars(buffer.data(), end, result);
  return result;
}

std::string duration(double seconds) {
  // No file reaches this bound; it keeps the conversion defined.
  if (!(seconds >= 0) || seconds > 1e12) return "?";
  // A frame count divided by the rate may lie a hair below the millisecond it stands for.
  const auto milliseconds = static_cast<std::int64_t>(seconds * 1000 + 1e-6);
  const std::int64_t minutes = milliseconds / 60'000;
  const std::int64_t hours = minutes / 60;
  const std::string tail =
      ":" + padded(milliseconds / 1000 % 60, 2) + "." + padded(milliseconds % 1000, 3);
  if (hours == 0) return std::to_string(minutes) + tail;
  return std::to_string(hours) + ":" + padded(minutes % 60, 2) + tail;
}

std::string sampleRate(double hertz) {
  return hertz < 1000 ? shortest(hertz) + " Hz" : shortest(hertz / 1000) + " kHz";
}

std::string byteCount(std::int64_t bytes) {
  if (bytes < 1024) return std::to_string(bytes) + " B";
  constexpr std::array kUnits = {" KiB", " MiB", " GiB", " TiB", " PiB", " EiB"};
  double value = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  for (; value >= 1024 && unit + 1 < kUnits.size(); ++unit) value /= 1024;
  return fixed(value, 1) + kUnits[unit];
}

std::string counted(std::int64_t count, const std::string& noun) {
  std::string text = std::to_string(count);
  for (std::size_t i = text.size(); i > 3 && text[i - 4] != '-'; i -= 3) text.insert(i - 3, ",");
  return text + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace orvane::cli::NumberText
