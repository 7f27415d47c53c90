#include "orvane/text/extension_text.h"

namespace orvane {
namespace {

std::string shifted(std::string_view text, char first, char last, int distance) {
  std::string result(text);
  for (char& c : result)
    if (c >= first && c <= last) c = static_cast<char>(c + distance);
  return result;
}

}  // namespace

std::string pathExtension(const std::filesystem::path& url) {
  const std::string extension = url.extension().string();
  return extension.empty() ? extension : extension.substr(1);
}

std::string lowercased(std::string_view text) {
  return shifted(text, 'A', 'Z', 'a' - 'A');
}

std::string uppercased(std::string_view text) {
  return shifted(text, 'a', 'z', 'A' - 'a');
}

}  // namespace orvane
