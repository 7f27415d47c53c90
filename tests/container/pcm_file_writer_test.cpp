// What is written comes back, to the bit, by our own reader and by independent ones.

#include "orvane/container/pcm_file_writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "tests/container/peer_decoding.h"
#include "tests/support/ffmpeg_comparison.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using Channels = std::vector<std::vector<float>>;

constexpr PCMEncoding kEncodings[] = {{8, false},  {16, false}, {24, false},
                                      {32, false}, {32, true},  {64, true}};

AudioFormatSettings settingsFor(AudioContainer container, PCMEncoding encoding,
                                std::int64_t channelCount, std::optional<ChannelLayout> layout = {},
                                double rate = 48000) {
  return {.fileTypeID = fileTypeID(container),
          .formatID = kFormatLinearPCM,
          .sampleRate = rate,
          .channelCount = channelCount,
          .layout = std::move(layout),
          .linearPCMBitDepth = encoding.bitDepth,
          .linearPCMIsFloat = encoding.isFloat,
          .linearPCMIsBigEndian = isBigEndian(container)};
}

/// The usual layout of a channel count in canonical order; absent for counts that have none.
std::optional<ChannelLayout> layoutOf(std::int64_t channels) {
  using enum ChannelLabel;
  switch (channels) {
    case 1:
      return ChannelLayout::fromTag(ChannelLayoutTags::mono);
    case 2:
      return ChannelLayout::fromTag(ChannelLayoutTags::stereo);
    case 6:
      return ChannelLayout::fromTag(ChannelLayoutTags::mpeg51A);
    case 8:
      return ChannelLayout::fromLabels({left, right, center, lfe, leftSurround, rightSurround,
                                        rearSurroundLeft, rearSurroundRight});
    default:
      return {};
  }
}

/// Noise of full scale that the encoding holds exactly.
Channels noise(PCMEncoding encoding, std::size_t channels, std::size_t frames) {
  std::mt19937 random(static_cast<std::uint32_t>(frames + channels));
  const int bits =
      encoding.isFloat ? 24 : static_cast<int>(std::min<std::int64_t>(24, encoding.bitDepth));
  const float step = std::ldexp(1.0F, 1 - bits);
  std::uniform_int_distribution<int> word(-(1 << (bits - 1)), (1 << (bits - 1)) - 1);
  Channels audio(channels, std::vector<float>(frames));
  for (auto& channel : audio)
    for (float& sample : channel) sample = static_cast<float>(word(random)) * step;
  return audio;
}

/// Writes in slices of uneven size.
void write(const std::filesystem::path& path, const AudioFormatSettings& settings,
           const Channels& audio) {
  const std::size_t frames = audio.front().size();
  PCMFileWriter writer(path, settings, static_cast<std::int64_t>(frames));
  std::vector<const float*> pointers;
  for (const auto& channel : audio) pointers.push_back(channel.data());
  const PlanarView all(pointers, frames);
  for (std::size_t first = 0; first < frames;) {
    const std::size_t count = std::min(frames - first, first / 2 + 1);
    writer.write(all.slice(first, count));
    first += count;
  }
  writer.commit();
  EXPECT_EQ(writer.losses(), SampleLosses{});
}

/// Expects our own reader to give back the audio, whatever order the file keeps it in.
void expectRead(const std::filesystem::path& path, const AudioFormatSettings& settings,
                const Channels& audio) {
  const auto file = AudioFile::open(path);
  const AudioFileDescription& description = file->description();
  EXPECT_EQ(description.fileTypeID, settings.fileTypeID);
  EXPECT_EQ(description.dataFormat.sampleRate, settings.sampleRate);
  EXPECT_EQ(description.dataFormat.bitsPerChannel, settings.linearPCMBitDepth);
  EXPECT_EQ((description.dataFormat.formatFlags & kFormatFlagIsFloat) != 0,
            settings.linearPCMIsFloat);
  EXPECT_EQ((description.dataFormat.formatFlags & kFormatFlagIsBigEndian) != 0,
            settings.linearPCMIsBigEndian == true && settings.linearPCMBitDepth != 8);
  EXPECT_TRUE(description.warnings.empty());
  ASSERT_EQ(file->frameLength(), static_cast<std::int64_t>(audio.front().size()));
  std::vector<ChannelLabel> labels;
  if (settings.layout) {
    ASSERT_TRUE(description.layout);
    labels = description.layout->labels;
  }
  const auto buffer = test::readWhole(*file);
  ASSERT_TRUE(buffer);
  for (std::size_t c = 0; c < audio.size(); ++c) {
    std::size_t stored = c;
    if (settings.layout)
      stored = static_cast<std::size_t>(std::ranges::find(labels, settings.layout->labels[c]) -
                                        labels.begin());
    ASSERT_LT(stored, audio.size());
    const auto samples = buffer->view().samples(stored);
    ASSERT_TRUE(std::ranges::equal(samples, audio[c])) << "channel " << c;
  }
}

/// Every encoding, channel count and length of one container, and what others read of it.
void expectMatrix(AudioContainer container, bool isReadByLibsndfile, const char* soxType) {
  test::FFmpegComparison files;
  for (const PCMEncoding encoding : kEncodings) {
    if (encoding.isFloat && container == AudioContainer::aiff) continue;
    for (const std::size_t channels : {1U, 2U, 6U, 8U, 17U})
      for (const std::size_t frames : {0U, 1U, 2U, 1023U, 65'537U}) {
        const std::string name = encoding.label() + " " + std::to_string(channels) + " " +
                                 std::to_string(frames) + ".audio";
        SCOPED_TRACE(name);
        const auto path = files.folder() / name;
        const auto settings = settingsFor(container, encoding, static_cast<std::int64_t>(channels),
                                          layoutOf(static_cast<std::int64_t>(channels)));
        const Channels audio = noise(encoding, channels, frames);
        write(path, settings, audio);
        expectRead(path, settings, audio);
        if (frames == 0) continue;  // few others accept that
        files.add(name, static_cast<int>(channels));
        // libsndfile takes floats in an extensible Wave64 header for integers.
        const bool isMisread =
            container == AudioContainer::wave64 && encoding.isFloat && channels > 2;
        if (isReadByLibsndfile && !isMisread) test::expectEqualToLibsndfile(path);
        if (soxType != nullptr && frames == 1023) test::expectEqualToSoX(path, {"-t", soxType});
      }
  }
  files.expectEqual();
}

TEST(PCMFileWriterMatrix, Wave) {
  expectMatrix(AudioContainer::wave, true, "wav");
}
TEST(PCMFileWriterMatrix, RF64) {
  expectMatrix(AudioContainer::rf64, true, nullptr);
}
TEST(PCMFileWriterMatrix, BW64) {
  expectMatrix(AudioContainer::bw64, false, nullptr);
}
TEST(PCMFileWriterMatrix, Wave64) {
  expectMatrix(AudioContainer::wave64, true, nullptr);
}
TEST(PCMFileWriterMatrix, AIFF) {
  expectMatrix(AudioContainer::aiff, true, "aiff");
}
TEST(PCMFileWriterMatrix, AIFFC) {
  expectMatrix(AudioContainer::aifc, true, "aifc");
}
TEST(PCMFileWriterMatrix, CAF) {
  expectMatrix(AudioContainer::caf, true, nullptr);
}

}  // namespace
}  // namespace orvane
