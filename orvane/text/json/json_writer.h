#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/text/json/encoding_error.h"
#include "orvane/text/json/json_style.h"

namespace orvane::json {

/// Writes one JSON document (RFC 8259). Numbers have the shortest digits that read back as the same
/// number of the same width. Text is well-formed UTF-8 whatever was given: malformed bytes become
/// U+FFFD; controls, direction marks and invisible characters are written as escapes, so that the
/// document reads as what it is.
class ORVANE_API Writer {
 public:
  explicit Writer(const Style& style = {}) : style_(style) {}

  const Style& style() const noexcept { return style_; }

  void beginObject() { begin('{'); }
  /// `key` is plain ASCII without quotes, backslashes and controls, and lives as long as its value
  /// is being written.
  void key(std::string_view key);
  void endObject() { end('}'); }
  void beginArray() { begin('['); }
  void endArray() { end(']'); }

  void value(bool value);
  void value(std::int64_t value);
  /// Unless the style forbids it, null when it is not finite.
  void value(float value);
  void value(double value);
  void value(std::string_view value);
  /// A value in JSON already.
  void json(std::string_view value);

  /// The document; nothing may be open.
  std::string take();

  /// Throws `EncodingError` for the place that is being written; `reason` completes the sentence.
  [[noreturn]] void fail(const std::string& reason) const;

 private:
  /// An object or array that is open.
  struct Level {
    char opening;
    std::size_t count = 0;   ///< of the keys or elements so far
    std::string_view key{};  ///< the last one
  };

  void beginItem();
  void beginValue();
  void breakLine();
  void begin(char opening);
  void end(char closing);
  template <typename Number>
  void appendNumber(Number value);
  void appendEscape(char32_t character);
  bool needsEscape(char32_t character) const noexcept;

  Style style_;
  std::string text_{};
  std::vector<Level> levels_{};
};

}  // namespace orvane::json
