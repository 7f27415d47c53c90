#include "tests/container/ffmpeg/one_reading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "orvane/platform/error.h"

namespace orvane::test {
namespace {

struct Reading {
  std::vector<std::uint32_t> samples{};  ///< bits of them, block by block, channel by channel
  std::vector<AudioFileWarning> warnings{};
  std::string error{};
  bool operator==(const Reading&) const = default;
};

template <typename Take>
std::vector<AudioFileWarning> readBy(std::size_t threads, const std::filesystem::path& file,
                                     std::uint32_t frames, Take&& take) {
  AudioFileOpenOptions options;
  options.execution.threadCount = threads;
  const auto opened = AudioFile::open(file, options);
  const auto buffer = PCMBuffer::make(opened->processingFormat(), frames);
  for (opened->read(*buffer); buffer->frameLength() > 0; opened->read(*buffer)) take(*buffer);
  return opened->description().warnings;
}

Reading readingBy(std::size_t threads, const std::filesystem::path& file) {
  Reading reading;
  try {
    reading.warnings = readBy(threads, file, 100000, [&](const PCMBuffer& buffer) {
      for (std::uint32_t c = 0; c < buffer.channelCount(); ++c)
        std::transform(buffer.channel(c), buffer.channel(c) + buffer.frameLength(),
                       std::back_inserter(reading.samples),
                       [](float sample) { return std::bit_cast<std::uint32_t>(sample); });
    });
  } catch (const Error& error) {
    reading.error = error.errorDescription();
  }
  return reading;
}

}  // namespace

void readThrough(std::size_t threads, const std::filesystem::path& file, std::uint32_t frames) {
  readBy(threads, file, frames, [](const PCMBuffer&) {});
}

void expectOneReading(const std::filesystem::path& file) {
  const Reading serial = readingBy(1, file);
  EXPECT_FALSE(serial.samples.empty());
  for (const std::size_t threads : {2U, 3U, 16U})
    EXPECT_TRUE(readingBy(threads, file) == serial) << threads << " threads";
}

}  // namespace orvane::test
