#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane::json {

/// Appends one JSON document to a string, without white space. Numbers have the shortest digits
/// that read back as the same number of the same width. Text is well-formed UTF-8 whatever was
/// given: malformed bytes become U+FFFD; controls, direction marks and invisible characters are
/// written as escapes, so that the document reads as what it is.
class Writer {
 public:
  void beginObject();
  /// `key` is plain ASCII without quotes, backslashes and controls.
  void key(std::string_view key);
  void endObject();
  void beginArray();
  void endArray();

  void value(bool value);
  void value(std::int64_t value);
  /// null when it is not finite.
  void value(float value);
  void value(double value);
  void value(std::string_view value);

  std::string take();

 private:
  void separate();
  template <typename Number>
  void appendFinite(Number value);

  std::string text_{};
  /// Whether the next value of the open object or array stands behind another one.
  bool needsComma_ = false;
};

}  // namespace orvane::json
