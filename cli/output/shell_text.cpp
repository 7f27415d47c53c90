#include "cli/output/shell_text.h"

namespace orvane::cli {

std::string shellText(std::string_view name) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./,=+:@%";
  const std::string path = (name.starts_with('-') ? "./" : "") + std::string(name);
  if (!path.empty() && path.find_first_not_of(kPlain) == std::string::npos) return path;
  std::string quoted = "'";
  for (const char c : path) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

}  // namespace orvane::cli
