#include "cli/terminal/terminal_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <sstream>

#include "orvane/text/utf8.h"

namespace orvane::cli::TerminalText {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Combining marks (Unicode general categories Mn and Me) of the scripts in common use, and the
// joiners.
constexpr std::array kWithoutWidth = {
    Range{0x300, 0x36F},   Range{0x483, 0x489},   Range{0x591, 0x5BD},   Range{0x610, 0x61A},
    Range{0x64B, 0x65F},   Range{0xE31, 0xE31},   Range{0xE34, 0xE3A},   Range{0xE47, 0xE4E},
    Range{0x1AB0, 0x1AFF}, Range{0x1DC0, 0x1DFF}, Range{0x20D0, 0x20FF}, Range{0x3099, 0x309A},
    Range{0x200C, 0x200D}, Range{0xFE00, 0xFE0F}, Range{0xFE20, 0xFE2F}, Range{0xE0100, 0xE01EF},
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

std::string escapedBut(std::string_view kept, std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const UTF8Character first = firstUTF8Character(text);
    if (!first.isWellFormed) {
      result += "\\x" + hexadecimal(static_cast<unsigned char>(text[0]), 2);
    } else if (isDeceptive(first.codePoint) && kept.find(text[0]) == std::string_view::npos) {
      result += escape(first.codePoint);
    } else {
      result += text.substr(0, first.length);
    }
    text.remove_prefix(first.length);
  }
  return result;
}

}  // namespace

std::string escaped(std::string_view text) {
  return escapedBut("", text);
}

std::string escapedLines(std::string_view text) {
  std::string lines;
  for (std::size_t i = 0; i < text.size(); ++i)
    if (!text.substr(i).starts_with("\r\n")) lines += text[i];
  return escapedBut("\n\t", lines);
}

std::size_t width(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const UTF8Character first = firstUTF8Character(text);
    columns += width(first.codePoint);
    text.remove_prefix(first.length);
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
    const UTF8Character next = firstUTF8Character(text.substr(head));
    used += width(next.codePoint);
    if (used > headColumns) break;
    head += next.length;
  }
  std::size_t tail = head;
  while (width(text.substr(tail)) > tailColumns)
    tail += firstUTF8Character(text.substr(tail)).length;
  return std::string(text.substr(0, head)) + "…" + std::string(text.substr(tail));
}

std::string wrapped(const std::string& text, std::size_t columns) {
  std::istringstream lines(text);
  std::string result;
  for (std::string line; std::getline(lines, line);) {
    if (!result.empty()) result += '\n';
    std::istringstream words(line);
    std::size_t used = 0;
    for (std::string word; words >> word;) {
      const std::size_t columnsOfWord = width(word);
      const bool isFull = used > 0 && used + 1 + columnsOfWord > columns;
      if (used > 0) result += isFull ? '\n' : ' ';
      used = (used == 0 || isFull ? 0 : used + 1) + columnsOfWord;
      result += word;
    }
  }
  return result;
}

}  // namespace orvane::cli::TerminalText
