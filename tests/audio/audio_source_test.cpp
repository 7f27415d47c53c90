#include "orvane/audio/audio_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/platform/host_memory.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"
#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::Bytes;
using enum ChannelLabel;
using Channels = std::vector<std::vector<float>>;

Channels samplesOf(const PCMBuffer& buffer) {
  Channels channels;
  for (std::size_t c = 0; c < buffer.channelCount(); ++c) {
    const auto samples = buffer.view().samples(c);
    channels.emplace_back(samples.begin(), samples.end());
  }
  return channels;
}

/// All that the stream gives in pieces of these sizes, taken in turn.
Channels inPieces(AudioSource& stream, const std::vector<std::uint32_t>& sizes) {
  Channels channels(stream.format().channelCount);
  std::vector<std::shared_ptr<PCMBuffer>> buffers;
  for (const std::uint32_t size : sizes) buffers.push_back(stream.makeBuffer(size));
  for (std::size_t i = 0;; i = (i + 1) % buffers.size()) {
    PCMBuffer& buffer = *buffers[i];
    stream.read(buffer);
    EXPECT_EQ(buffer.format(), stream.format());
    const auto piece = samplesOf(buffer);
    for (std::size_t c = 0; c < channels.size(); ++c)
      channels[c].insert(channels[c].end(), piece[c].begin(), piece[c].end());
    if (buffer.frameLength() < buffer.frameCapacity()) return channels;
  }
}

class AudioStreaming : public testing::Test {
 protected:
  void expectPiecesToMakeTheWhole(const std::filesystem::path& path,
                                  const std::optional<RawPCMFormat>& rawFormat = {}) {
    const auto loaded = AudioSourceReader::load(path, rawFormat);
    const auto stream = AudioSource::open(path, rawFormat, {.execution = {.threadCount = 2}});
    EXPECT_EQ(stream->format(), loaded.buffer->format());
    EXPECT_EQ(stream->frameLength(), loaded.buffer->frameLength());
    EXPECT_EQ(stream->bitDepth(), loaded.bitDepth);
    EXPECT_EQ(stream->fileFormatLabel(), loaded.fileFormatLabel);
    EXPECT_EQ(stream->rawFormat(), loaded.rawFormat);
    EXPECT_EQ(inPieces(*stream, {1, 64, 700}), samplesOf(*loaded.buffer));
    // Nobody has asked this one how long it is.
    EXPECT_EQ(inPieces(*AudioSource::open(path, rawFormat), {700, 64}), samplesOf(*loaded.buffer));
  }

  /// A file of that many zeros, which take no room on the disk.
  std::filesystem::path sparse(const std::string& name, std::uintmax_t bytes) {
    const auto path = folder_.write(name, "");
    std::filesystem::resize_file(path, bytes);
    return path;
  }

  test::TemporaryDirectory folder_;
};

void expectTooLarge(const std::function<void()>& action) {
  try {
    action();
    FAIL() << "too large, and not refused";
  } catch (const RawPCMImportError& error) {
    EXPECT_EQ(error.failureCase(), RawPCMImportError::Case(RawPCMImportError::TooLarge{}));
  }
}

TEST_F(AudioStreaming, PiecesOfAFileMakeTheWhole) {
  const test::SampleSpec spec{.bits = 24, .bytes = 3};
  expectPiecesToMakeTheWhole(folder_.write(
      "a.wav",
      test::waveFile({.bits = 24}, test::storedSamples(spec, test::testValues(spec, 5000, 2)))));
}

TEST_F(AudioStreaming, EveryPieceIsInCanonicalOrder) {
  // Stored L R Ls Rs C LFE.
  const test::SampleSpec spec{.order = std::endian::big};
  const auto path = folder_.write(
      "a.aiff",
      test::formFile(
          "FORM", "AIFF",
          {{.id = "COMM", .body = test::commonBody(6, 3000, 16, 48000)},
           {.id = "CHAN", .body = test::layoutBody(0x007A0006)},
           {.id = "SSND",
            .body = test::soundBody(test::storedSamples(spec, test::testValues(spec, 3000, 6)))}}));
  const auto stream = AudioSource::open(path, {}, {});
  EXPECT_EQ(stream->format().layout->labels,
            (std::vector{left, right, center, lfe, leftSurround, rightSurround}));
  expectPiecesToMakeTheWhole(path);
}

TEST_F(AudioStreaming, PiecesOfHeaderlessPCMMakeTheWhole) {
  const auto path = folder_.write("raw", test::storedSamples({}, test::testValues({}, 3000, 3)));
  for (const bool isPlanar : {false, true})
    for (const std::int64_t skip : {0, 6}) {
      SCOPED_TRACE(isPlanar);
      expectPiecesToMakeTheWhole(path, RawPCMFormat{.sampleRate = 48000,
                                                    .channelCount = 3,
                                                    .encoding = RawPCMFormat::Encoding::int16,
                                                    .isPlanar = isPlanar,
                                                    .headerSkipBytes = skip});
    }
}

TEST_F(AudioStreaming, PiecesOfACompressedFileMakeTheWhole) {
  const auto path = folder_ / "a.mp3";
  test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "sine=d=1", path.string()});
  expectPiecesToMakeTheWhole(path);
}

TEST_F(AudioStreaming, RefusesWhatLoadingRefuses) {
  using AudioSourceReader::Failure;
  const auto open = [](const std::filesystem::path& path,
                       const std::optional<RawPCMFormat>& format = {}) {
    AudioSource::open(path, format, {});
  };
  EXPECT_THROW(open(folder_ / "missing.wav"), PlatformError);
  EXPECT_THROW(open(folder_.write("none.wav", test::waveFile({}, {}))), Failure);
  const RawPCMFormat format{.sampleRate = 48000, .channelCount = 2};
  EXPECT_THROW(open(folder_ / "missing.raw", format), RawPCMImportError);
  const auto odd = folder_.write("odd.raw", Bytes(5));
  EXPECT_THROW(open(odd, format), RawPCMImportError);
}

TEST_F(AudioStreaming, LimitsWhatIsLoadedAndNotWhatIsRead) {
  const ScopedHostMemory memory({.physicalBytes = 1, .supportsLargeBuffers = false});
  const RawPCMFormat format{.sampleRate = 48000, .channelCount = 2};
  const auto source = AudioSource::open(sparse("vast.raw", std::uintmax_t{4} << 30), format);
  EXPECT_EQ(source->frameLength(), std::int64_t{1} << 30);
  const auto piece = source->makeBuffer(1000);
  source->read(*piece);
  EXPECT_EQ(piece->frameLength(), 1000U);
  expectTooLarge([&] { source->requireLoadable(); });
  expectTooLarge([&] { source->load(); });
}

TEST_F(AudioStreaming, RefusesMoreThanAThousandHours) {
  const RawPCMFormat format{
      .sampleRate = 100, .channelCount = 1, .encoding = RawPCMFormat::Encoding::uint8};
  EXPECT_EQ(AudioSource::open(sparse("most.raw", 360'000'000), format)->frameLength(), 360'000'000);
  const auto more = sparse("more.raw", 360'000'001);
  expectTooLarge([&] { AudioSource::open(more, format); });
}

TEST_F(AudioStreaming, OpensTheFileOnceForAllThatIsAskedOfIt) {
  const auto path = folder_ / "a.mka";
  test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "sine=d=1:r=48000", "-c:a", "flac",
                           path.string()});
  const auto source = AudioSource::open(path);
  std::filesystem::remove(path);
  EXPECT_EQ(source->frameLength(), 48'000);
  EXPECT_TRUE(source->chapters().empty());
  ASSERT_TRUE(source->identity());
  EXPECT_EQ(source->identity()->encodingName(), "FLAC");
  EXPECT_EQ(source->sourceBitDepth(), 16);
  EXPECT_GT(source->file().size(), 0U);
  EXPECT_EQ(inPieces(*source, {48'000})[0].size(), 48'000U);
}

TEST_F(AudioStreaming, WarnsOfDamageOnceItIsRead) {
  const auto sound = folder_ / "sound.mp3";
  test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "anoisesrc=d=4", sound.string()});
  std::string bytes = test::readFile(sound);
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 6000, 'x');
  const auto stream = AudioSource::open(folder_.write("damaged.mp3", bytes), {}, {});
  const auto before = stream->warnings().size();
  inPieces(*stream, {4096});
  EXPECT_GT(stream->warnings().size(), before);
}

}  // namespace
}  // namespace orvane
