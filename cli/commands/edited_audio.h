#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "cli/options/audio_output_options.h"
#include "cli/output/output_file.h"
#include "cli/output/written_audio.h"
#include "cli/terminal/console.h"
#include "orvane/audio/audio_source.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/four_cc.h"

/// What the commands have in common that write the audio of a file anew.
namespace orvane::cli::EditedAudio {

/// Throws `PlatformError` for a rate outside of `SampleRateLimits`.
void requireRate(const AudioSource& source);

/// The options with `--in-place` understood: the file is the source. Throws `PlatformError` or
/// `InPlaceSaveError` for one that cannot be saved in place.
AudioOutputOptions settled(AudioOutputOptions options, const AudioSource& source);

/// Finds out whether the files can be written, none of which is one of `read`, and tells of what
/// killed runs have left beside them. Throws `Error`.
void requireWritable(const std::vector<std::filesystem::path>& files,
                     const AudioOutputOptions& options, const ReadFiles& read, Console& console);

/// Audio of the source, or one channel of it, as it will be written to `file`; what the options
/// leave open is as in the source. A file of the same container keeps the source's chunks. Throws
/// what outlining a file throws.
WrittenAudio outlined(const std::filesystem::path& file, const AudioOutputOptions& options,
                      const AudioSource& source, std::int64_t frameCount,
                      std::optional<std::size_t> channel = {});

/// Where edited audio comes from.
struct Origin {
  const AudioSource& source;
  const FrameMap& frames;  ///< where the edit has put those of the source
  std::function<std::shared_ptr<AudioSource>()> open{};  ///< it anew
};

/// Writes the audio, or the file's channel of it, and fills in what was lost. Throws what writing
/// throws.
void write(WrittenAudio& written, const AudioOutputOptions& options, const Origin& origin,
           const SlicedAudio& audio, const Execution& execution);

/// Adds to the warnings what writing would say of the chunks, if the edit changes samples. Throws
/// what outlining a file throws.
void foresee(WrittenAudio& written, const AudioOutputOptions& options, const Origin& origin,
             bool changesSamples);

/// What of a source is not written, beside its audio.
struct LeftBehind {
  std::vector<FourCC> chunks{};
  bool hasChapters = false;         ///< of a source without chunks
  std::vector<std::string> tags{};  ///< the same
};
LeftBehind leftBehind(const AudioSource& source, const WrittenAudio& written);
/// The same by name, as `leftBehind` of a document.
void addLeftBehind(JsonOutput::Document& document, const LeftBehind& leftBehind);

/// Tells what the user should know of a source of that name, of which this is not written. With
/// `isKept` the samples that do not change keep their bytes.
void warnOfSource(const AudioSource& source, const std::string& name, const LeftBehind& leftBehind,
                  bool isKept, Console& console);

}  // namespace orvane::cli::EditedAudio
