#pragma once

#include <string>
#include <string_view>

#include "cli/commands/speech_model.h"
#include "orvane/text/json/json_coding.h"

namespace orvane::json {
ORVANE_JSON_FIELDS(cli::SpeechModelName, version, sha256);
}  // namespace orvane::json

/// JSON as the program prints it: one document per line, pure ASCII, keys in a fixed order, numbers
/// with their shortest digits, null for a number that is not finite.
namespace orvane::cli::JsonOutput {

/// How the records of reports and sidecars stand in a document.
inline constexpr json::Style kRecordStyle{.isASCII = true, .numbers = json::Style::Numbers::plain};

/// One document, begun with its schema version.
class Document {
 public:
  Document();

  template <typename Value>
  void add(std::string_view key, const Value& value) {
    writer_.key(key);
    json::writeValue(writer_, value);
  }

  /// "url": the name of a file as the user gave it; and where that is no UTF-8, which JSON must be,
  /// "urlPercentEncoded" with every byte of it (RFC 3986, 2.1).
  void addName(std::string_view name);

  /// A value that is JSON already.
  void addJSON(std::string_view key, std::string_view json);

  /// An object per element, to which `addKeys(element)` adds its keys.
  template <typename Elements, typename AddKeys>
  void addObjects(std::string_view key, const Elements& elements, AddKeys addKeys) {
    writer_.key(key);
    writer_.beginArray();
    for (const auto& element : elements) {
      writer_.beginObject();
      addKeys(element);
      writer_.endObject();
    }
    writer_.endArray();
  }

  /// The whole document in one line, with its line end.
  std::string takeLine();

 private:
  json::Writer writer_;
};

/// The line that stands in the place of a file that failed.
std::string failure(std::string_view name, std::string_view message);

}  // namespace orvane::cli::JsonOutput
