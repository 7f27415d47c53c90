#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/audio_file.h"
#include "orvane/container/chapter_mark.h"

namespace orvane {

/// Opens what is not linear PCM in one of our own containers. `containerHint` is the container code
/// that the sniffer found, 0 when it found none; it becomes the description's `fileTypeID`, and a
/// format that contradicts it is refused. Throws `PlatformError`.
std::unique_ptr<AudioFile> openCompressedAudioFile(const std::filesystem::path& path,
                                                   const AudioFileOpenOptions& options,
                                                   FourCC containerHint);

/// The description alone, without preparing to decode. Throws `PlatformError`.
AudioFileDescription describeCompressedAudioFile(const std::filesystem::path& path,
                                                 FourCC containerHint);

/// The chapters of its container, in the order of the file. Throws `PlatformError`.
std::vector<ChapterMark> compressedFileChapters(const std::filesystem::path& path,
                                                FourCC containerHint);

}  // namespace orvane
