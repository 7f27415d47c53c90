#include "cli/output/json_output.h"

#include "orvane/text/utf8.h"

namespace orvane::cli::JsonOutput {
namespace {

/// Goes up when a key changes its meaning or is removed.
constexpr int kSchemaVersion = 1;

/// Everything but unreserved characters and slashes escaped.
std::string percentEncoded(std::string_view bytes) {
  constexpr std::string_view kUnreserved =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    if (kUnreserved.find(byte) != std::string_view::npos)
      text += byte;
    else
      text += {'%', kDigits[value >> 4U], kDigits[value & 0xFU]};
  }
  return text;
}

}  // namespace

Document::Document() : writer_({.isASCII = true, .numbers = json::Style::Numbers::real}) {
  writer_.beginObject();
  add("schemaVersion", kSchemaVersion);
}

void Document::addName(std::string_view name) {
  add("url", name);
  if (!isValidUTF8(name)) add("urlPercentEncoded", percentEncoded(name));
}

void Document::addJSON(std::string_view key, std::string_view json) {
  writer_.key(key);
  writer_.json(json);
}

std::string Document::takeLine() {
  writer_.endObject();
  return writer_.take() + "\n";
}

std::string failure(std::string_view name, std::string_view message) {
  Document document;
  document.addName(name);
  document.add("error", message);
  return document.takeLine();
}

}  // namespace orvane::cli::JsonOutput
