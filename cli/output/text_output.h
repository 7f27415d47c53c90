#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

#include "cli/terminal/console.h"

namespace orvane::cli {

/// Where a command's text goes.
struct TextOutputOptions {
  std::string file = "-";  ///< "-" is standard output
  bool force = false;

  bool isStandardOutput() const { return file == "-"; }
};

/// `-o` and `--force`. `options` must outlive the command.
void addTextOutputOptions(CLI::App& command, TextOutputOptions& options);

/// Writes the whole text or, when anything fails, nothing; to a terminal with what could harm it
/// escaped. Throws `PlatformError` and
/// `OutputFailure`.
void writeText(const TextOutputOptions& options, std::string_view text, Console& console);

}  // namespace orvane::cli
