#pragma once

#include <memory>

#include "orvane/container/audio_file.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

// The seam between libOrvaneHeadless and the module that alone links libFLAC, for the reason that
// FFmpeg's has: what measures a WAVE file does not pay for other formats.

/// What the module offers.
struct FLACModule {
  /// Opens the same file by FFmpeg, for its tags and chapters.
  using OpenByFFmpeg = std::unique_ptr<AudioFile> (*)(std::shared_ptr<const InputFile> file,
                                                      const AudioFileOpenOptions& options,
                                                      FourCC containerHint);

  /// Opens a native FLAC stream. Null where libFLAC finds no stream or nothing that it can decode:
  /// FFmpeg knows more of odd ones, and has a sentence for the others. Throws `PlatformError` for
  /// a file that cannot be read.
  std::unique_ptr<AudioFile> (*open)(std::shared_ptr<const InputFile> file,
                                     const AudioFileOpenOptions& options,
                                     OpenByFFmpeg openByFFmpeg);
};

/// The module's one exported function; nothing when the versions differ.
using FLACModuleFactory = const FLACModule* (*)(int version);

inline constexpr const char* kFLACModuleFile = "orvane_flac.so";
inline constexpr const char* kFLACModuleFactory = "orvaneFLACModule";
inline constexpr int kFLACModuleVersion = 1;

}  // namespace orvane
