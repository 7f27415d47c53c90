#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "cli/options/audio_output_options.h"
#include "cli/output/written_audio.h"
#include "cli/terminal/console.h"
#include "orvane/audio/audio_source.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/planar_view.h"

/// What the commands have in common that write the audio of a file anew.
namespace orvane::cli::EditedAudio {

/// Throws `PlatformError` for a rate outside of `SampleRateLimits`.
void requireRate(const AudioSource& source);

/// Audio of `format` as it will be written to `file`; what the options leave open is as in the
/// source. Throws what outlining a file throws.
WrittenAudio outlined(const std::filesystem::path& file, const AudioOutputOptions& options,
                      const AudioSource& source, const AudioFormat& format,
                      std::int64_t frameCount);

/// Writes it and fills in what was lost. Throws what writing throws.
void write(WrittenAudio& written, const AudioOutputOptions& options, PlanarView audio,
           const Execution& execution);

/// Tells what the user should know of a source, of whose chunks these are not written. With
/// `isKept` the samples that do not change keep their bytes.
void warnOfSource(const AudioSource& source, const std::vector<FourCC>& leftBehind, bool isKept,
                  Console& console);

}  // namespace orvane::cli::EditedAudio
