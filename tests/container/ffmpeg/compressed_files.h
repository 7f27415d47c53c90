#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/container/audio_file.h"
#include "tests/support/temporary_directory.h"

/// Makers and readers of compressed files, with the ffmpeg program as the oracle.
namespace orvane::test {

using Arguments = std::vector<std::string>;

/// Seeded pink noise of `seconds` at 48 kHz, encoded by the ffmpeg program under `arguments`
/// (filter, codec, rate …) into the container that `name` ends in.
std::filesystem::path encodeNoise(const TemporaryDirectory& folder, const std::string& name,
                                  const Arguments& arguments = {}, double seconds = 1.2345);

/// What the ffmpeg program decodes of the file's n-th audio stream: interleaved.
std::vector<float> decodeWithFFmpeg(const std::filesystem::path& file, int stream = 0);

/// A whole file as the library reads it.
struct ReadFile {
  AudioFileDescription description{};  ///< after reading
  std::int64_t promisedFrames = 0;
  std::vector<float> samples{};  ///< interleaved
  std::int64_t frames() const {
    const auto channels = description.dataFormat.channelsPerFrame;
    return channels == 0 ? 0 : static_cast<std::int64_t>(samples.size() / channels);
  }
  bool hasWarning(AudioFileWarning::Code code) const;
};

/// Reads what is left of a file in buffers of `bufferFrames`. Throws what the library throws.
ReadFile readToEnd(AudioFile& file, std::uint32_t bufferFrames = 65536);

/// Opens and reads in buffers of `bufferFrames`. Throws what the library throws.
ReadFile readWholeFile(const std::filesystem::path& file, const AudioFileOpenOptions& options = {},
                       std::uint32_t bufferFrames = 65536);

/// Largest difference of two signals of one length.
double largestDifference(const std::vector<float>& a, const std::vector<float>& b);

/// Text of the `PlatformError` that opening gives, without the file name; empty when it opens.
std::string openingError(const std::filesystem::path& file,
                         const AudioFileOpenOptions& options = {});

/// A file's name as the name of a test: letters, digits and underscores.
std::string wordOf(const std::string& name);

/// "WAVE", "aac " …
std::string textOf(FourCC code);

}  // namespace orvane::test
