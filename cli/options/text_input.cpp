#include "cli/options/text_input.h"

#include <cstdint>
#include <span>

#include "cli/options/standard_input.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"

namespace orvane::cli {
namespace {

constexpr const char* kStandardInput = "-";
/// A report of a whole week's programme is smaller.
constexpr std::uint64_t kLargestText = 1U << 30U;

}  // namespace

std::string readTextInput(const std::string& name) {
  if (name == kStandardInput) return StandardInput().asText();
  const InputFile file(name);
  if (file.size() > kLargestText)
    throw PlatformError(name, std::make_error_code(std::errc::file_too_large));
  std::string text(file.size(), '\0');
  text.resize(file.readAt(0, std::as_writable_bytes(std::span(text))));
  return text;
}

std::string shownTextInput(const std::string& name) {
  return name == kStandardInput ? "standard input" : name;
}

}  // namespace orvane::cli
