#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "orvane/container/audio_file.h"
#include "orvane/platform/export.h"

namespace orvane {

/// The audio streams of a file, counted from 0 as `AudioFileOpenOptions::streamIndex` counts them.
struct AudioStreamCount {
  int count = 1;
  int defaultIndex = 0;  ///< the one that is taken unless another is asked for

  bool operator==(const AudioStreamCount&) const = default;
};

/// Throws as `AudioFile::open` does. `observer`, which may be null, is only asked whether to go on.
ORVANE_API AudioStreamCount countAudioStreams(const std::filesystem::path& path,
                                              ProgressObserver* observer = nullptr);

/// What `AudioFile::describe` would say of each if it were the default one. Throws likewise.
ORVANE_API std::vector<AudioFileDescription> describeAudioStreams(
    const std::filesystem::path& path, ProgressObserver* observer = nullptr);

}  // namespace orvane
