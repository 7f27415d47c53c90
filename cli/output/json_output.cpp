#include "cli/output/json_output.h"

namespace orvane::cli::JsonOutput {
namespace {

/// Goes up when a key changes its meaning or is removed.
constexpr int kSchemaVersion = 1;

}  // namespace

Document::Document() : writer_({.isASCII = true, .numbers = json::Style::Numbers::real}) {
  writer_.beginObject();
  add("schemaVersion", kSchemaVersion);
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
  document.add("url", name);
  document.add("error", message);
  return document.takeLine();
}

}  // namespace orvane::cli::JsonOutput
