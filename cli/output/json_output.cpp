#include "cli/output/json_output.h"

#include <cmath>

#include "cli/output/number_text.h"

namespace orvane::cli::JsonOutput {

Json number(float value) {
  if (!std::isfinite(value)) return nullptr;
  return NumberText::withFloatDigits(value);
}

Json number(double value) {
  if (!std::isfinite(value)) return nullptr;
  return value;
}

std::string line(const Json& document) {
  return document.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
}

Json failure(std::string_view name, std::string_view message) {
  return {{"schemaVersion", kSchemaVersion}, {"url", name}, {"error", message}};
}

}  // namespace orvane::cli::JsonOutput
