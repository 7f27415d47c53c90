#include "orvane/text/utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvane {
namespace {

/// Bytes of the well-formed sequence at the start of `text`; 0 when there is none.
std::size_t sequenceLength(std::string_view text) noexcept {
  const auto byte = [&](std::size_t i) -> unsigned {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const auto in = [](unsigned value, unsigned low, unsigned high) {
    return value >= low && value <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (in(first, 0xC2, 0xDF)) return in(byte(1), 0x80, 0xBF) ? 2 : 0;
  if (in(first, 0xE0, 0xEF)) {
    const unsigned low = first == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : 0xBF;
    return in(byte(1), low, high) && in(byte(2), 0x80, 0xBF) ? 3 : 0;
  }
  if (in(first, 0xF0, 0xF4)) {
    const unsigned low = first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
    return in(byte(1), low, high) && in(byte(2), 0x80, 0xBF) && in(byte(3), 0x80, 0xBF) ? 4 : 0;
  }
  return 0;
}

struct CharacterRange {
  char32_t first;
  char32_t last;
};

constexpr std::array kDeceptive = {
    CharacterRange{0x00, 0x1F},     CharacterRange{0x7F, 0x9F},
    CharacterRange{0xAD, 0xAD},     CharacterRange{0x61C, 0x61C},
    CharacterRange{0x180E, 0x180E}, CharacterRange{0x200B, 0x200B},
    CharacterRange{0x200E, 0x200F}, CharacterRange{0x2028, 0x202E},
    CharacterRange{0x2060, 0x206F}, CharacterRange{0xFEFF, 0xFEFF},
    CharacterRange{0xFFF9, 0xFFFB}, CharacterRange{0xE0000, 0xE007F},
};

}  // namespace

UTF8Character firstUTF8Character(std::string_view text) noexcept {
  const std::size_t length = sequenceLength(text);
  if (length == 0) return {.codePoint = 0xFFFD, .length = 1, .isWellFormed = false};
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  char32_t character = length == 1 ? byte(0) : byte(0) & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) character = (character << 6) | (byte(i) & 0x3FU);
  return {.codePoint = character, .length = length};
}

void appendUTF8(std::string& text, char32_t character) {
  const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
  const auto appendTail = [&](int shift) { append(0x80U | ((character >> shift) & 0x3FU)); };
  if (character < 0x80) return append(character);
  if (character < 0x800) {
    append(0xC0U | (character >> 6));
  } else if (character < 0x10000) {
    append(0xE0U | (character >> 12));
    appendTail(6);
  } else {
    append(0xF0U | (character >> 18));
    appendTail(12);
    appendTail(6);
  }
  appendTail(0);
}

std::string wellFormedUTF8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const UTF8Character first = firstUTF8Character(text);
    result += first.isWellFormed ? text.substr(0, first.length) : kReplacementCharacter;
    text.remove_prefix(first.length);
  }
  return result;
}

std::string utf8FromLatin1(std::string_view text) {
  std::string result;
  for (const char c : text) appendUTF8(result, static_cast<unsigned char>(c));
  return result;
}

bool isDeceptive(char32_t character) noexcept {
  return std::any_of(kDeceptive.begin(), kDeceptive.end(),
                     [character](const CharacterRange& range) {
                       return character >= range.first && character <= range.last;
                     });
}

bool isValidUTF8(std::string_view text) noexcept {
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace orvane
