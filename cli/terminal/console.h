#pragma once

#include <cstddef>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane::cli {

/// Standard output could not be written; there is no point in going on.
class OutputFailure : public std::runtime_error {
 public:
  /// For the system's error number.
  explicit OutputFailure(int error);

  /// Whoever read the output has stopped doing so, as `head` does.
  bool isBrokenPipe() const noexcept { return isBrokenPipe_; }

 private:
  bool isBrokenPipe_;
};

/// Ways to set words off on a terminal.
enum class Style { plain, bold, dim, red, green, yellow };

/// What is known about the streams that the program writes to.
struct ConsoleTraits {
  bool isOutputTerminal = false;   ///< standard output
  bool isErrorTerminal = false;    ///< standard error
  bool allowsColour = false;       ///< NO_COLOR is not set and TERM is not "dumb"
  bool isColourForced = false;     ///< whatever the streams are
  bool canRewriteLines = false;    ///< TERM is set and not "dumb"
  std::size_t columns = 80;        ///< of the terminal that shows the status
  std::size_t outputColumns = 80;  ///< of standard output, where it is a terminal

  /// Of this process: its streams, NO_COLOR (https://no-color.org), TERM, COLUMNS and the
  /// terminal's size.
  static ConsoleTraits ofProcess();
};

/// The two streams of the program. Results go to standard output, everything else to standard
/// error. Every call writes its text in one piece and may come from any thread.
class Console {
 public:
  explicit Console(const ConsoleTraits& traits) : traits_(traits) {}

  const ConsoleTraits& traits() const noexcept { return traits_; }

  /// To standard output, as it stands. Throws `OutputFailure`.
  void print(std::string_view text);

  /// One line "orvane: <text>" to standard error; the text is escaped for terminals.
  void error(std::string_view text);

  /// The same line for what is no failure.
  void note(std::string_view text);

  /// One line "orvane: warning: <text>" to standard error, escaped likewise.
  void warning(std::string_view text);

  /// Replaces the status line at the end of standard error; empty removes it. Shows nothing unless
  /// standard error is a terminal that can rewrite a line.
  void status(std::string_view line);
  bool showsStatus() const noexcept { return traits_.isErrorTerminal && traits_.canRewriteLines; }

  /// The text in a style, for standard output; unchanged where colours are not wanted.
  std::string styled(Style style, std::string_view text) const;

  /// Columns that a table may take: those of the terminal; elsewhere there is no limit.
  std::size_t tableColumns() const noexcept {
    constexpr std::size_t kNoLimit = 1 << 20;
    return traits_.isOutputTerminal ? traits_.outputColumns : kNoLimit;
  }

 private:
  bool isColoured(bool isTerminal) const noexcept {
    return traits_.isColourForced || (isTerminal && traits_.allowsColour);
  }
  void printDiagnostic(Style style, std::string_view kind, std::string_view text);
  void removeStatus();

  ConsoleTraits traits_;
  std::mutex mutex_{};
  bool hasStatus_ = false;
};

/// Gives closed standard streams a harmless file each, so that no file opened later takes their
/// place: reading finds nothing, writing fails.
void openMissingStandardStreams();

}  // namespace orvane::cli
