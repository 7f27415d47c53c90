#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "orvane/edit/audio_rewrite.h"
#include "orvane/edit/in_place_save_error.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

/// Saves edited audio back into the file that it came from. Container, sample format and channel
/// order stay; so do all chunks and all bytes that the edit does not make false. What is written is
/// read back and compared before it gets the name, and no other version of the file than the one
/// that was read is ever replaced.
namespace orvane::InPlaceSave {

/// Of files that may be rewritten in place, for dialogs.
ORVANE_API const std::set<std::string>& supportedExtensions();

struct Options {
  /// Of the file when its audio was read; without one the version that stands there now.
  std::optional<FileStamp> version{};
  AudioRewrite::Options rewrite{};  ///< always read back
  /// Runs when all is written and has been read back, before it takes the file's place.
  std::function<void()> beforehand{};
  Execution execution{};
};

/// What came of it.
struct Outcome {
  AudioRewrite::Outcome rewrite{};
  MetadataLosses metadata{};  ///< of the file as such
};

/// Throws `InPlaceSaveError` for a file that cannot be saved with audio of that rate and as many
/// channels.
ORVANE_API void requirePossible(const std::filesystem::path& over, std::size_t channelCount,
                                double sampleRate);

/// Replaces the audio of the file at `over` by the edited one, in canonical channel order. A
/// symbolic link is followed. Throws `InPlaceSaveError`, before anything is written for what is
/// refused, and with the file unchanged for everything else; `SavedFileError` when the file is
/// saved, but perhaps not safe against a power failure; `Cancelled` when the observer asks for it.
ORVANE_API Outcome write(const PCMBuffer& buffer, const std::filesystem::path& over,
                         const Options& options);
ORVANE_API Outcome write(const PCMBuffer& buffer, const std::filesystem::path& over);
/// The same of audio that somebody else owns.
ORVANE_API Outcome write(const SlicedAudio& audio, double sampleRate,
                         const std::filesystem::path& over, const Options& options);

/// The settings under which the file would be rewritten, which are its own. Throws
/// `InPlaceSaveError` for a file that cannot be rewritten with that audio.
ORVANE_API AudioFormatSettings writeSettings(const std::filesystem::path& url,
                                             const PCMBuffer& buffer);

/// The edited channel, in canonical order, that each channel of a file of this format is. A file
/// without a layout has no order but its own. Throws `InPlaceSaveError` (channelOrderUnknown).
ORVANE_API std::vector<std::uint32_t> fileOrder(const AudioFormat& fileFormat);

}  // namespace orvane::InPlaceSave
