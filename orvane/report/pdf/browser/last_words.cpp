#include <cctype>
#include <string>
#include <string_view>

#include "orvane/report/pdf/browser/devtools_pipe.h"
#include "orvane/text/utf8.h"

namespace orvane {
namespace {

constexpr std::size_t kMaximumLength = 300;

/// "[1121/124313.2:ERROR:file.cc:4] text" without what stands in brackets.
std::string_view withoutPrefix(std::string_view line) {
  if (!line.starts_with('[')) return line;
  const auto end = line.find("] ");
  return end == std::string_view::npos ? line : line.substr(end + 2);
}

bool isLogLine(std::string_view line) {
  return line.starts_with('[') && (line.find(":ERROR:") != std::string_view::npos ||
                                   line.find(":WARNING:") != std::string_view::npos ||
                                   line.find(":INFO:") != std::string_view::npos);
}

/// How well a line explains an end; 0 for not at all.
int weight(std::string_view line) {
  if (line.find(":FATAL:") != std::string_view::npos) return 3;
  if (line.find("sandbox") != std::string_view::npos &&
      line.find(":WARNING:") == std::string_view::npos)
    return 2;
  // Neither the routine complaints nor the rows of a stack trace.
  const bool isTrace = line.empty() || line.front() == '#' || line.front() == ' ';
  return isTrace || isLogLine(line) ? 0 : 1;
}

}  // namespace

std::string lastWords(std::string_view messages) {
  std::string_view best;
  int bestWeight = 1;
  while (!messages.empty()) {
    const auto length = messages.find('\n');
    const auto line = messages.substr(0, length);
    messages.remove_prefix(length == std::string_view::npos ? messages.size() : length + 1);
    if (const int found = weight(line); found >= bestWeight) {
      best = line;
      bestWeight = found;
    }
  }
  std::string text = wellFormedUTF8(withoutPrefix(best).substr(0, kMaximumLength));
  for (char& c : text)
    if (std::iscntrl(static_cast<unsigned char>(c)) != 0) c = ' ';
  while (text.ends_with(' ')) text.pop_back();
  return text;
}

}  // namespace orvane
