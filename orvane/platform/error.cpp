#include "orvane/platform/error.h"

#include <utility>

namespace orvane {
namespace {

/// "album" also of "music/album/".
std::string nameOf(const std::filesystem::path& file) {
  const auto name = (file.has_filename() ? file : file.parent_path()).filename().string();
  return name.empty() ? '"' + file.string() + '"' : name;
}

}  // namespace

Error::Error(std::string description) : description_(std::move(description)) {}
Error::~Error() = default;

PlatformError::PlatformError(const std::filesystem::path& file, const std::string& message,
                             std::error_code code)
    : Error(nameOf(file) + ": " + message), message_(message), code_(code) {}

PlatformError::PlatformError(const std::filesystem::path& file, std::error_code code)
    : PlatformError(file, code.message(), code) {}

PlatformError::~PlatformError() = default;

Cancelled::Cancelled() : Error("The operation was cancelled.") {}
Cancelled::~Cancelled() = default;

}  // namespace orvane
