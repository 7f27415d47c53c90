#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/text/json/decoding_error.h"
#include "orvane/text/json/json_style.h"

namespace orvane::json {

/// Takes the values of one JSON document (RFC 8259) one after another, in the order of the text and
/// without building a tree: the caller asks for what it expects. Everything throws `DecodingError`,
/// which names the place by the `Step`s that are open.
class Reader {
 public:
  /// A byte-order mark at the start is passed over. `text` must outlive the reader. Of the style it
  /// matters whether numbers must be finite.
  explicit Reader(std::string_view text, const Style& style = {});

  bool mustBeFinite() const noexcept { return mustBeFinite_; }

  void beginObject();
  /// The next key of the open object, valid until the next call; absent at its end.
  std::optional<std::string_view> nextKey();
  void beginArray();
  /// Whether the open array has one more value to read.
  bool nextElement();

  /// Whether an array comes next.
  bool isAtArray();

  /// Passes over a null, if one comes next.
  bool skipNull();
  /// Passes over any value.
  void skipValue();

  bool readBool();
  std::int64_t readInteger();
  float readFloat();
  double readDouble();
  std::string readString();

  /// Nothing but white space may be left.
  void finish();

  /// For a key that may stand there once; remembers that it was found.
  void requireFirst(bool& isFound) const;
  [[noreturn]] void failMissing(std::string_view key) const;
  /// For a value that was read and cannot be held; `reason` completes "<place> …".
  [[noreturn]] void failCorrupted(const std::string& reason) const;

  /// The place that is being read, while it lives: a key of an object, or an element of an array.
  class Step {
   public:
    Step(Reader& reader, std::string_view key) : Step(reader, key, 0) {}
    Step(Reader& reader, std::size_t index) : Step(reader, {}, index) {}
    ~Step() { reader_.step_ = outer_; }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

   private:
    friend class Reader;
    Step(Reader& reader, std::string_view key, std::size_t index)
        : reader_(reader), outer_(reader.step_), key_(key), index_(index) {
      reader.step_ = this;
    }

    Reader& reader_;
    const Step* outer_;
    std::string_view key_;  ///< empty for an element
    std::size_t index_;
  };

 private:
  char peek();
  void expect(char character);
  bool take(std::string_view word);
  void skipWhiteSpace() noexcept;
  bool isAtEnd() const noexcept { return position_ == text_.size(); }
  std::string_view numberToken(const char* expected);
  void skipDigits();
  template <typename Number>
  Number readFloatingPoint();
  /// The content of a string: a part of the text, or `scratch_` when it holds escapes.
  std::string_view readCharacters();
  void appendEscaped();
  std::uint32_t readHexDigits();
  void skipNested(int depth);

  std::string keyPath() const;
  std::string place() const;
  [[noreturn]] void failType(const char* expected);
  [[noreturn]] void failSyntax() const;

  std::string_view text_;
  bool mustBeFinite_;
  std::size_t position_ = 0;
  /// Whether a value of the open object or array has been met.
  bool isBehindValue_ = false;
  std::string scratch_{};
  const Step* step_ = nullptr;
};

}  // namespace orvane::json
