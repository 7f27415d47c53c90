#pragma once

#include <filesystem>
#include <memory>

#include "orvane/container/audio_file.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// The module's two operations; see `FFmpegModule`.
std::unique_ptr<AudioFile> openFFmpegAudioFile(const std::filesystem::path& path,
                                               const AudioFileOpenOptions& options,
                                               FourCC containerHint);
AudioFileDescription describeFFmpegAudioFile(const std::filesystem::path& path,
                                             FourCC containerHint);

}  // namespace orvane
