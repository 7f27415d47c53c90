#include "cli/terminal/console.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "cli/terminal/terminal_text.h"
#include "orvane/text/number_text.h"

namespace orvane::cli {
namespace {

// Writes everything, or returns the error number.
int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

std::string_view startOf(Style style) {
  switch (style) {
    case Style::plain:
      break;
    case Style::bold:
      return "\x1B[1m";
    case Style::dim:
      return "\x1B[2m";
    case Style::red:
      return "\x1B[31m";
    case Style::green:
      return "\x1B[32m";
    case Style::yellow:
      return "\x1B[33m";
  }
  return "";
}

std::string inStyle(Style style, std::string_view text) {
  if (style == Style::plain || text.empty()) return std::string(text);
  return std::string(startOf(style)) + std::string(text) + "\x1B[0m";
}

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

/// What the user has set (POSIX, environment variables), else what the terminal says.
std::size_t columnsOf(int terminal) {
  constexpr std::size_t kCustomary = 80;
  const auto stated = NumberText::parsed<std::size_t>(environment("COLUMNS"));
  if (stated && *stated > 0) return *stated;
  winsize size{};
  return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kCustomary;
}

}  // namespace

OutputFailure::OutputFailure(int error)
    : std::runtime_error("standard output: " + std::generic_category().message(error)),
      isBrokenPipe_(error == EPIPE) {}

ConsoleTraits ConsoleTraits::ofProcess() {
  ConsoleTraits traits;
  traits.isOutputTerminal = ::isatty(STDOUT_FILENO) == 1;
  traits.isErrorTerminal = ::isatty(STDERR_FILENO) == 1;
  traits.canRewriteLines = !environment("TERM").empty() && environment("TERM") != "dumb";
  traits.allowsColour = traits.canRewriteLines && environment("NO_COLOR").empty();
  traits.columns = columnsOf(STDERR_FILENO);
  traits.outputColumns = columnsOf(STDOUT_FILENO);
  return traits;
}

void Console::print(std::string_view text) {
  const std::lock_guard lock(mutex_);
  removeStatus();
  if (const int error = writeAll(STDOUT_FILENO, text)) throw OutputFailure(error);
}

void Console::error(std::string_view text) {
  printDiagnostic(Style::red, "", text);
}

void Console::note(std::string_view text) {
  printDiagnostic(Style::plain, "", text);
}

void Console::warning(std::string_view text) {
  printDiagnostic(Style::yellow, "warning: ", text);
}

void Console::printDiagnostic(Style style, std::string_view kind, std::string_view text) {
  const std::string head = "orvane: " + std::string(kind);
  const std::string line =
      inStyle(isColoured(traits_.isErrorTerminal) ? style : Style::plain, head) +
      TerminalText::escaped(text) + "\n";
  const std::lock_guard lock(mutex_);
  removeStatus();
  writeAll(STDERR_FILENO, line);  // there is nowhere left to report a failure of this
}

void Console::status(std::string_view line) {
  if (!showsStatus()) return;
  const std::lock_guard lock(mutex_);
  if (line.empty()) {
    removeStatus();
    return;
  }
  writeAll(STDERR_FILENO, "\r" + TerminalText::shortened(line, traits_.columns - 1) + "\x1B[K");
  hasStatus_ = true;
}

void Console::removeStatus() {
  if (!hasStatus_) return;
  writeAll(STDERR_FILENO, "\r\x1B[K");
  hasStatus_ = false;
}

std::string Console::styled(Style style, std::string_view text) const {
  return inStyle(isColoured(traits_.isOutputTerminal) ? style : Style::plain, text);
}

void openMissingStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
    // The lowest free number is the closed one. Opened for reading alone, so that output to it is
    // an error that gets noticed.
    const int opened = ::open("/dev/null", O_RDONLY);
    if (opened == -1) std::_Exit(1);
  }
}

}  // namespace orvane::cli
