#include "orvane/text/json/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "orvane/text/json/json_path.h"
#include "orvane/text/number_text.h"
#include "orvane/text/utf8.h"

namespace orvane::json {
namespace {

void appendCodeUnit(std::string& text, std::uint32_t codeUnit) {
  text += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4)
    text += "0123456789abcdef"[(codeUnit >> shift) & 15U];
}

}  // namespace

void Writer::breakLine() {
  constexpr std::size_t kIndent = 2;
  if (style_.isPretty) text_.append("\n").append(levels_.size() * kIndent, ' ');
}

/// A key of an object or an element of an array comes next.
void Writer::beginItem() {
  if (levels_.back().count++ > 0) text_ += ',';
  breakLine();
}

void Writer::beginValue() {
  if (!levels_.empty() && levels_.back().opening == '[') beginItem();
}

void Writer::begin(char opening) {
  beginValue();
  text_ += opening;
  levels_.push_back({opening});
}

void Writer::end(char closing) {
  const bool isEmpty = levels_.back().count == 0;
  levels_.pop_back();
  if (!isEmpty) breakLine();
  text_ += closing;
}

void Writer::key(std::string_view key) {
  beginItem();
  levels_.back().key = key;
  text_.append("\"").append(key).append(style_.isPretty ? "\": " : "\":");
}

void Writer::value(bool value) {
  json(value ? "true" : "false");
}

void Writer::value(std::int64_t value) {
  json(std::to_string(value));
}

void Writer::json(std::string_view value) {
  beginValue();
  text_ += value;
}

template <typename Number>
void Writer::appendNumber(Number value) {
  beginValue();
  if (!std::isfinite(value)) {
    if (style_.mustBeFinite) fail("is not a finite number.");
    text_ += "null";
  } else if (style_.numbers == Style::Numbers::shortest) {
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    text_.append(digits.data(), end.ptr);
  } else {
    const bool isReal = style_.numbers == Style::Numbers::real;
    // An integer has no negative zero.
    const std::string digits = NumberText::plain(value == 0 && !isReal ? Number{} : value);
    text_ += digits;
    if (isReal && digits.find_first_of(".e") == std::string::npos) text_ += ".0";
  }
}
void Writer::value(float value) {
  appendNumber(value);
}
void Writer::value(double value) {
  appendNumber(value);
}

void Writer::appendEscape(char32_t character) {
  constexpr std::u32string_view kCharacters = U"\"\\\n\r\t\b\f";
  if (const auto index = kCharacters.find(character); index != std::u32string_view::npos) {
    text_ += '\\';
    text_ += "\"\\nrtbf"[index];
    return;
  }
  if (character < 0x10000) return appendCodeUnit(text_, character);
  const char32_t offset = character - 0x10000;
  appendCodeUnit(text_, 0xD800 + (offset >> 10));
  appendCodeUnit(text_, 0xDC00 + (offset & 0x3FFU));
}

bool Writer::needsEscape(char32_t character) const noexcept {
  return character == U'"' || character == U'\\' || isDeceptive(character) ||
         (style_.isASCII && character > 0x7F);
}

void Writer::value(std::string_view value) {
  beginValue();
  text_ += '"';
  while (!value.empty()) {
    const UTF8Character first = firstUTF8Character(value);
    // "</" is cut, so that the document may stand inside a page's script.
    const bool closesTag = first.codePoint == U'/' && text_.back() == '<' && !style_.isASCII;
    if (needsEscape(first.codePoint)) {
      appendEscape(first.codePoint);
    } else if (!first.isWellFormed) {
      text_ += kReplacementCharacter;
    } else {
      if (closesTag) text_ += '\\';
      text_ += value.substr(0, first.length);
    }
    value.remove_prefix(first.length);
  }
  text_ += '"';
}

std::string Writer::take() {
  if (style_.isPretty) text_ += '\n';
  return std::exchange(text_, {});
}

void Writer::fail(const std::string& reason) const {
  std::vector<PathStep> steps;
  for (const Level& level : levels_) steps.push_back({level.key, level.count - 1});
  throw EncodingError(keyPath(steps), reason);
}

}  // namespace orvane::json
