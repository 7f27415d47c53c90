#include "cli/options/text_input.h"

#include <cstdint>

#include "cli/options/standard_input.h"
#include "orvane/platform/file_text.h"

namespace orvane::cli {
namespace {

constexpr const char* kStandardInput = "-";
/// A report of a whole week's programme is smaller.
constexpr std::uint64_t kLargestText = 1U << 30U;

}  // namespace

std::string readTextInput(const std::string& name) {
  if (name == kStandardInput) return StandardInput().asText();
  return readFileText(name, kLargestText);
}

std::string shownTextInput(const std::string& name) {
  return name == kStandardInput ? "standard input" : name;
}

}  // namespace orvane::cli
