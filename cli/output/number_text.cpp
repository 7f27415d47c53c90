#include "cli/output/number_text.h"

#include <array>

namespace orvane::cli::NumberText {

std::string fixed(double value, int decimals) {
  std::string text = orvane::NumberText::fixed(value, decimals);
  const bool isZero = text.find_first_of("123456789in") == std::string::npos;
  if (isZero && text[0] == '-') text.erase(0, 1);
  return text;
}

std::string signedFixed(double value, int decimals) {
  const std::string text = fixed(value, decimals);
  const bool isPositive = text[0] != '-' && text.find_first_of("123456789i") != std::string::npos;
  return isPositive ? "+" + text : text;
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
  const bool isInKilohertz = hertz >= 1000;
  std::string text = fixed(isInKilohertz ? hertz / 1000 : hertz, 3);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text + (isInKilohertz ? " kHz" : " Hz");
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
