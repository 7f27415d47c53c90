#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cli/exit_code.h"
#include "cli/options/file_list.h"
#include "cli/terminal/console.h"

namespace orvane::cli {

/// Runs one piece of work over many files: in their order, on several threads when asked, and a
/// file that fails does not stop the others.
namespace FileWork {

/// How a file's outcome is told once its turn has come; never called for a file that failed.
using Report = std::function<void()>;

struct Plan {
  std::size_t jobs = 1;
  /// Failures appear as JSON lines on standard output too.
  bool json = false;
  /// Headerless PCM and folders can be asked for, which is told where that seems to be meant.
  bool takesRawAndFolders = false;
  /// Told of each file that failed, in the files' order, and of each that was found in a folder and
  /// is no audio, which is no failure.
  std::function<void(const InputName&, const std::string& message)> onFailure{};
  std::function<void()> onNoAudio{};
};

/// Calls `work` for each file. What it throws is reported in the file's place and makes the result
/// `fileFailed`. Throws `Cancelled` once interrupted, and what the reports throw: `OutputFailure`.
ExitCode run(const std::vector<InputName>& files, const Plan& plan, Console& console,
             const std::function<Report(const InputName&)>& work);

}  // namespace FileWork
}  // namespace orvane::cli
