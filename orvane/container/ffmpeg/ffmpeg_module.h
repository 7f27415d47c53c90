#pragma once

#include <memory>
#include <optional>

#include "orvane/container/audio_file.h"
#include "orvane/container/audio_streams.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

// The seam between libOrvaneHeadless and the module that alone links FFmpeg. FFmpeg brings about a
// hundred shared objects into a process and tens of milliseconds of start-up; a program that
// measures a WAV file should pay neither.

/// What the module offers.
struct FFmpegModule {
  std::unique_ptr<AudioFile> (*open)(std::shared_ptr<const InputFile> file,
                                     const AudioFileOpenOptions& options, FourCC containerHint);
  /// Throws `PlatformError` for what cannot be read or is no audio file.
  AudioFileDescription (*describe)(std::shared_ptr<const InputFile> file,
                                   const AudioFileOpenOptions& options, FourCC containerHint);
  /// Throws likewise.
  AudioStreamCount (*countStreams)(std::shared_ptr<const InputFile> file,
                                   const AudioFileOpenOptions& options, FourCC containerHint);
  /// FFmpeg's version.
  const char* (*version)();
};

/// The module's one exported function; nothing when the versions differ.
using FFmpegModuleFactory = const FFmpegModule* (*)(int version);

inline constexpr const char* kFFmpegModuleFile = "orvane_ffmpeg.so";
inline constexpr const char* kFFmpegModuleFactory = "orvaneFFmpegModule";
inline constexpr int kFFmpegModuleVersion = 4;

}  // namespace orvane
