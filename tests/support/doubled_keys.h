#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "orvane/text/json/decoding_error.h"

namespace orvane::test {

/// One past the string, number, word, object or array that starts at `start` of a JSON text.
inline std::size_t endOfValue(const std::string& text, std::size_t start) {
  int depth = 0;
  bool isInString = false;
  for (std::size_t i = start; i < text.size(); ++i) {
    const char c = text[i];
    if (isInString) {
      if (c == '\\') ++i;
      isInString = c != '"';
      if (!isInString && depth == 0) return i + 1;
    } else if (c == '"') {
      isInString = true;
    } else if (c == '{' || c == '[') {
      ++depth;
    } else if ((c == '}' || c == ']') && depth > 0) {
      if (--depth == 0) return i + 1;
    } else if (depth == 0 && (c == ',' || c == '}' || c == ']' || c == '\n')) {
      return i;
    }
  }
  return text.size();
}

/// Checks that a record, of which `text` is a JSON form without white space, is refused when any of
/// its keys stands there twice, be it with the same value.
template <typename Decode>
void expectEachKeyOnce(const std::string& text, Decode decode) {
  std::size_t keyCount = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '"') continue;
    const std::size_t end = endOfValue(text, i);
    if (end < text.size() && text[end] == ':') {
      ++keyCount;
      const std::string key = text.substr(i, end - i);
      const std::string member = text.substr(i, endOfValue(text, end + 1) - i);
      const std::string doubled = text.substr(0, i) + member + "," + text.substr(i);
      try {
        (void)decode(doubled);
        ADD_FAILURE() << "decoded: " << doubled;
      } catch (const DecodingError& error) {
        EXPECT_EQ(error.kind(), DecodingError::Case::dataCorrupted);
        EXPECT_TRUE(error.errorDescription().ends_with(key.substr(1) + " stands there twice."))
            << error.errorDescription();
        EXPECT_TRUE(error.keyPath().ends_with(key.substr(1, key.size() - 2))) << error.keyPath();
      }
    }
    i = end - 1;
  }
  EXPECT_GT(keyCount, 0U);
}

}  // namespace orvane::test
