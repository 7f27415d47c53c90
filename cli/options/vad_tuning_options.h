#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "orvane/speech/detector/silero_vad_tuning.h"

namespace orvane::cli {

struct VADTuningOptions {
  SileroVADTuning tuning = SileroVADTuning::defaults();
  std::string given{};  ///< one of the options that the user gave; empty for none
};

/// `--vad-threshold`, `--min-speech` and `--min-silence`, in a group of their own. Values outside
/// their ranges are a `UsageError`. `options` must outlive the command.
void addVADTuningOptions(CLI::App& command, VADTuningOptions& options);

}  // namespace orvane::cli
