#pragma once

#include <CLI/CLI.hpp>

#include "orvane/speech/detector/silero_vad_tuning.h"

namespace orvane::cli {

/// `--vad-threshold`, `--min-speech` and `--min-silence`, in a group of their own. Values outside
/// their ranges are a `UsageError`. `tuning` must outlive the command.
void addVADTuningOptions(CLI::App& command, SileroVADTuning& tuning);

}  // namespace orvane::cli
