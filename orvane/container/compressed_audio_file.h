#pragma once

#include <memory>
#include <optional>
#include <string>

#include "orvane/container/audio_file.h"
#include "orvane/container/audio_streams.h"

namespace orvane {

/// Opens what is not linear PCM in one of our own containers. `containerHint` is the container code
/// that the sniffer found, 0 when it found none; it becomes the description's `fileTypeID`, and a
/// format that contradicts it is refused. Throws `PlatformError`.
std::unique_ptr<AudioFile> openCompressedAudioFile(std::shared_ptr<const InputFile> file,
                                                   const AudioFileOpenOptions& options,
                                                   FourCC containerHint);

/// The description alone, without preparing to decode. Throws `PlatformError`, and `Cancelled`.
AudioFileDescription describeCompressedAudioFile(std::shared_ptr<const InputFile> file,
                                                 const AudioFileOpenOptions& options,
                                                 FourCC containerHint);

/// The streams of such a file. Throws likewise.
AudioStreamCount countCompressedStreams(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options, FourCC containerHint);

}  // namespace orvane
