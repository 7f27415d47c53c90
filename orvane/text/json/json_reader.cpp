#include "orvane/text/json/json_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "orvane/text/json/json_path.h"
#include "orvane/text/utf8.h"

namespace orvane::json {
namespace {

/// Values that nobody asked for may be nested so deep; more is an attack.
constexpr int kMaximumDepth = 256;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// What the value at the start of `text` is; null when it is none.
const char* typeName(std::string_view text) {
  switch (text.front()) {
    case '{':
      return "an object";
    case '[':
      return "an array";
    case '"':
      return "a string";
    case 't':
    case 'f':
      return text.starts_with("true") || text.starts_with("false") ? "a Boolean" : nullptr;
    case 'n':
      return text.starts_with("null") ? "null" : nullptr;
    default:
      return isDigit(text.front()) || text.front() == '-' ? "a number" : nullptr;
  }
}

/// Of a number that is out of range: whether it is too small, and not too large.
bool isTiny(std::string_view number) {
  const auto exponent = number.find_first_of("eE");
  if (exponent != std::string_view::npos) return number[exponent + 1] == '-';
  return number.starts_with('0') || number.starts_with("-0");
}

}  // namespace

Reader::Reader(std::string_view text, const Style& style)
    : text_(text), mustBeFinite_(style.mustBeFinite) {
  if (text_.starts_with(kByteOrderMark)) text_.remove_prefix(kByteOrderMark.size());
}

void Reader::skipWhiteSpace() noexcept {
  while (!isAtEnd()) {
    const char c = text_[position_];
    if (c != ' ' && c != '\n' && c != '\r' && c != '\t') return;
    ++position_;
  }
}

/// The first character of what comes next.
char Reader::peek() {
  skipWhiteSpace();
  if (isAtEnd()) failSyntax();
  return text_[position_];
}

void Reader::expect(char character) {
  if (peek() != character) failSyntax();
  ++position_;
}

bool Reader::take(std::string_view word) {
  skipWhiteSpace();
  if (!text_.substr(position_).starts_with(word)) return false;
  position_ += word.size();
  return true;
}

void Reader::beginObject() {
  if (peek() != '{') failType("an object");
  ++position_;
  isBehindValue_ = false;
}

std::optional<std::string_view> Reader::nextKey() {
  if (peek() == '}') {
    ++position_;
    isBehindValue_ = true;
    return std::nullopt;
  }
  if (isBehindValue_) expect(',');
  if (peek() != '"') failSyntax();
  const std::string_view key = readCharacters();
  expect(':');
  isBehindValue_ = true;
  return key;
}

void Reader::beginArray() {
  if (peek() != '[') failType("an array");
  ++position_;
  isBehindValue_ = false;
}

bool Reader::nextElement() {
  if (peek() == ']') {
    ++position_;
    isBehindValue_ = true;
    return false;
  }
  if (isBehindValue_) expect(',');
  isBehindValue_ = true;
  return true;
}

bool Reader::isAtArray() {
  return peek() == '[';
}

bool Reader::skipNull() {
  return take("null");
}

bool Reader::readBool() {
  if (take("true")) return true;
  if (take("false")) return false;
  failType("a Boolean");
}

void Reader::skipDigits() {
  const std::size_t start = position_;
  while (!isAtEnd() && isDigit(text_[position_])) ++position_;
  if (position_ == start) failSyntax();
}

std::string_view Reader::numberToken(const char* expected) {
  const char first = peek();
  if (first != '-' && !isDigit(first)) failType(expected);
  const std::size_t start = position_;
  if (first == '-') ++position_;
  const bool startsWithZero = !isAtEnd() && text_[position_] == '0';
  const std::size_t firstDigit = position_;
  skipDigits();
  if (startsWithZero && position_ - firstDigit > 1) failSyntax();
  if (!isAtEnd() && text_[position_] == '.') {
    ++position_;
    skipDigits();
  }
  if (!isAtEnd() && (text_[position_] == 'e' || text_[position_] == 'E')) {
    ++position_;
    if (!isAtEnd() && (text_[position_] == '+' || text_[position_] == '-')) ++position_;
    skipDigits();
  }
  return text_.substr(start, position_ - start);
}

template <typename Number>
Number Reader::readFloatingPoint() {
  const std::string_view token = numberToken("a number");
  Number value = 0;
  if (std::from_chars(token.begin(), token.end(), value).ec == std::errc()) return value;
  // Out of the type's range: what is tiny becomes as much of it as the type holds.
  if (!isTiny(token)) failCorrupted("holds a number that is out of range.");
  double wide = 0;
  std::from_chars(token.begin(), token.end(), wide);
  return static_cast<Number>(wide);
}

float Reader::readFloat() {
  return readFloatingPoint<float>();
}
double Reader::readDouble() {
  return readFloatingPoint<double>();
}

std::int64_t Reader::readInteger() {
  const std::string_view token = numberToken("an integer");
  std::int64_t value = 0;
  const auto whole = std::from_chars(token.begin(), token.end(), value);
  if (whole.ec == std::errc() && whole.ptr == token.end()) return value;
  // 2.0 and 1e3 are integers too.
  double number = 0;
  const auto any = std::from_chars(token.begin(), token.end(), number);
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  const bool fits = any.ec == std::errc() && number >= -kLimit && number < kLimit;
  if (!fits || std::trunc(number) != number) failCorrupted("holds a number that is no integer.");
  return static_cast<std::int64_t>(number);
}

std::string Reader::readString() {
  if (peek() != '"') failType("a string");
  return std::string(readCharacters());
}

std::string_view Reader::readCharacters() {
  const std::size_t start = ++position_;
  bool isPlain = true;
  bool isASCII = true;
  scratch_.clear();
  while (true) {
    if (isAtEnd()) failSyntax();
    const char c = text_[position_];
    if (c == '"') break;
    if (static_cast<unsigned char>(c) < 0x20) failSyntax();
    if (c == '\\') {
      if (isPlain) scratch_.assign(text_.substr(start, position_ - start));
      isPlain = false;
      appendEscaped();
      continue;
    }
    isASCII = isASCII && static_cast<unsigned char>(c) < 0x80;
    if (!isPlain) scratch_ += c;
    ++position_;
  }
  const std::string_view result =
      isPlain ? text_.substr(start, position_ - start) : std::string_view(scratch_);
  if (!isASCII && !isValidUTF8(result)) failCorrupted("holds a text that is not UTF-8.");
  ++position_;
  return result;
}

void Reader::appendEscaped() {
  ++position_;
  if (isAtEnd()) failSyntax();
  const char kind = text_[position_];
  constexpr std::string_view kKinds = "\"\\/bfnrt";
  constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
  if (const auto index = kKinds.find(kind); index != std::string_view::npos) {
    scratch_ += kMeanings[index];
    ++position_;
    return;
  }
  if (kind != 'u') failSyntax();
  std::uint32_t character = readHexDigits();
  if (character >= 0xD800 && character <= 0xDBFF) {
    if (!text_.substr(position_).starts_with("\\u")) failSyntax();
    ++position_;
    const std::uint32_t low = readHexDigits();
    if (low < 0xDC00 || low > 0xDFFF) failSyntax();
    character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
  } else if (character >= 0xDC00 && character <= 0xDFFF) {
    failSyntax();
  }
  appendUTF8(scratch_, character);
}

/// The four digits behind the "u" at the present place.
std::uint32_t Reader::readHexDigits() {
  const std::string_view digits = text_.substr(position_ + 1, 4);
  std::uint32_t value = 0;
  const auto end = std::from_chars(digits.begin(), digits.end(), value, 16).ptr;
  if (digits.size() != 4 || end != digits.end()) failSyntax();
  position_ += 5;
  return value;
}

void Reader::skipValue() {
  skipNested(0);
}

void Reader::skipNested(int depth) {
  if (depth > kMaximumDepth) failCorrupted("is nested too deeply.");
  switch (peek()) {
    case '{':
      beginObject();
      while (nextKey()) skipNested(depth + 1);
      return;
    case '[':
      beginArray();
      while (nextElement()) skipNested(depth + 1);
      return;
    case '"':
      readCharacters();
      return;
    case 't':
    case 'f':
      readBool();
      return;
    default:
      if (!skipNull()) numberToken("a value");
  }
}

void Reader::finish() {
  skipWhiteSpace();
  if (!isAtEnd()) failSyntax();
}

std::string Reader::keyPath() const {
  std::vector<PathStep> steps;
  for (const Step* step = step_; step != nullptr; step = step->outer_)
    steps.push_back({step->key_, step->index_});
  std::reverse(steps.begin(), steps.end());
  return json::keyPath(steps);
}

std::string Reader::place() const {
  const std::string path = keyPath();
  return path.empty() ? "The document" : "\"" + path + "\"";
}

void Reader::requireFirst(bool& isFound) const {
  if (std::exchange(isFound, true)) failCorrupted("stands there twice.");
}

void Reader::failMissing(std::string_view key) const {
  std::string path = keyPath();
  if (!path.empty()) path += ".";
  path += key;
  const std::string text = "The key \"" + path + "\" is missing.";
  throw DecodingError(DecodingError::Case::keyNotFound, std::move(path), text);
}

void Reader::failCorrupted(const std::string& reason) const {
  throw DecodingError(DecodingError::Case::dataCorrupted, keyPath(), place() + " " + reason);
}

void Reader::failType(const char* expected) {
  peek();
  const char* const found = typeName(text_.substr(position_));
  if (found == nullptr) failSyntax();
  throw DecodingError(DecodingError::Case::typeMismatch, keyPath(),
                      place() + " is " + found + ", not " + expected + ".");
}

void Reader::failSyntax() const {
  throw DecodingError(DecodingError::Case::dataCorrupted, keyPath(),
                      isAtEnd()
                          ? "The JSON ends too early."
                          : "The JSON is malformed at byte " + std::to_string(position_) + ".");
}

}  // namespace orvane::json
