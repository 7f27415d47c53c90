#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/options/audio_output_options.h"
#include "cli/output/json_output.h"
#include "cli/terminal/console.h"
#include "orvane/container/broadcast_loudness.h"
#include "orvane/platform/audio_format.h"
#include "orvane/platform/sample_conversion.h"
#include "orvane/platform/sample_encoding.h"

namespace orvane::cli {

/// An audio file that was written, or would have been.
struct WrittenAudio {
  std::filesystem::path file{};
  AudioFormatSettings settings{};
  std::int64_t frameCount = 0;
  SampleEncoding sample{};
  std::optional<std::size_t> channel{};  ///< that it is of; absent for all
  bool keepsChunks = false;              ///< of the file that the audio came from
  bool keepsSamples = false;             ///< of it that do not change, as they are stored there
  SampleLosses losses{};
  std::optional<BroadcastLoudness> loudness{};  ///< that it states anew
  std::vector<std::string> warnings{};

  /// "take.wav: WAV, 24-bit integer, 48 kHz, 2 channels, 0:10.000 (480,000 frames)".
  std::string summary() const;
};

/// Tells of it: the warnings and what was lost as such, then the summary, or with `--json` a
/// document that begins with what `document` has and goes on with `file`, `containerName`,
/// `encodingName`, `sampleRate`, `channelCount`, `frameCount`, `clippedSamples`,
/// `nonFiniteSamples`, the `stated…` loudness where there is one, `warnings` and `isDryRun`.
void tellOfWrittenAudio(const WrittenAudio& audio, const AudioOutputOptions& options,
                        Console& console, JsonOutput::Document document = {});

}  // namespace orvane::cli
