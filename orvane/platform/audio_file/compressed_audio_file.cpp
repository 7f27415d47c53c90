#include "orvane/platform/audio_file/compressed_audio_file.h"

#include "orvane/platform/error.h"

namespace orvane {

std::unique_ptr<AudioFile> openCompressedAudioFile(const std::filesystem::path& path,
                                                   const AudioFileOpenOptions& /*options*/,
                                                   FourCC /*containerHint*/) {
  throw PlatformError(path, "The file format is not supported");
}

std::optional<AudioFileDescription> describeCompressedAudioFile(
    const std::filesystem::path& /*path*/, FourCC /*containerHint*/) {
  return {};
}

}  // namespace orvane
