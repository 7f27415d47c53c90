#include "cli/terminal_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace orvane::cli::TerminalText {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Controls, direction marks and characters without a shape, which could make a line read as
// something else than it is.
constexpr std::array kDeceptive = {
    Range{0x00, 0x1F},     Range{0x7F, 0x9F},     Range{0xAD, 0xAD},       Range{0x61C, 0x61C},
    Range{0x180E, 0x180E}, Range{0x200B, 0x200F}, Range{0x2028, 0x202E},   Range{0x2060, 0x206F},
    Range{0xFEFF, 0xFEFF}, Range{0xFFF9, 0xFFFB}, Range{0xE0000, 0xE007F},
};

// Combining marks (Unicode general categories Mn and Me) of the scripts in common use.
constexpr std::array kWithoutWidth = {
    Range{0x300, 0x36F},   Range{0x483, 0x489},   Range{0x591, 0x5BD},     Range{0x610, 0x61A},
    Range{0x64B, 0x65F},   Range{0xE31, 0xE31},   Range{0xE34, 0xE3A},     Range{0xE47, 0xE4E},
    Range{0x1AB0, 0x1AFF}, Range{0x1DC0, 0x1DFF}, Range{0x20D0, 0x20FF},   Range{0x3099, 0x309A},
    Range{0xFE00, 0xFE0F}, Range{0xFE20, 0xFE2F}, Range{0xE0100, 0xE01EF},
};

// Unicode Standard Annex 11: East Asian wide and fullwidth, and emoji.
constexpr std::array kWide = {
    Range{0x1100, 0x115F},   Range{0x2E80, 0x303E},   Range{0x3041, 0x33FF},
    Range{0x3400, 0x4DBF},   Range{0x4E00, 0x9FFF},   Range{0xA000, 0xA4CF},
    Range{0xA960, 0xA97F},   Range{0xAC00, 0xD7A3},   Range{0xF900, 0xFAFF},
    Range{0xFE30, 0xFE6F},   Range{0xFF00, 0xFF60},   Range{0xFFE0, 0xFFE6},
    Range{0x1F300, 0x1F64F}, Range{0x1F680, 0x1F6FF}, Range{0x1F900, 0x1F9FF},
    Range{0x20000, 0x3FFFD},
};

template <std::size_t count>
bool isIn(const std::array<Range, count>& ranges, char32_t character) {
  return std::any_of(ranges.begin(), ranges.end(), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

struct Decoded {
  char32_t character;
  std::size_t length;  // bytes
};

// The character at the start of `text`; absent when the bytes there are no shortest-form UTF-8.
std::optional<Decoded> decodeFirst(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return Decoded{lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return std::nullopt;
  char32_t character = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0U) != 0x80U) return std::nullopt;
    character = (character << 6) | (next & 0x3FU);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kSmallest[length] || character > 0x10FFFF || isSurrogate) return std::nullopt;
  return Decoded{character, length};
}

std::string hexadecimal(std::uint32_t value, std::size_t digits) {
  std::string text(digits, '0');
  for (std::size_t i = digits; i-- > 0; value >>= 4) text[i] = "0123456789ABCDEF"[value & 0xFU];
  return text;
}

std::string escape(char32_t character) {
  switch (character) {
    case U'\n':
      return "\\n";
    case U'\r':
      return "\\r";
    case U'\t':
      return "\\t";
    default:
      break;
  }
  if (character < 0x100) return "\\x" + hexadecimal(character, 2);
  if (character < 0x10000) return "\\u" + hexadecimal(character, 4);
  return "\\U" + hexadecimal(character, 8);
}

std::size_t width(char32_t character) {
  if (isIn(kWithoutWidth, character)) return 0;
  return isIn(kWide, character) ? 2 : 1;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto decoded = decodeFirst(text);
    if (!decoded) {
      result += "\\x" + hexadecimal(static_cast<unsigned char>(text[0]), 2);
      text.remove_prefix(1);
      continue;
    }
    if (isIn(kDeceptive, decoded->character)) {
      result += escape(decoded->character);
    } else {
      result += text.substr(0, decoded->length);
    }
    text.remove_prefix(decoded->length);
  }
  return result;
}

std::size_t width(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const auto decoded = decodeFirst(text);
    columns += decoded ? width(decoded->character) : 1;
    text.remove_prefix(decoded ? decoded->length : 1);
  }
  return columns;
}

std::string shortened(std::string_view text, std::size_t columns) {
  if (width(text) <= columns) return std::string(text);
  if (columns == 0) return "";
  // The end of a file name tells more than its middle.
  const std::size_t headColumns = (columns - 1) / 2;
  const std::size_t tailColumns = columns - 1 - headColumns;
  std::size_t head = 0;
  for (std::size_t used = 0; head < text.size();) {
    const auto decoded = decodeFirst(text.substr(head));
    used += decoded ? width(decoded->character) : 1;
    if (used > headColumns) break;
    head += decoded ? decoded->length : 1;
  }
  std::size_t tail = head;
  while (width(text.substr(tail)) > tailColumns) {
    const auto decoded = decodeFirst(text.substr(tail));
    tail += decoded ? decoded->length : 1;
  }
  return std::string(text.substr(0, head)) + "…" + std::string(text.substr(tail));
}

}  // namespace orvane::cli::TerminalText
