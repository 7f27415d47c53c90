#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// Whether `text` is well-formed UTF-8 (Unicode, table 3-7): no overlong forms, no surrogates,
/// nothing above U+10FFFF. Empty text is.
ORVANE_API bool isValidUTF8(std::string_view text) noexcept;

/// U+FFFD, which stands for bytes that are no UTF-8.
inline constexpr std::string_view kReplacementCharacter = "\uFFFD";

struct UTF8Character {
  char32_t codePoint = 0;  ///< U+FFFD when the bytes are malformed
  std::size_t length = 1;  ///< bytes that it takes; 1 for a malformed byte
  bool isWellFormed = true;

  bool operator==(const UTF8Character&) const = default;
};

/// What stands at the start of `text`, which is not empty.
ORVANE_API UTF8Character firstUTF8Character(std::string_view text) noexcept;

/// Appends a character, which is one of Unicode's and no surrogate.
ORVANE_API void appendUTF8(std::string& text, char32_t character);

/// The text with every malformed byte replaced by U+FFFD.
ORVANE_API std::string wellFormedUTF8(std::string_view text);

/// The UTF-8 form of text in ISO 8859-1, where each byte is the character of its number.
ORVANE_API std::string utf8FromLatin1(std::string_view text);

/// Controls, marks that change the direction of writing and characters without a shape: what could
/// make a line read as something else than it is. The joiners, which many scripts need, are not.
ORVANE_API bool isDeceptive(char32_t character) noexcept;

}  // namespace orvane
