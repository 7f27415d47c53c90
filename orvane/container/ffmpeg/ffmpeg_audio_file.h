#pragma once

#include <memory>

#include "orvane/container/audio_file.h"
#include "orvane/container/audio_streams.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// The module's operations; see `FFmpegModule`.
std::unique_ptr<AudioFile> openFFmpegAudioFile(std::shared_ptr<const InputFile> file,
                                               const AudioFileOpenOptions& options,
                                               FourCC containerHint);
AudioFileDescription describeFFmpegAudioFile(std::shared_ptr<const InputFile> file,
                                             const AudioFileOpenOptions& options,
                                             FourCC containerHint);
AudioStreamCount countFFmpegStreams(std::shared_ptr<const InputFile> file,
                                    const AudioFileOpenOptions& options, FourCC containerHint);

}  // namespace orvane
