#include "orvane/platform/file_text.h"

#include <span>
#include <system_error>

#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"

namespace orvane {

std::string readFileText(const std::filesystem::path& path, std::uint64_t largestSize) {
  const InputFile file(path);
  if (file.size() > largestSize)
    throw PlatformError(path, std::make_error_code(std::errc::file_too_large));
  std::string text(file.size(), '\0');
  text.resize(file.readAt(0, std::as_writable_bytes(std::span(text))));
  return text;
}

}  // namespace orvane
