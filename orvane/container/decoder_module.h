#pragma once

#include <memory>
#include <optional>

#include "orvane/container/audio_file.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

// The seam between libOrvaneHeadless and the modules that each link one format's own library, for
// the reason that FFmpeg's has: what measures a WAVE file does not pay for other formats, and what
// measures an MP3 not for FFmpeg.

/// What such a module offers. Each answers with nothing where the file is not what its library
/// reads well: FFmpeg knows more of odd ones, and has a sentence for the others. Both throw
/// `PlatformError` for a file that cannot be read.
struct DecoderModule {
  /// Opens the same file by FFmpeg, for its tags and chapters.
  using OpenByFFmpeg = std::unique_ptr<AudioFile> (*)(std::shared_ptr<const InputFile> file,
                                                      const AudioFileOpenOptions& options,
                                                      FourCC containerHint);

  std::unique_ptr<AudioFile> (*open)(std::shared_ptr<const InputFile> file,
                                     const AudioFileOpenOptions& options,
                                     OpenByFFmpeg openByFFmpeg);

  /// What `open` and FFmpeg would find, at the price of the file's first bytes.
  std::optional<AudioFileDescription> (*describe)(std::shared_ptr<const InputFile> file,
                                                  const AudioFileOpenOptions& options);
};

/// A module's one exported function; nothing when the versions differ.
using DecoderModuleFactory = const DecoderModule* (*)(int version);

inline constexpr int kDecoderModuleVersion = 1;

}  // namespace orvane
