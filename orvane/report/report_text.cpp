#include "orvane/report/report_text.h"

#include <array>
#include <charconv>
#include <cmath>

#include "orvane/text/number_text.h"
#include "orvane/text/utf8.h"

namespace orvane::ReportText {
namespace {

/// Line ends and tabs; soft hyphens, the direction marks of single letters, the letters of flags.
/// No page shows them wrongly, and texts need them.
bool isHarmless(char32_t character) {
  constexpr std::u32string_view kHarmless = U"\t\n\r\u00AD\u061C\u200E\u200F";
  return kHarmless.find(character) != std::u32string_view::npos ||
         (character >= 0xE0020 && character <= 0xE007F);
}

void appendCodePoint(std::string& text, char32_t character) {
  std::array<char, 8> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                 static_cast<std::uint32_t>(character), 16);
  text += "\\u{";
  for (const char* digit = digits.data(); digit != end.ptr; ++digit)
    text += *digit >= 'a' ? static_cast<char>(*digit - 'a' + 'A') : *digit;
  text += '}';
}

}  // namespace

std::string fixed(double value, int decimals) {
  constexpr double kWithoutSign = 0;  // −0 + 0 is 0
  return std::isfinite(value) ? NumberText::fixed(value + kWithoutSign, decimals) : "-";
}

std::string fixed(float value, int decimals) {
  return fixed(static_cast<double>(value), decimals);
}

std::string signedFixed(float value, int decimals) {
  return (value >= 0 ? "+" : "") + fixed(value, decimals);
}

std::optional<float> finite(std::optional<float> value) noexcept {
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::string visible(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const UTF8Character first = firstUTF8Character(text);
    if (!first.isWellFormed) {
      result += kReplacementCharacter;
    } else if (isDeceptive(first.codePoint) && !isHarmless(first.codePoint)) {
      appendCodePoint(result, first.codePoint);
    } else {
      result += text.substr(0, first.length);
    }
    text.remove_prefix(first.length);
  }
  return result;
}

}  // namespace orvane::ReportText
