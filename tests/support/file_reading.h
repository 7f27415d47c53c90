#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/audio_file.h"
#include "orvane/platform/error.h"
#include "orvane/platform/pcm_buffer.h"

namespace orvane::test {

/// Reads a whole file in one call; null when its buffer cannot be had.
inline std::shared_ptr<PCMBuffer> readWhole(AudioFile& file) {
  auto buffer =
      PCMBuffer::make(file.processingFormat(), static_cast<std::uint32_t>(file.frameLength()));
  if (buffer) file.read(*buffer);
  return buffer;
}

/// The same for the file at `path`.
inline std::shared_ptr<PCMBuffer> readWhole(const std::filesystem::path& path,
                                            std::size_t threadCount = 1) {
  const auto file = AudioFile::open(path, {.execution = {.threadCount = threadCount}});
  return readWhole(*file);
}

/// The sentence with which opening fails, without the file's name; empty when it does not fail.
inline std::string openingFailure(const std::filesystem::path& path) {
  try {
    const auto file = AudioFile::open(path);
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.errorDescription(), path.filename().string() + ": " + error.message());
    return error.message();
  }
  return {};
}

/// Codes of an opened file's warnings.
inline std::vector<AudioFileWarning::Code> warningCodes(const AudioFile& file) {
  std::vector<AudioFileWarning::Code> codes;
  for (const AudioFileWarning& warning : file.description().warnings) codes.push_back(warning.code);
  return codes;
}

/// Expects the buffer's samples, interleaved, to be these values rounded to 32-bit floats.
inline void expectSamples(const PCMBuffer& buffer, const std::vector<double>& values) {
  const std::uint32_t channels = buffer.channelCount();
  ASSERT_EQ(std::size_t{buffer.frameLength()} * channels, values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const float sample = buffer.channel(static_cast<std::uint32_t>(i % channels))[i / channels];
    ASSERT_EQ(sample, static_cast<float>(values[i])) << "sample " << i;
  }
}

}  // namespace orvane::test
