#include "orvane/text/json/json_layout.h"

#include <cstddef>

namespace orvane::json {
namespace {

constexpr std::size_t kIndent = 2;

/// One past the closing quote of the string that starts at `start`.
std::size_t endOfString(std::string_view text, std::size_t start) {
  std::size_t end = start + 1;
  while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
  return end + 1;
}

bool opens(char c) {
  return c == '{' || c == '[';
}
bool closes(char c) {
  return c == '}' || c == ']';
}

}  // namespace

std::string prettyPrinted(std::string_view compact) {
  std::string result;
  std::size_t depth = 0;
  const auto breakLine = [&] { result.append("\n").append(depth * kIndent, ' '); };
  for (std::size_t i = 0; i < compact.size(); ++i) {
    const char c = compact[i];
    if (c == '"') {
      const std::size_t end = endOfString(compact, i);
      result += compact.substr(i, end - i);
      i = end - 1;
    } else if (opens(c) && i + 1 < compact.size() && closes(compact[i + 1])) {
      result += compact.substr(i, 2);
      ++i;
    } else if (opens(c)) {
      result += c;
      ++depth;
      breakLine();
    } else if (closes(c)) {
      --depth;
      breakLine();
      result += c;
    } else {
      result += c;
      if (c == ',') breakLine();
      if (c == ':') result += ' ';
    }
  }
  return result + "\n";
}

}  // namespace orvane::json
