#include "orvane/text/json/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "orvane/text/utf8.h"

namespace orvane::json {
namespace {

void appendHexEscape(std::string& text, std::uint32_t codeUnit) {
  text += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4)
    text += "0123456789abcdef"[(codeUnit >> shift) & 15U];
}

void appendEscape(std::string& text, char32_t character) {
  switch (character) {
    case U'"':
      text += "\\\"";
      return;
    case U'\\':
      text += "\\\\";
      return;
    case U'\n':
      text += "\\n";
      return;
    case U'\r':
      text += "\\r";
      return;
    case U'\t':
      text += "\\t";
      return;
    default:
      break;
  }
  if (character < 0x10000) return appendHexEscape(text, character);
  const char32_t offset = character - 0x10000;
  appendHexEscape(text, 0xD800 + (offset >> 10));
  appendHexEscape(text, 0xDC00 + (offset & 0x3FFU));
}

bool needsEscape(char32_t character) {
  return character == U'"' || character == U'\\' || isDeceptive(character);
}

}  // namespace

void Writer::separate() {
  if (needsComma_) text_ += ',';
  needsComma_ = true;
}

void Writer::beginObject() {
  separate();
  text_ += '{';
  needsComma_ = false;
}
void Writer::key(std::string_view key) {
  separate();
  text_ += '"';
  text_ += key;
  text_ += "\":";
  needsComma_ = false;
}
void Writer::endObject() {
  text_ += '}';
  needsComma_ = true;
}
void Writer::beginArray() {
  separate();
  text_ += '[';
  needsComma_ = false;
}
void Writer::endArray() {
  text_ += ']';
  needsComma_ = true;
}

void Writer::value(bool value) {
  separate();
  text_ += value ? "true" : "false";
}

template <typename Number>
void Writer::appendFinite(Number value) {
  separate();
  if (!std::isfinite(value)) {
    text_ += "null";
    return;
  }
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  text_.append(digits.data(), end.ptr);
}
void Writer::value(std::int64_t value) {
  separate();
  text_ += std::to_string(value);
}
void Writer::value(float value) {
  appendFinite(value);
}
void Writer::value(double value) {
  appendFinite(value);
}

void Writer::value(std::string_view value) {
  separate();
  text_ += '"';
  while (!value.empty()) {
    const UTF8Character first = firstUTF8Character(value);
    // "</" is cut, so that the document may stand inside a page's script.
    const bool closesTag = first.codePoint == U'/' && text_.back() == '<';
    if (!first.isWellFormed) {
      text_ += kReplacementCharacter;
    } else if (needsEscape(first.codePoint)) {
      appendEscape(text_, first.codePoint);
    } else {
      if (closesTag) text_ += '\\';
      text_ += value.substr(0, first.length);
    }
    value.remove_prefix(first.length);
  }
  text_ += '"';
}

std::string Writer::take() {
  needsComma_ = false;
  return std::exchange(text_, {});
}

}  // namespace orvane::json
