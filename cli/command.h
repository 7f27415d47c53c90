#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "cli/exit_code.h"
#include "cli/options/file_list.h"
#include "cli/terminal/console.h"

namespace orvane::cli {

/// What the chosen subcommand does once all arguments are read.
using ChosenCommand = std::function<ExitCode(Console&)>;

/// FILE… and `--files-from`, as every command that reads many files has them.
inline void addFileArguments(CLI::App& command, FileList::Request& request) {
  command.add_option("FILE", request.names, "Files to read; - is standard input");
  command
      .add_option(
          "--files-from", request.listFile,
          "Read more names from LIST, one per line or separated by NUL bytes; - is standard "
          "input")
      ->option_text("LIST")
      ->group("Input");
}

/// `--recursive`.
inline void addFolderOption(CLI::App& command, FileList::Request& request) {
  command
      .add_flag("--recursive", request.opensFolders,
                "Take the audio files in folders and below, sorted by path")
      ->group("Input");
}

}  // namespace orvane::cli
