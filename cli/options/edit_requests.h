#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/options/edit_time.h"
#include "orvane/core/targets/loudness_target.h"
#include "orvane/edit/edit_chain.h"

namespace orvane::cli {

/// An operation as it is asked for: an edit once the sample rate is known.
struct EditRequest {
  std::string operation{};
  /// Null for "split", which is no edit but a way of writing.
  std::function<Edit(double sampleRate)> edit{};
  // Where the speech of an `ExpandEdit` comes from, one of them.
  std::string speechRegions{};  ///< a sidecar
  bool detectsSpeech = false;
};

/// The words and options of an operation.
struct OperationWords {
  std::vector<std::string> words{};  ///< without a name before it, in order
  std::optional<EditTime> length{};
  std::optional<EditTime> from{};
  std::optional<EditTime> to{};
  EditTime crossfade{.seconds = 0.01};
  EditOperations::FadeCurve curve = EditOperations::FadeCurve::linear;
  std::optional<double> ceilingDBTP{};
  std::optional<double> targetLUFS{};
  std::optional<core::LoudnessTarget> target{};
  std::string speechRegions{};
  bool detectsSpeech = false;
  std::optional<double> reductionDB{};
  double makeupDB = 0;
  EditTime attack{.seconds = 0.05};
  EditTime release{.seconds = 0.3};
};

/// An operation of the program.
struct EditOperation {
  const char* name;
  const char* words;  ///< what it takes, as a help text shows it
  std::size_t fewest;
  std::size_t most;
  const char* description;
  void (*addOptions)(CLI::App& command, OperationWords& words);
  std::function<Edit(double sampleRate)> (*request)(const OperationWords& words);
};

/// Each as a subcommand that takes its words, and `file` behind them where that is a name, and has
/// its options. `added` completes it; `words` live as long as the command's callbacks.
void addEditOperations(
    CLI::App& command, const char* file,
    const std::function<void(CLI::App& subcommand, const EditOperation& operation,
                             std::shared_ptr<OperationWords> words)>& added);

/// What the words ask for. Throws `UsageError`.
EditRequest requestOf(const EditOperation& operation, const OperationWords& words);

/// The request in an argument of `--then`, such as "fade out 58s 60s". Throws `UsageError`.
EditRequest requestIn(const std::string& text);

}  // namespace orvane::cli
