#include "orvane/audio/audio_source_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using namespace std::string_literals;

TEST(AudioSourceReader, LoadsAWaveFile) {
  const test::TemporaryDirectory folder;
  const auto path = folder.write(
      "a.wav", "RIFF\x2C\0\0\0WAVEfmt \x10\0\0\0\x01\0\x02\0\x80\xBB\0\0\0\xEE\x02\0\x04\0\x10\0"
               "data\x08\0\0\0\0\x80\xFF\x7F\0\x40\0\xC0"s);
  const auto loaded = AudioSourceReader::load(path);
  EXPECT_EQ(loaded.fileFormatLabel, "WAV");
  EXPECT_EQ(loaded.bitDepth, 16);
  EXPECT_FALSE(loaded.rawFormat);
  ASSERT_EQ(loaded.buffer->channelCount(), 2U);
  ASSERT_EQ(loaded.buffer->frameLength(), 2U);
  EXPECT_EQ(loaded.buffer->sampleRate(), 48000);
  EXPECT_EQ(loaded.buffer->channel(0)[0], -1.0F);
  EXPECT_EQ(loaded.buffer->channel(1)[0], 32767.0F / 32768);
  EXPECT_EQ(loaded.buffer->channel(0)[1], 0.5F);
  EXPECT_EQ(loaded.buffer->channel(1)[1], -0.5F);
}

}  // namespace
}  // namespace orvane
