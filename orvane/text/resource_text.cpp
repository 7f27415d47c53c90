#include "orvane/text/resource_text.h"

#include <exception>
#include <filesystem>
#include <span>

#include "orvane/platform/input_file.h"
#include "orvane/text/utf8.h"

namespace orvane::OrvaneResources {
namespace {

std::optional<std::string> contentOf(const std::optional<std::filesystem::path>& path) {
  if (!path) return std::nullopt;
  try {
    const InputFile file(*path);
    std::string content(file.size(), '\0');
    content.resize(file.readAt(0, std::as_writable_bytes(std::span(content))));
    if (!isValidUTF8(content)) return std::nullopt;
    return content;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::optional<std::string> text(std::string_view resource, std::string_view extension) {
  return contentOf(url(resource, extension));
}

std::optional<std::string> text(const Bundle& module, const Bundle& program,
                                std::string_view resource, std::string_view extension) {
  return contentOf(url(module, program, resource, extension));
}

}  // namespace orvane::OrvaneResources
